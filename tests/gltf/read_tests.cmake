# Tests of the glTF reading side; fixtures come from the independent writer in tools/glbfixture.
add_executable(test_gltf_read
  read_container_test.cpp
  read_document_test.cpp
  read_accessor_test.cpp
  decode_cost_test.cpp
  read_images_test.cpp
  import_scene_test.cpp
  import_materials_test.cpp
  import_draco_test.cpp
  import_sample_test.cpp
)
vurl_warnings(test_gltf_read)
target_link_libraries(test_gltf_read PRIVATE vurl_gltf vurl_runtimejson vurl_glbfixture vurl_test_support
                      GTest::gtest_main)
target_compile_definitions(test_gltf_read PRIVATE
  VURL_SAMPLE_GENERATOR="$<TARGET_FILE:vurl_make_sample_glb>"
  VURL_GLTF_EXPECTED_DIR="${CMAKE_CURRENT_SOURCE_DIR}/import_sample_expected")
add_dependencies(test_gltf_read vurl_make_sample_glb)
gtest_discover_tests(test_gltf_read)
