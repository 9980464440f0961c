# Tests of what only Windows has.

add_executable(linked_program windows/linked_program.cpp)
target_link_libraries(linked_program PRIVATE vxutil vxframework vx_build_flags)

# The values of the tests are written as in registry files, which are text on every system.
vx_test(store_test store_test.cpp windows/store_registry_test.cpp
  ${PROJECT_SOURCE_DIR}/src/platform/posix/registry_file.cpp
  ${PROJECT_SOURCE_DIR}/src/platform/registry_key.cpp LOADS)
target_include_directories(store_test PRIVATE ${PROJECT_SOURCE_DIR}/src)
add_dependencies(store_test linked_program)
