# Linux arm64 on any other machine: Debian's cross compiler, and programs run under qemu-user.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(vx_debian_architecture arm64)
# Return addresses are signed there. The emulator has a fast cipher for that, besides the real one.
set(vx_emulated_processor -cpu max,pauth-impdef=on)
include(${CMAKE_CURRENT_LIST_DIR}/debian_cross.cmake)
