# Packages by CPack: a relocatable archive (tar, zip), and for Debian the library, the development files
# and the program.  tools/package builds them; the Debian ones need the prefix /usr.
set(KOZOR_PACKAGE_CONTACT "KoZor maintainers <kozor@example.org>" CACHE STRING
  "Maintainer and address in the packages")

set(CPACK_PACKAGE_NAME kozor)
set(CPACK_PACKAGE_VENDOR "KoZor maintainers")
set(CPACK_PACKAGE_CONTACT "${KOZOR_PACKAGE_CONTACT}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL library development)
if(TARGET kozor)
  list(APPEND CPACK_COMPONENTS_ALL program)
endif()
if(WIN32)
  set(CPACK_GENERATOR ZIP)
else()
  set(CPACK_GENERATOR TGZ)
endif()

set(abi ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})  # as in SOVERSION
set(library_package libkozor${abi})
set(development_package libkozor-dev)
set(program_package kozor)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/lib)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${library_package})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_DESCRIPTION "file handling library: LZH archives and backup sets
 KoZor makes, reads and changes LZH archives, selects files by masks, and
 keeps backup sets over several volumes.
 .
 This package has the shared libraries and the archiver module that they
 load.")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/debian/symbols ${PROJECT_BINARY_DIR}/debian/triggers)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME ${development_package})
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${library_package} (= ${PROJECT_VERSION}-1)")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "file handling library: LZH archives and backup sets (development files)
 KoZor makes, reads and changes LZH archives, selects files by masks, and
 keeps backup sets over several volumes.
 .
 This package has the headers, the CMake package and the pkg-config file.")
set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME ${program_package})
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_DEPENDS "${library_package} (= ${PROJECT_VERSION}-1)")
set(CPACK_DEBIAN_PROGRAM_DESCRIPTION "command-line program for LZH archives and backup sets
 kozor makes, lists, extracts and changes LZH archives, makes
 self-extracting ones, and backs files up over several volumes.")

# What Debian's policy wants of every package: the licence and a list of changes.
find_program(GZIP gzip)
if(GZIP AND CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  set(folder ${PROJECT_BINARY_DIR}/debian)
  string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
  file(READ ${PROJECT_SOURCE_DIR}/LICENSE licence)
  file(WRITE ${folder}/copyright "KoZor\n\n${licence}")
  file(WRITE ${folder}/triggers "activate-noawait ldconfig\n")
  file(WRITE ${folder}/changelog.Debian "kozor (${PROJECT_VERSION}-1) unstable; urgency=medium

  * See CHANGELOG.md in the development package.

 -- ${KOZOR_PACKAGE_CONTACT}  ${date}\n")
  execute_process(COMMAND ${GZIP} -9nf ${folder}/changelog.Debian COMMAND_ERROR_IS_FATAL ANY)
  foreach(component ${CPACK_COMPONENTS_ALL})
    install(FILES ${folder}/copyright ${folder}/changelog.Debian.gz
      DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${${component}_package} COMPONENT ${component})
    file(WRITE ${folder}/${component}.overrides
      "# There is no bug in a tracker to close: the packages are the project's own.
${${component}_package}: initial-upload-closes-no-bugs\n")
    install(FILES ${folder}/${component}.overrides
      DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides RENAME ${${component}_package}
      COMPONENT ${component})
  endforeach()
endif()
include(CPack)
