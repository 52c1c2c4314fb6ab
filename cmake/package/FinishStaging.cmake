# Run by cpack on the staged files.  In a distribution, libraries need no run path and manual pages
# are compressed.
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
