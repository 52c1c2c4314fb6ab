# Header-only libraries suit every target system, but a cross build looks for packages only in the
# target's tree.

# kozor_header_only(PACKAGE TARGET FOLDER): find_package(PACKAGE), or in a cross build an imported
# TARGET for what the build machine has installed in an include directory as FOLDER.  That directory
# itself isn't searched, because it also has the build machine's system headers.
function(kozor_header_only package target folder)
  if(NOT CMAKE_CROSSCOMPILING)
    find_package(${package} REQUIRED)
    return()
  endif()
  find_package(${package} QUIET)
  if(TARGET ${target})
    return()
  endif()
  find_path(KOZOR_${package}_HEADERS ${folder} PATHS /usr/include /usr/local/include
    NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
  if(NOT KOZOR_${package}_HEADERS)
    message(FATAL_ERROR "${package} is missing: its headers, ${folder}/, are in none of the usual places")
  endif()
  set(root ${PROJECT_BINARY_DIR}/include-roots/${package})
  file(MAKE_DIRECTORY ${root})
  file(CREATE_LINK ${KOZOR_${package}_HEADERS}/${folder} ${root}/${folder} SYMBOLIC COPY_ON_ERROR)
  add_library(${target} INTERFACE IMPORTED)
  target_include_directories(${target} INTERFACE ${root})
endfunction()
