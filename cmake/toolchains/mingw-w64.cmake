# Common part of the two MinGW-w64 toolchain files, which set KOZOR_TRIPLE and include this file.
set(CMAKE_SYSTEM_NAME Windows)
string(REGEX REPLACE "-.*" "" CMAKE_SYSTEM_PROCESSOR ${KOZOR_TRIPLE})

# The "posix" variants of the compilers support C++ threads.
set(CMAKE_C_COMPILER ${KOZOR_TRIPLE}-gcc-posix)  # GoogleTest asks for one
set(CMAKE_CXX_COMPILER ${KOZOR_TRIPLE}-g++-posix)
set(CMAKE_RC_COMPILER ${KOZOR_TRIPLE}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${KOZOR_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# There is no GoogleTest package for this compiler, so it is built from source.
set(KOZOR_GOOGLETEST_SOURCE /usr/src/googletest CACHE PATH "Sources of GoogleTest")
