# Object model and file reader.
add_executable(test_fbx_model
  ${CMAKE_CURRENT_LIST_DIR}/object_model_test.cpp
  ${CMAKE_CURRENT_LIST_DIR}/reader_properties_test.cpp
  ${CMAKE_CURRENT_LIST_DIR}/reader_objects_test.cpp
  ${CMAKE_CURRENT_LIST_DIR}/reader_connections_test.cpp
  ${CMAKE_CURRENT_LIST_DIR}/reader_status_test.cpp
)
vurl_warnings(test_fbx_model)
target_link_libraries(test_fbx_model PRIVATE vurl_fbx vurl_fbx_writer vurl_test_support GTest::gtest_main)
gtest_discover_tests(test_fbx_model)
