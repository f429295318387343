# `cpack` in a build tree makes what is handed out: on Linux the Debian packages libqvxsys1, libqvxsys-dev and qvx, for
# Windows one zip with everything. All of it is stripped.
set(CPACK_PACKAGE_VENDOR "the qvxsys authors")
set(CPACK_PACKAGE_CONTACT "qvxsys maintainers <maintainers@qvxsys.example>" CACHE STRING
    "Who answers for the packages, as name and address")
set(CPACK_STRIP_FILES ON)

if(WIN32)
    set(CPACK_GENERATOR ZIP)
    set(CPACK_PACKAGE_FILE_NAME ${PROJECT_NAME}-${PROJECT_VERSION}-win64)
    set(CPACK_INCLUDE_TOPLEVEL_DIRECTORY ON)
    include(CPack)
    return()
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_SOURCE_DIR}/cmake/debian/config.cmake)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

# One package for each group of components; the groups bear the packages' names.
set(runtime libqvxsys${PROJECT_VERSION_MAJOR})
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_COMPONENTS_ALL runtime development documentation)
if(TARGET qvx)
    list(APPEND CPACK_COMPONENTS_ALL tool)
endif()
set(CPACK_COMPONENT_RUNTIME_GROUP ${runtime})
set(CPACK_COMPONENT_DEVELOPMENT_GROUP libqvxsys-dev)
set(CPACK_COMPONENT_DOCUMENTATION_GROUP libqvxsys-dev)
set(CPACK_COMPONENT_TOOL_GROUP qvx)

set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # CPack would put it before each package's own
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SOURCE qvxsys)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# qvx_debian_package(NAME SECTION SYNOPSIS TEXT [DEPENDS...])
function(qvx_debian_package name section synopsis text)
    string(TOUPPER ${name} key)
    foreach(pair "PACKAGE_NAME;${name}" "PACKAGE_SECTION;${section}" "DESCRIPTION;${synopsis}\n${text}")
        list(POP_FRONT pair suffix)
        set(CPACK_DEBIAN_${key}_${suffix} "${pair}" PARENT_SCOPE)
    endforeach()
    string(JOIN ", " depends ${ARGN})
    set(CPACK_DEBIAN_${key}_PACKAGE_DEPENDS "${depends}" PARENT_SCOPE)
endfunction()

set(what
"qvxsys has UTF-16 strings, messages and coded errors, paths, locks and
events, tasks with cancellation, call stacks and crash dumps, digests, and a
monitor that keeps a suite of processes within limits of CPU and memory.")
qvx_debian_package(${runtime} libs "foundation library for C++20" "${what}")
qvx_debian_package(libqvxsys-dev libdevel "foundation library for C++20 (development files)"
"${what}

This package has what programs are compiled with: headers, the archive, the
CMake package and the pkg-config file, besides the documentation with examples
and the debugger views."
    "${runtime} (= ${PROJECT_VERSION})")
# For fmt.h, for boost::any and the errors of the resource monitor, and for the archive.
set(CPACK_DEBIAN_LIBQVXSYS-DEV_PACKAGE_SUGGESTS "libfmt-dev, libboost-dev, libicu-dev, libdw-dev")
qvx_debian_package(qvx utils "text scanner and keeper of resource limits"
"qvx counts, searches and digests text files of any encoding on all
processors, runs commands within limits of memory and CPU, shows the processes
that are so watched, and tells what it sees of the machine."
    "${runtime} (= ${PROJECT_VERSION})")

# Each binary package needs what its programs are linked with; the library tells others by its shlibs file which package
# it is in, and has the linker's cache renewed by a trigger.
string(TOUPPER ${runtime} key)
foreach(package ${key} QVX)
    set(CPACK_DEBIAN_${package}_PACKAGE_SHLIBDEPS ON)
endforeach()
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/lib)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
# CPack writes scripts that call ldconfig unless it is told of others; these do not exist, so there are none.
set(CPACK_DEBIAN_${key}_PACKAGE_CONTROL_EXTRA ${PROJECT_SOURCE_DIR}/cmake/debian/triggers;no/postinst;no/postrm)

configure_file(${PROJECT_SOURCE_DIR}/cmake/debian/changelog.in ${PROJECT_BINARY_DIR}/debian-changelog @ONLY)
set(CPACK_QVXSYS_CHANGELOG ${PROJECT_BINARY_DIR}/debian-changelog)
include(CPack)
