# 64-bit Windows with MinGW-w64 and its POSIX threads, as Debian packages it (g++-mingw-w64-x86-64-posix). Programs that
# the build or the tests start are run by Wine.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

# Where the libraries for the target are installed; unless QVXSYS_WIN64_PREFIX says so, those of cmake/win64-libraries.
if(NOT QVXSYS_WIN64_PREFIX)
    execute_process(COMMAND ${CMAKE_CURRENT_LIST_DIR}/../win64-libraries --prefix
        OUTPUT_VARIABLE QVXSYS_WIN64_PREFIX OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
endif()
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES QVXSYS_WIN64_PREFIX)

# What an older configuration of this build tree found in another prefix is looked for anew.
if(QVXSYS_WIN64_FOUND_IN AND NOT QVXSYS_WIN64_FOUND_IN STREQUAL QVXSYS_WIN64_PREFIX)
    get_cmake_property(names CACHE_VARIABLES)
    foreach(name IN LISTS names)
        string(FIND "$CACHE{${name}}" "${QVXSYS_WIN64_FOUND_IN}/" at)
        if(at GREATER -1)
            unset(${name} CACHE)
        endif()
    endforeach()
endif()
set(QVXSYS_WIN64_FOUND_IN ${QVXSYS_WIN64_PREFIX} CACHE INTERNAL "")

set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32 ${QVXSYS_WIN64_PREFIX})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/wine ${CMAKE_BINARY_DIR}/wine)
