# Sources of the GLB writing side (export records, animation export, JSON chunk, container writer).
set(VURL_GLTF_WRITE_SOURCES
  glb_builder.cpp
  glb_buffer_estimate.cpp
  glb_node_export.cpp
  glb_vertex_export.cpp
  glb_skin_export.cpp
  glb_mesh_export.cpp
  glb_animation_export.cpp
  glb_json_write.cpp
  glb_container_write.cpp
  glb_writer.cpp
)
