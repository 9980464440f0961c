# The installed product: two libraries, the public headers, a CMake package and a pkg-config file.
# scripts/make-deb makes Debian packages from it, and scripts/make-zip an archive for Windows.

include(CMakePackageConfigHelpers)

set_target_properties(vxframework PROPERTIES EXPORT_NAME framework)
install(TARGETS vxutil vxframework
  EXPORT vxutil-targets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    COMPONENT runtime NAMELINK_COMPONENT development
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime  # DLLs
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development  # import libraries
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  COMPONENT development
  FILES_MATCHING PATTERN "*.h")

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/vxutil)
install(EXPORT vxutil-targets
  NAMESPACE vxutil::
  DESTINATION ${package_dir}
  COMPONENT development)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/vxutil-config-version.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_SOURCE_DIR}/cmake/vxutil-config.cmake
  ${PROJECT_BINARY_DIR}/vxutil-config-version.cmake
  DESTINATION ${package_dir}
  COMPONENT development)

file(RELATIVE_PATH vx_pkgconfig_to_include
  ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_FULL_INCLUDEDIR})
configure_file(${PROJECT_SOURCE_DIR}/cmake/vxutil.pc.in ${PROJECT_BINARY_DIR}/vxutil.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/vxutil.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
  COMPONENT development)
