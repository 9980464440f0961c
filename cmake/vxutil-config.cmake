include(${CMAKE_CURRENT_LIST_DIR}/vxutil-targets.cmake)
