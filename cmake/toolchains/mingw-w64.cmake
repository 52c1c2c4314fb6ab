# What the two MinGW-w64 toolchain files share.  They set KOZOR_TRIPLE before they include this.
set(CMAKE_SYSTEM_NAME Windows)
string(REGEX REPLACE "-.*" "" CMAKE_SYSTEM_PROCESSOR ${KOZOR_TRIPLE})

# The "posix" compilers have the threads of the C++ library.
set(CMAKE_C_COMPILER ${KOZOR_TRIPLE}-gcc-posix)  # GoogleTest asks for one
set(CMAKE_CXX_COMPILER ${KOZOR_TRIPLE}-g++-posix)
set(CMAKE_RC_COMPILER ${KOZOR_TRIPLE}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${KOZOR_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# No package of GoogleTest exists for this compiler: the tests build it from its sources.
set(KOZOR_GOOGLETEST_SOURCE /usr/src/googletest CACHE PATH "Sources of GoogleTest")
