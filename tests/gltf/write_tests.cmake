# Tests of the GLB writing side.
add_executable(test_gltf_write
  write_test_support.cpp
  write_json_test.cpp
  write_container_test.cpp
  export_mesh_test.cpp
  export_animation_test.cpp
  export_roundtrip_test.cpp
)
vurl_warnings(test_gltf_write)
target_compile_definitions(test_gltf_write PRIVATE
  VURL_SOURCE_DIR="${PROJECT_SOURCE_DIR}"
  VURL_EXECUTABLE="$<TARGET_FILE:vurl>"
  VURL_SAMPLE_GENERATOR="$<TARGET_FILE:vurl_make_sample_glb>"
  VURL_CORPUS_GLB_DIR="${PROJECT_SOURCE_DIR}/../shared/corpus/glb/valid")
target_link_libraries(test_gltf_write PRIVATE vurl_gltf vurl_test_support GTest::gtest_main)
add_dependencies(test_gltf_write vurl vurl_make_sample_glb)
gtest_discover_tests(test_gltf_write)
