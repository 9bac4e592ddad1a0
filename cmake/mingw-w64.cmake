# SPDX-License-Identifier: MIT
# Builds for 64-bit Windows on Debian. MOVER_WINDOWS_QT: where Qt for Windows lies (tools/windows-qt.sh);
# MOVER_HOST_BUILD: a build tree of this project for the machine that builds, for the tools that run during the build.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR AMD64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES MOVER_WINDOWS_QT)
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32 ${MOVER_WINDOWS_QT})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(Qt5_DIR ${MOVER_WINDOWS_QT}/lib/cmake/Qt5)
# Those run during the build: the machine's own.
set(Qt5LinguistTools_DIR /usr/lib/${CMAKE_HOST_SYSTEM_PROCESSOR}-linux-gnu/cmake/Qt5LinguistTools)
