add_executable(test_fbx_model
  ${CMAKE_CURRENT_LIST_DIR}/object_model_test.cpp
)
vurl_warnings(test_fbx_model)
target_link_libraries(test_fbx_model PRIVATE vurl_fbx GTest::gtest_main)
gtest_discover_tests(test_fbx_model)
