# 64-bit Windows with MinGW-w64 and its POSIX threads, as Debian packages it (g++-mingw-w64-x86-64-posix). Programs that
# the build or the tests start are run by Wine.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

# Where the libraries for the target are installed; without a word the ones that cmake/win64-libraries makes.
set(QVXSYS_WIN64_PREFIX "" CACHE PATH "Prefix of the libraries built for 64-bit Windows")
if(NOT QVXSYS_WIN64_PREFIX)
    execute_process(COMMAND ${CMAKE_CURRENT_LIST_DIR}/../win64-libraries --prefix
        OUTPUT_VARIABLE QVXSYS_WIN64_PREFIX OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    set(QVXSYS_WIN64_PREFIX ${QVXSYS_WIN64_PREFIX} CACHE PATH "" FORCE)
endif()
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES QVXSYS_WIN64_PREFIX)

set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32 ${QVXSYS_WIN64_PREFIX})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/wine ${CMAKE_BINARY_DIR}/wine)
