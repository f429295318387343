# Build options and the compile flags that every target of this tree shares.

# A project that takes this one in (add_subdirectory, FetchContent) gets the library alone, and nothing that reaches beyond
# this tree: no build type, no compiler launcher, no flags on targets of its own.
option(QVXSYS_BUILD_TOOL "Build the qvx command-line tool" ${PROJECT_IS_TOP_LEVEL})
option(QVXSYS_BUILD_TESTS "Build the tests and the examples" ${PROJECT_IS_TOP_LEVEL})
option(QVXSYS_INSTALL "Make the rules for installing" ${PROJECT_IS_TOP_LEVEL})
option(QVXSYS_BUILD_STATIC "Make an archive of the library besides (not for Windows)" OFF)
option(QVXSYS_BUILD_FUZZ "Build the fuzz targets (needs Clang)" OFF)
option(QVXSYS_BUILD_BENCH "Build the benchmarks (needs the peer libraries)" OFF)
option(QVXSYS_COVERAGE "Record which lines run (GCC)" OFF)
option(QVXSYS_WERROR "Treat warnings as errors" OFF)
set(QVXSYS_TEST_PREFIX "" CACHE STRING "Put before the names of the tests, to tell build trees apart in one run")
set(QVXSYS_SANITIZE "" CACHE STRING "Sanitizers, as -fsanitize= takes them: address,undefined or thread")

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_UNITY_BUILD OFF) # names that are private to a source occur in others, too

if(PROJECT_IS_TOP_LEVEL)
    set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
    set_property(GLOBAL PROPERTY USE_FOLDERS ON)
    if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
        set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "" FORCE)
    endif()
    # Programs in the build tree find the library beside them without any environment variable.
    set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
    set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
    set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
    find_program(QVXSYS_CCACHE ccache)
    if(QVXSYS_CCACHE)
        set(CMAKE_CXX_COMPILER_LAUNCHER ${QVXSYS_CCACHE})
    endif()
endif()

# A source file with primitives of one system is called X_${QVX_OS}.cpp, or X_${QVX_KERNEL}.cpp where they are those of
# Linux alone.
if(WIN32)
    set(QVX_OS win)
    set(QVX_KERNEL win)
else()
    set(QVX_OS posix)
    set(QVX_KERNEL linux)
endif()

# qvx_flags: what our own code is compiled with. Not exported to consumers.
add_library(qvx_flags INTERFACE)
target_compile_options(qvx_flags INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wnon-virtual-dtor -Wold-style-cast
    $<$<CXX_COMPILER_ID:Clang>:-Wthread-safety>
    $<$<BOOL:${QVXSYS_WERROR}>:-Werror>
    # Source paths in assertions and debug data start at the tree, on every machine alike. Coverage has to find the files.
    -f$<IF:$<BOOL:${QVXSYS_COVERAGE}>,macro,file>-prefix-map=${PROJECT_SOURCE_DIR}/=qvxsys/)
if(QVXSYS_COVERAGE)
    target_compile_options(qvx_flags INTERFACE --coverage)
    target_link_options(qvx_flags INTERFACE --coverage)
endif()
if(QVXSYS_SANITIZE)
    target_compile_options(qvx_flags INTERFACE -fsanitize=${QVXSYS_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    target_link_options(qvx_flags INTERFACE -fsanitize=${QVXSYS_SANITIZE})
endif()
