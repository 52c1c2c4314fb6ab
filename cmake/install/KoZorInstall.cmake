# The install rules.  Files refer to each other by relative paths, so that an installed tree can be
# moved as a whole, unless a directory was given as an absolute path.
include(CMakePackageConfigHelpers)

option(KOZOR_RELOCATABLE "Let kozor.pc find the prefix by its own place" ON)
set(headers ${CMAKE_INSTALL_INCLUDEDIR}/kozor)
set(package ${CMAKE_INSTALL_LIBDIR}/cmake/KoZor)
set(templates ${CMAKE_CURRENT_LIST_DIR})

install(TARGETS KoZor KoZorPlatform EXPORT KoZorTargets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT library
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
  FILE_SET HEADERS DESTINATION ${headers} COMPONENT development
  INCLUDES DESTINATION ${headers})

# The platform library looks for the archiver in this directory.  On Windows it is installed beside
# the programs.
set(archiver_directory ${KOZOR_ARCHIVER_DIR})
if(WIN32)
  set(archiver_directory ${CMAKE_INSTALL_BINDIR})
endif()
install(TARGETS UNLHA32 EXPORT KoZorTargets LIBRARY DESTINATION ${archiver_directory} COMPONENT library)

# The compiler's run-time libraries, if they are shared (KOZOR_RUNTIME_LIBRARIES, from the toolchain
# file).
if(KOZOR_RUNTIME_LIBRARIES)
  install(FILES ${KOZOR_RUNTIME_LIBRARIES} DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT library)
endif()

if(TARGET kozor)
  install(TARGETS kozor RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT program)
  if(NOT CMAKE_CROSSCOMPILING)
    set(generated ${PROJECT_BINARY_DIR}/kozor/generated)
    install(DIRECTORY ${generated}/ DESTINATION ${CMAKE_INSTALL_MANDIR}/man1
      COMPONENT program FILES_MATCHING PATTERN "*.1")
    install(FILES ${generated}/kozor.bash RENAME kozor
      DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT program)
    install(FILES ${generated}/kozor.zsh RENAME _kozor
      DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions COMPONENT program)
    install(FILES ${generated}/kozor.fish
      DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d COMPONENT program)
  endif()
endif()

install(EXPORT KoZorTargets NAMESPACE KoZor:: DESTINATION ${package} COMPONENT development)
configure_package_config_file(${templates}/KoZorConfig.cmake.in
  ${PROJECT_BINARY_DIR}/KoZorConfig.cmake INSTALL_DESTINATION ${package})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/KoZorConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/KoZorConfig.cmake ${PROJECT_BINARY_DIR}/KoZorConfigVersion.cmake
  DESTINATION ${package} COMPONENT development)

set(pc_prefix ${CMAKE_INSTALL_PREFIX})
if(KOZOR_RELOCATABLE)
  cmake_path(RELATIVE_PATH pc_prefix BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)
  set(pc_prefix "\${pcfiledir}/${pc_prefix}")
endif()
foreach(directory INCLUDEDIR LIBDIR)
  set(pc_${directory} ${CMAKE_INSTALL_${directory}})
  if(NOT IS_ABSOLUTE "${pc_${directory}}")
    string(PREPEND pc_${directory} "\${prefix}/")
  endif()
endforeach()
configure_file(${templates}/kozor.pc.in ${PROJECT_BINARY_DIR}/kozor.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/kozor.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

install(FILES README.md CHANGELOG.md LICENSE
  DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT development)
install(DIRECTORY docs
  DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT development FILES_MATCHING PATTERN "*.md")
