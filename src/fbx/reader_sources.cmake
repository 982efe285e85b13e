# Sources of the file reader: the importer, property blocks and templates, objects and
# connections.
set(VURL_FBX_READER_SOURCES
  fbx_geometry_deformers.cpp
  fbx_anim_curve_read.cpp
  fbx_properties70.cpp
  fbx_importer.cpp
  fbx_reader.cpp
  fbx_reader_objects.cpp
)
