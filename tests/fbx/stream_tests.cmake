# Field stream tests; fixtures come from the writer in tools/fbxwriter.
add_executable(test_fbx_stream
  stream_open_test.cpp
  stream_values_test.cpp
)
vurl_warnings(test_fbx_stream)
target_link_libraries(test_fbx_stream PRIVATE vurl_fbx vurl_fbx_writer GTest::gtest_main)
gtest_discover_tests(test_fbx_stream)
