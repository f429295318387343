# Installation, in components: `runtime` (the library), `tool` (qvx and its manual page), `development` (headers, archive,
# CMake package, pkg-config file, debugger views) and `documentation`. Nothing installed names the prefix, so an
# installation can be moved.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)
set(cmake_folder ${CMAKE_INSTALL_LIBDIR}/cmake/qvxsys)

install(TARGETS qvxsys EXPORT qvxsysTargets
    RUNTIME COMPONENT runtime
    LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
    ARCHIVE COMPONENT development
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/public/qvxsys DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development
    FILES_MATCHING PATTERN *.h)

install(EXPORT qvxsysTargets NAMESPACE qvxsys:: DESTINATION ${cmake_folder} COMPONENT development)
if(TARGET qvxsys_static)
    install(TARGETS qvxsys_static EXPORT qvxsysStaticTargets ARCHIVE COMPONENT development
        INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
    install(EXPORT qvxsysStaticTargets NAMESPACE qvxsys:: DESTINATION ${cmake_folder} COMPONENT development)
endif()
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/qvxsysConfig.cmake.in
    ${PROJECT_BINARY_DIR}/qvxsysConfig.cmake INSTALL_DESTINATION ${cmake_folder} PATH_VARS CMAKE_INSTALL_BINDIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/qvxsysConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/qvxsysConfig.cmake ${PROJECT_BINARY_DIR}/qvxsysConfigVersion.cmake
    DESTINATION ${cmake_folder} COMPONENT development)

file(RELATIVE_PATH QVXSYS_PC_TO_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
# What an archive of the library is linked with. Not Requires.private: with that, pkg-config wants the .pc files of these
# libraries whenever it is asked for compiler flags.
set(QVXSYS_PC_LIBS_PRIVATE)
if(NOT WIN32)
    set(QVXSYS_PC_LIBS_PRIVATE "-licui18n -licuuc -ldw -lelf -ldl -lpthread")
endif()
configure_file(${PROJECT_SOURCE_DIR}/cmake/qvxsys.pc.in ${PROJECT_BINARY_DIR}/qvxsys.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/qvxsys.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

# Debugger views.
add_subdirectory(${PROJECT_SOURCE_DIR}/support ${PROJECT_BINARY_DIR}/support)

foreach(page README CHANGELOG CONTRIBUTING)
    install(FILES ${PROJECT_SOURCE_DIR}/${page}.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation)
endforeach()
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs ${PROJECT_SOURCE_DIR}/examples DESTINATION ${CMAKE_INSTALL_DOCDIR}
    COMPONENT documentation FILES_MATCHING PATTERN *.md PATTERN *.svg PATTERN *.cpp PATTERN site EXCLUDE)

if(TARGET qvx)
    install(TARGETS qvx COMPONENT tool)
    if(TARGET qvx_manual)
        install(FILES ${PROJECT_BINARY_DIR}/qvx.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tool)
    endif()
endif()
