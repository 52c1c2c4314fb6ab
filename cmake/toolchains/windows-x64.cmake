# Windows for x86-64, with MinGW-w64 (Debian: g++-mingw-w64-x86-64-posix) and, to run what was
# built, Wine (wine64).
set(KOZOR_TRIPLE x86_64-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-w64.cmake)

# The compiler's run-time libraries are linked statically into every module, so nothing else has to
# be shipped.  Exceptions can still cross modules: Windows itself reads the unwind tables, and types
# are compared by name.
set(CMAKE_EXE_LINKER_FLAGS_INIT -static)
set(CMAKE_SHARED_LINKER_FLAGS_INIT -static)

find_program(KOZOR_WINE NAMES wine64 wine PATHS /usr/lib/wine NO_CMAKE_FIND_ROOT_PATH)
if(KOZOR_WINE)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${KOZOR_WINE})
endif()
