# Installation: the library, its headers, the tool, a CMake package and a pkg-config file.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# For debuggers.
add_subdirectory(${PROJECT_SOURCE_DIR}/support)

install(TARGETS qvxsys EXPORT qvxsysTargets)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/public/qvxsys DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT qvxsysTargets NAMESPACE qvxsys:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/qvxsys)
if(TARGET qvx)
    install(TARGETS qvx)
endif()

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/qvxsysConfig.cmake.in
    ${CMAKE_CURRENT_BINARY_DIR}/qvxsysConfig.cmake INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/qvxsys)
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/qvxsysConfigVersion.cmake COMPATIBILITY SameMajorVersion)
# Relative, so that an installation can be moved.
file(RELATIVE_PATH QVXSYS_PC_TO_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(${PROJECT_SOURCE_DIR}/cmake/qvxsys.pc.in ${CMAKE_CURRENT_BINARY_DIR}/qvxsys.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/qvxsysConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/qvxsysConfigVersion.cmake
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/qvxsys)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/qvxsys.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
