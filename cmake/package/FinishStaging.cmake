# Run by cpack on the staged files.  In a distribution, libraries need no run path and manual pages
# are compressed, and the library's package lists its symbols.
file(GLOB_RECURSE files ${CPACK_TEMPORARY_DIRECTORY}/*)
foreach(file ${files})
  if(IS_SYMLINK ${file})
    continue()
  endif()
  if(file MATCHES "(\\.so\\.[0-9.]+|\\.DLL|/bin/[^/]+)$")
    file(RPATH_REMOVE FILE ${file})
  elseif(file MATCHES "/man1/[^/]+\\.1$")
    execute_process(COMMAND gzip -9n ${file} COMMAND_ERROR_IS_FATAL ANY)
  endif()
endforeach()

# Fails if a symbol of the list is missing, or another one is there.
if(CPACK_GENERATOR STREQUAL "DEB")
  list(FILTER files INCLUDE REGEX "/libKoZor[^/]*\\.so\\.[0-9]+\\.[0-9]+$")
  list(TRANSFORM files PREPEND -e)
  execute_process(COMMAND dpkg-gensymbols -p${CPACK_DEBIAN_LIBRARY_PACKAGE_NAME} -v${CPACK_PACKAGE_VERSION}
    -I${CPACK_KOZOR_SYMBOLS} -O${CPACK_KOZOR_SYMBOLS_CONTROL} -c4 ${files} COMMAND_ERROR_IS_FATAL ANY)
endif()
