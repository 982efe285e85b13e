# Sources of the glTF reading side (container reader, document model, accessors, images, import).
set(VURL_GLTF_READ_SOURCES
  gltf_document.cpp
  glb_container_read.cpp
  gltf_document_read.cpp
  gltf_buffers.cpp
  gltf_decode_cost.cpp
  gltf_accessors.cpp
  gltf_draco_attributes.cpp
  gltf_images.cpp
  gltf_import.cpp
  gltf_import_materials.cpp
  gltf_import_draco.cpp
  gltf_loader.cpp
)
