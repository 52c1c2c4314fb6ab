# Windows for 32-bit x86, with MinGW-w64 (Debian: g++-mingw-w64-i686-posix) and, to run what was
# built, a 32-bit Wine (wine32).
#
# Modules register their unwind tables in libgcc.  Exceptions can cross modules only if all share
# one libgcc, so the compiler's run-time libraries are used as DLLs.
set(KOZOR_TRIPLE i686-w64-mingw32)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-w64.cmake)
set(KOZOR_RUNTIME_LIBRARIES "")
foreach(library libgcc_s_dw2-1 libstdc++-6 libwinpthread-1)
  execute_process(OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE
    COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${library}.dll)
  list(APPEND KOZOR_RUNTIME_LIBRARIES ${path})
endforeach()

find_program(KOZOR_WINE32 NAMES wine32 wine PATHS /usr/lib/wine NO_CMAKE_FIND_ROOT_PATH)
if(KOZOR_WINE32)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${KOZOR_WINE32})
endif()
