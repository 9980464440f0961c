# Tests of what only Windows has, and all that runs under Wine.

set(toolchains ${PROJECT_SOURCE_DIR}/cmake/toolchains)
set(CMAKE_CROSSCOMPILING_EMULATOR ${toolchains}/in_wine ${PROJECT_BINARY_DIR}/wine)

# The values of the tests are written as in registry files, which are text on every system.
vx_test(store_test store_test.cpp windows/store_registry_test.cpp
  ${PROJECT_SOURCE_DIR}/src/platform/posix/registry_file.cpp
  ${PROJECT_SOURCE_DIR}/src/platform/registry_key.cpp LOADS)
target_include_directories(store_test PRIVATE ${PROJECT_SOURCE_DIR}/src)
add_dependencies(store_test headers_test)

# Each program that ends writes the registry, so these run one at a time. The prefix with the registry
# is made again for each run of the tests.
get_property(tests DIRECTORY PROPERTY TESTS)
set_tests_properties(${tests} PROPERTIES RESOURCE_LOCK wine FIXTURES_REQUIRED wine)
add_test(NAME Wine COMMAND ${toolchains}/new_wine_prefix ${PROJECT_BINARY_DIR}/wine)
set_tests_properties(Wine PROPERTIES FIXTURES_SETUP wine)

find_package(Python3 REQUIRED COMPONENTS Interpreter)
add_test(NAME Exports.AsObjdumpPrintsThem
  COMMAND ${Python3_EXECUTABLE} ${CMAKE_CURRENT_SOURCE_DIR}/windows/exports_test.py
    ${CMAKE_OBJDUMP} $<TARGET_FILE_DIR:vxutil> ${PROJECT_SOURCE_DIR}/src)
