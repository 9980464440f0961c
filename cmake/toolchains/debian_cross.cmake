# What the toolchains for Linux share. The names of compiler, folder and emulator follow from the
# processor.
set(triplet ${CMAKE_SYSTEM_PROCESSOR}-linux-gnu)
set(CMAKE_C_COMPILER ${triplet}-gcc)
set(CMAKE_CXX_COMPILER ${triplet}-g++)

# scripts/converters puts the C library's converters of character sets there.
get_filename_component(converters ../../build/converters/${vx_debian_architecture} ABSOLUTE
  BASE_DIR ${CMAKE_CURRENT_LIST_DIR})
set(CMAKE_CROSSCOMPILING_EMULATOR
  qemu-${CMAKE_SYSTEM_PROCESSOR} ${vx_emulated_processor} -L /usr/${triplet} -E GCONV_PATH=${converters})

# Programs are the host's; headers, libraries and packages are the target's.
set(CMAKE_FIND_ROOT_PATH /usr/${triplet})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
