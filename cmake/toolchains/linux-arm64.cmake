# Linux for 64-bit Arm (Debian: g++-aarch64-linux-gnu), for the stub of self-extracting programs.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
