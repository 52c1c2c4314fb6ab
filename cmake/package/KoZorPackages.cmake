# Sets up `cpack`: it makes Debian packages of the library, its development files and the program,
# and a tar archive of everything.  tools/package runs it and checks the result.
set(soversion ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
set(library_package libkozor${soversion})

# What Debian requires in each package besides the files themselves.
set(texts ${PROJECT_BINARY_DIR}/package)
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
set(maintainer "The KoZor authors <kozor@kozor.invalid>")
foreach(component library development program)
  string(TOUPPER ${component} upper)
  set(name kozor)
  if(component STREQUAL "library")
    set(name ${library_package})
  elseif(component STREQUAL "development")
    set(name libkozor-dev)
  endif()
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${name})
  configure_file(${CMAKE_CURRENT_LIST_DIR}/changelog.in ${texts}/${component}/changelog @ONLY)
  execute_process(COMMAND gzip -9nc ${texts}/${component}/changelog
    OUTPUT_FILE ${texts}/${component}/changelog.gz)
  install(FILES ${texts}/${component}/changelog.gz DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name}
    RENAME changelog.gz COMPONENT ${component})
  install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name}
    RENAME copyright COMPONENT ${component})
endforeach()
configure_file(${CMAKE_CURRENT_LIST_DIR}/library.overrides ${texts}/overrides @ONLY)
install(FILES ${texts}/overrides DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides
  RENAME ${library_package} COMPONENT library)

set(CPACK_GENERATOR DEB TGZ)
set(CPACK_PACKAGE_NAME kozor)
set(CPACK_PACKAGE_CONTACT "${maintainer}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL library development program)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ
  GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
# Removes run paths, compresses manual pages, and resolves the list of symbols.
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/FinishStaging.cmake)
set(CPACK_KOZOR_SYMBOLS ${CMAKE_CURRENT_LIST_DIR}/symbols)
set(CPACK_KOZOR_SYMBOLS_CONTROL ${texts}/symbols)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/lib)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/triggers ${texts}/symbols)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${library_package} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_PROGRAM_PACKAGE_DEPENDS "${library_package} (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "C++ library for LZH archives and backup sets
 KoZor makes, extends, reads and edits LZH archives, selects files by masks,
 and backs selections up over several volumes.  This package holds the
 libraries and the archiver that they load.")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "development files of the KoZor library
 Headers, CMake package, pkg-config file and manual of KoZor, a C++ library
 for LZH archives, file selections and backup sets.")
set(CPACK_COMPONENT_PROGRAM_DESCRIPTION "LZH archives and backup sets on the command line
 kozor makes, lists, tests and extracts LZH archives, and backs files up over
 several volumes with checksums and a catalogue.")
include(CPack)
