# Field stream tests; fixtures come from the writer in tools/fbxwriter.
add_executable(test_fbx_stream
  stream_open_test.cpp
  stream_values_test.cpp
)
vurl_warnings(test_fbx_stream)
target_link_libraries(test_fbx_stream PRIVATE vurl_fbx vurl_fbx_writer GTest::gtest_main)
gtest_discover_tests(test_fbx_stream)

# Coverage-guided fuzzing of the stream and the reader; needs clang. Not part of the test run:
#   cmake -DCMAKE_CXX_COMPILER=clang++ -DVURL_FBX_FUZZER=ON ... && ninja fbx_stream_fuzzer
option(VURL_FBX_FUZZER "Build the libFuzzer target for the FBX field stream and reader" OFF)
if(VURL_FBX_FUZZER AND CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  # The library is compiled in again so that its code carries coverage counters.
  get_target_property(fbx_sources vurl_fbx SOURCES)
  list(TRANSFORM fbx_sources PREPEND ${PROJECT_SOURCE_DIR}/src/fbx/)
  find_package(ZLIB REQUIRED)
  add_executable(fbx_stream_fuzzer fbx_stream_fuzzer.cpp ${fbx_sources})
  target_include_directories(fbx_stream_fuzzer PRIVATE ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(fbx_stream_fuzzer PRIVATE ZLIB::ZLIB)
  target_compile_options(fbx_stream_fuzzer PRIVATE -fsanitize=fuzzer,address,undefined)
  target_link_options(fbx_stream_fuzzer PRIVATE -fsanitize=fuzzer,address,undefined)
endif()
