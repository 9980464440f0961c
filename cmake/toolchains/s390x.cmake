# Linux s390x, a big-endian machine, on any other machine: Debian's cross compiler, and programs run
# under qemu-user.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR s390x)
set(vx_debian_architecture s390x)
include(${CMAKE_CURRENT_LIST_DIR}/debian_cross.cmake)
