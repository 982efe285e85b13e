# Sources of the glTF reading side (container reader, document model, accessors, images, import).
set(VURL_GLTF_READ_SOURCES
  gltf_loader_stub.cpp
)
