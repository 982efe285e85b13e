# Node transforms, axis and unit conversion, geometry clean-up.
add_executable(test_fbx_xform
  matrix_test.cpp
  transform_test.cpp
  node_eval_test.cpp
  geometry_converter_test.cpp
  scene_convert_test.cpp
  curve_convert_test.cpp
  axis_unit_test.cpp
)
vurl_warnings(test_fbx_xform)
target_link_libraries(test_fbx_xform PRIVATE vurl_fbx GTest::gtest_main)
gtest_discover_tests(test_fbx_xform)
