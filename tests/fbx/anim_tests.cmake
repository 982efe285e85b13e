add_executable(test_fbx_anim
  ${CMAKE_CURRENT_LIST_DIR}/anim_time_test.cpp
  ${CMAKE_CURRENT_LIST_DIR}/anim_keys_test.cpp
  ${CMAKE_CURRENT_LIST_DIR}/anim_eval_test.cpp
  ${CMAKE_CURRENT_LIST_DIR}/anim_read_test.cpp
  ${CMAKE_CURRENT_LIST_DIR}/anim_objects_test.cpp
)
vurl_warnings(test_fbx_anim)
target_link_libraries(test_fbx_anim PRIVATE vurl_fbx vurl_fbx_writer GTest::gtest_main)
gtest_discover_tests(test_fbx_anim)
