# 64-bit Windows with MinGW-w64 and its POSIX threads, as Debian packages it (g++-mingw-w64-x86-64-posix).
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

# Where ICU for the target is installed; Debian has no package of it.
set(QVXSYS_WIN64_PREFIX "" CACHE PATH "Prefix of the libraries built for 64-bit Windows")
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32 ${QVXSYS_WIN64_PREFIX})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_CROSSCOMPILING_EMULATOR wine)
