# Tests of the GLB writing side.
add_executable(test_gltf_write
  write_test_support.cpp
  write_json_test.cpp
  export_mesh_test.cpp
  export_animation_test.cpp
)
vurl_warnings(test_gltf_write)
target_compile_definitions(test_gltf_write PRIVATE VURL_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
target_link_libraries(test_gltf_write PRIVATE vurl_gltf GTest::gtest_main)
gtest_discover_tests(test_gltf_write)
