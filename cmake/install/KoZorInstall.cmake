# What `cmake --install` puts where.  Everything is found by its place relative to the rest, so that
# an installed tree can be moved as a whole.
include(CMakePackageConfigHelpers)

set(KOZOR_HEADERS ${CMAKE_INSTALL_INCLUDEDIR}/kozor)
set(KOZOR_PACKAGE ${CMAKE_INSTALL_LIBDIR}/cmake/KoZor)
set(KOZOR_TEMPLATES ${CMAKE_CURRENT_LIST_DIR})

# Headers keep the layout in which they include one another.
install(DIRECTORY include/ DESTINATION ${KOZOR_HEADERS} FILES_MATCHING PATTERN "*.h")
install(FILES platform/Export.h DESTINATION ${KOZOR_HEADERS}/platform)
foreach(part win32 classlib)
  file(GLOB headers CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/platform/${part}/*.h)
  list(FILTER headers EXCLUDE REGEX "/AnsiPath\\.h$")  # for our own folders
  install(FILES ${headers} DESTINATION ${KOZOR_HEADERS}/platform/${part})
endforeach()

set_target_properties(KoZorPlatform PROPERTIES EXPORT_NAME Platform)
set_target_properties(KoZor KoZorPlatform UNLHA32 PROPERTIES INSTALL_RPATH "$ORIGIN")
install(TARGETS KoZor KoZorPlatform EXPORT KoZorTargets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})

# The archiver stands beside the platform library, which looks for it there.  On Windows the DLLs
# stand beside the program, and the system looks for all of them there.
set(KOZOR_MODULES ${CMAKE_INSTALL_LIBDIR})
if(WIN32)
  set(KOZOR_MODULES ${CMAKE_INSTALL_BINDIR})
endif()
install(TARGETS UNLHA32 LIBRARY DESTINATION ${KOZOR_MODULES})

# The compiler's run-time libraries, where the build shares them (KOZOR_RUNTIME_LIBRARIES, set by the
# toolchain file).
if(KOZOR_RUNTIME_LIBRARIES)
  install(FILES ${KOZOR_RUNTIME_LIBRARIES} DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

if(TARGET kozor)
  file(RELATIVE_PATH bin_to_lib ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
  set_target_properties(kozor PROPERTIES INSTALL_RPATH "$ORIGIN/${bin_to_lib}")
  install(TARGETS kozor RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()

install(EXPORT KoZorTargets NAMESPACE KoZor:: DESTINATION ${KOZOR_PACKAGE})
configure_package_config_file(${KOZOR_TEMPLATES}/KoZorConfig.cmake.in
  ${PROJECT_BINARY_DIR}/KoZorConfig.cmake INSTALL_DESTINATION ${KOZOR_PACKAGE})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/KoZorConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/KoZorConfig.cmake ${PROJECT_BINARY_DIR}/KoZorConfigVersion.cmake
  DESTINATION ${KOZOR_PACKAGE})

# pkg-config finds the tree by the place of its own file.
file(RELATIVE_PATH pc_to_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(${KOZOR_TEMPLATES}/kozor.pc.in ${PROJECT_BINARY_DIR}/kozor.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/kozor.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(FILES README.md CHANGELOG.md LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} FILES_MATCHING PATTERN "*.md")
