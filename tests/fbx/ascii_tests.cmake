# Text FBX files: values and their codes, refusals, and text files against their binary
# twins (field trees, imported documents, and the tool's outputs end to end).
add_executable(test_fbx_ascii
  ${CMAKE_CURRENT_LIST_DIR}/ascii_values_test.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ascii_malformed_test.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ascii_twin_test.cpp
  ${CMAKE_CURRENT_LIST_DIR}/../driver/run_tool.cpp
)
vurl_warnings(test_fbx_ascii)
target_link_libraries(test_fbx_ascii PRIVATE vurl_fbx vurl_fbx_scene_document vurl_test_support GTest::gtest_main)
# The end-to-end run uses the built tool, which finds its resource file beside itself.
target_compile_definitions(test_fbx_ascii PRIVATE VURL_EXECUTABLE="$<TARGET_FILE:vurl>")
add_dependencies(test_fbx_ascii vurl)
gtest_discover_tests(test_fbx_ascii)
