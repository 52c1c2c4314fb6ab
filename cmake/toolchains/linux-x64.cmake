# Linux for x86-64 (Debian: g++-x86-64-linux-gnu, or g++ there), for the stub of self-extracting
# programs.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_CXX_COMPILER x86_64-linux-gnu-g++)
