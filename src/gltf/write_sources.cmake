# Sources of the GLB writing side (export records, animation export, JSON chunk, container writer).
set(VURL_GLTF_WRITE_SOURCES
  glb_writer_stub.cpp
)
