# Read by cpack for each generator: Debian packages are installed below /usr, whatever the build tree was configured for.
if(CPACK_GENERATOR STREQUAL "DEB")
    set(CPACK_SET_DESTDIR ON)
    set(CPACK_INSTALL_PREFIX /usr)
    set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/finish.cmake)
endif()
