# Installation: the library, its header, a CMake package and a pkg-config file.
include(CMakePackageConfigHelpers)

install(TARGETS pm.imgproc EXPORT PmImgProcTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(FILES ${PROJECT_SOURCE_DIR}/include/pm.imgproc.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT PmImgProcTargets NAMESPACE PmImgProc:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/PmImgProc)

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/PmImgProcConfig.cmake.in
  ${PROJECT_BINARY_DIR}/PmImgProcConfig.cmake INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/PmImgProc)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/PmImgProcConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/PmImgProcConfig.cmake ${PROJECT_BINARY_DIR}/PmImgProcConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/PmImgProc)

# The pkg-config file finds its prefix from its own folder, so the installed tree can move.
file(RELATIVE_PATH KAIP_PC_TO_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(${PROJECT_SOURCE_DIR}/cmake/pm.imgproc.pc.in ${PROJECT_BINARY_DIR}/pm.imgproc.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/pm.imgproc.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
