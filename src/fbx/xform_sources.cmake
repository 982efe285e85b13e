# Sources of node transforms, axis and unit conversion and the geometry clean-up.
set(VURL_FBX_XFORM_SOURCES
  fbx_matrix.cpp
  fbx_transform.cpp
  fbx_axis_system.cpp
  fbx_system_unit.cpp
)
