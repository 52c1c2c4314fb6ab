# cmake -D STUB=file -P CheckStub.cmake: fails if the stub is too large: many programs look for an
# archive only in the first 64 KiB of a file.
file(SIZE ${STUB} bytes)
if(bytes GREATER_EQUAL 65536)
  message(FATAL_ERROR "the stub has ${bytes} bytes, 65,535 are possible")
endif()
