# The flags of every target, and the functions that define targets.

add_library(vx_build_flags INTERFACE)
target_compile_features(vx_build_flags INTERFACE cxx_std_20)
target_compile_options(vx_build_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow
  $<$<BOOL:${VXUTIL_WARNINGS_AS_ERRORS}>:-Werror>)
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # gcc 12 optimises the standard library's operator+(const char *, std::string &&) and then warns of
  # it: a false report, number 105651 of its bug list.
  target_compile_options(vx_build_flags INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Wno-restrict>)
endif()

# Results are the same bit for bit on every processor: a product is rounded before it is added, also
# where one instruction could do both.
target_compile_options(vx_build_flags INTERFACE -ffp-contract=off)

# Hardening as in distributions: a smashed stack or an overrun buffer ends the process. The addresses
# of functions are bound at load and read-only from then on. The targets of indirect jumps are marked;
# this has an effect if the start files of the C library are marked too.
target_compile_options(vx_build_flags INTERFACE -fstack-protector-strong)
if(WIN32)
  # Addresses are random and data cannot be executed; the compiler has none of the other guards here.
  target_link_options(vx_build_flags INTERFACE -Wl,--nxcompat,--dynamicbase,--high-entropy-va)
  # The runtime of the compiler, with the guard of the stack, is part of each library and program.
  target_link_options(vx_build_flags INTERFACE -static -fstack-protector-strong)
  # A program finds the DLLs in its own folder.
  set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
else()
  target_compile_options(vx_build_flags INTERFACE -fstack-clash-protection)
  target_link_options(vx_build_flags INTERFACE -Wl,-z,relro,-z,now,-z,noexecstack)
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64)$")
    target_compile_options(vx_build_flags INTERFACE -fcf-protection=full)
  elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64)$")
    target_compile_options(vx_build_flags INTERFACE -mbranch-protection=standard)
  endif()
endif()
if(NOT VXUTIL_SANITIZE)
  # Sanitizers intercept the unchecked calls. The C library checks in optimised code only, and warns
  # elsewhere.
  set(optimised $<CONFIG:Release,RelWithDebInfo,MinSizeRel>)
  target_compile_options(vx_build_flags INTERFACE
    $<${optimised}:-U_FORTIFY_SOURCE> $<${optimised}:-D_FORTIFY_SOURCE=2>)
endif()

if(VXUTIL_SANITIZE)
  target_compile_options(vx_build_flags INTERFACE
    -fsanitize=${VXUTIL_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(vx_build_flags INTERFACE -fsanitize=${VXUTIL_SANITIZE})
endif()

# vx_module(NAME SOURCE...): one module as the object library vx_NAME.
function(vx_module name)
  add_library(vx_${name} OBJECT ${ARGN})
  target_link_libraries(vx_${name} PRIVATE vx_build_flags)
  target_compile_definitions(vx_${name} PRIVATE VX_IS_LINKED_IN)
  target_include_directories(vx_${name} PRIVATE
    ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}/include)
  set_target_properties(vx_${name} PROPERTIES
    POSITION_INDEPENDENT_CODE ON
    CXX_EXTENSIONS OFF
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON)
endfunction()

# vx_library(TARGET): settings shared by both shared libraries.
function(vx_library target)
  set_target_properties(${target} PROPERTIES
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}
    LINKER_LANGUAGE CXX
    CXX_EXTENSIONS OFF
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    INSTALL_RPATH "$ORIGIN")
  target_include_directories(${target} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>)
  if(WIN32)
    set_target_properties(${target} PROPERTIES PREFIX "")  # vxutil.dll, imported by libvxutil.dll.a
    return()
  endif()
  target_link_options(${target} PRIVATE -Wl,--as-needed)
  if(NOT VXUTIL_SANITIZE)
    # A sanitizer's runtime is linked to the program, not to the library.
    target_link_options(${target} PRIVATE -Wl,-z,defs)
  endif()
endfunction()

# vx_locale(FOLDER NAME SOURCE CHARMAP): builds a locale in FOLDER, with the name that setlocale takes.
# Locales are files in the byte order of the machine that uses them.
# For a character set that is not a superset of ASCII, localedef fails but still writes the locale.
function(vx_locale locales name source charmap)
  set(order --little-endian)
  if(CMAKE_CXX_BYTE_ORDER STREQUAL BIG_ENDIAN)
    set(order --big-endian)
  endif()
  add_custom_command(OUTPUT ${locales}/${name}/LC_CTYPE
    COMMAND sh -c "localedef ${order} -c -i ${source} -f ${charmap} --no-archive ${locales}/${name} 2>localedef.log || test -f ${locales}/${name}/LC_CTYPE"
    COMMENT "Making the locale ${name}"
    VERBATIM)
  add_custom_target(locale_${name} ALL DEPENDS ${locales}/${name}/LC_CTYPE)
endfunction()

# vx_program(OUT TARGET): what a script runs as TARGET, which is the program itself or, in a cross
# build, a script that runs it in the emulator.
function(vx_program out target)
  set(program $<TARGET_FILE:${target}>)
  if(CMAKE_CROSSCOMPILING)
    list(JOIN CMAKE_CROSSCOMPILING_EMULATOR " " emulator)
    set(script ${CMAKE_CURRENT_BINARY_DIR}/emulated/${target})
    file(GENERATE OUTPUT ${script} CONTENT "#!/bin/sh\nexec ${emulator} '${program}' \"$@\"\n"
      FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
    set(program ${script})
  endif()
  set(${out} ${program} PARENT_SCOPE)
endfunction()
