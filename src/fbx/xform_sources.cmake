# Sources of node transforms, axis and unit conversion and the geometry clean-up.
set(VURL_FBX_XFORM_SOURCES
  fbx_matrix.cpp
  fbx_transform.cpp
  fbx_node_eval.cpp
  fbx_pivot_reset.cpp
  fbx_curve_edit.cpp
  fbx_axis_system.cpp
  fbx_axis_convert.cpp
  fbx_system_unit.cpp
  fbx_unit_convert.cpp
  fbx_geometry_converter.cpp
)
