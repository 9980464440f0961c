# GoogleTest, the surroundings of the tests, and the functions that define them. Included by tests/.

# A cross build has no GoogleTest for its machine, so it is built from the sources that Debian installs.
if(CMAKE_CROSSCOMPILING)
  set(BUILD_GMOCK OFF)
  set(INSTALL_GTEST OFF)
  add_subdirectory(/usr/src/googletest googletest EXCLUDE_FROM_ALL)
else()
  find_package(GTest REQUIRED)
endif()
include(GoogleTest)

# Every test has a registry and locales of its own: nothing of the user's is touched.
set(scratch ${CMAKE_CURRENT_BINARY_DIR}/scratch)
set(locales ${CMAKE_CURRENT_BINARY_DIR}/locales)
file(MAKE_DIRECTORY ${scratch}/registry ${locales})

if(NOT WIN32)
  vx_locale(${locales} ja_JP.SJIS ja_JP SHIFT_JIS)
  vx_locale(${locales} ko_KR.EUC-KR ko_KR EUC-KR)
  vx_locale(${locales} zh_CN.GBK zh_CN GBK)
  vx_locale(${locales} zh_TW.BIG5 zh_TW BIG5)
  vx_locale(${locales} de_DE.ISO-8859-1 de_DE ISO-8859-1)
  vx_locale(${locales} de_DE.UTF-8 de_DE UTF-8)
endif()

# In memory, where there is such a folder: most files that tests write are synced.
set(vx_temporary /tmp)
if(IS_DIRECTORY /dev/shm)
  set(vx_temporary /dev/shm)
endif()

# vx_isolate(TEST...): gives tests an environment and folders of their own.
function(vx_isolate)
  set_tests_properties(${ARGN} PROPERTIES
    ENVIRONMENT "VX_REGISTRY_DIR=${scratch}/registry;LOCPATH=${locales};HOME=${scratch};TMPDIR=${vx_temporary};ZOR_TEXTURE_PATH=;ZOR_IES_PATH="
    WORKING_DIRECTORY ${scratch})
endfunction()

# vx_command_test(NAME COMMAND...): a test that is a command.
function(vx_command_test name)
  add_test(NAME ${name} COMMAND ${ARGN})
  vx_isolate(${name})
endfunction()

set(system posix)
if(WIN32)
  set(system windows)
endif()

# vx_test(NAME SOURCE... [INTERNALS] [LINK ITEM...]): a test program. It uses the shared library as
# a user would or, with INTERNALS, is linked to the objects that the library is made of, or, with
# LOADS, loads and unloads the library itself.
function(vx_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "INTERNALS;LOADS" "" "LINK")
  add_executable(${name} ${arg_UNPARSED_ARGUMENTS})
  set(library vxutil)
  if(arg_INTERNALS)
    set(library vx_internals)
  elseif(arg_LOADS)
    set(library ${CMAKE_DL_LIBS})
    add_dependencies(${name} vxutil)
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/include)
    target_compile_definitions(${name} PRIVATE VX_LIBRARY="$<IF:$<BOOL:${WIN32}>,vxutil.dll,$<TARGET_FILE:vxutil>>")
  endif()
  target_link_libraries(${name} PRIVATE ${library} vxframework vx_build_flags GTest::gtest_main ${arg_LINK})
  target_include_directories(${name} PRIVATE
    ${system} ${CMAKE_CURRENT_SOURCE_DIR} ${PROJECT_SOURCE_DIR})  # the models are in fuzz/
  target_compile_definitions(${name} PRIVATE
    VX_TEST_DATA="${CMAKE_CURRENT_SOURCE_DIR}/data")
  if(WIN32)
    set(tests ${name})  # as one: Wine takes long to start
    add_test(NAME ${name} COMMAND ${name})
  else()
    gtest_add_tests(TARGET ${name} TEST_LIST tests)
  endif()
  vx_isolate(${tests})
endfunction()
