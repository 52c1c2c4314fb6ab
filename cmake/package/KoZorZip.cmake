# The package for Windows: one archive with all that is installed, for programs that run and for those
# that are linked against it.  `cpack -G ZIP` in the build folder makes it.
set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_NAME KoZor)
set(CPACK_PACKAGE_VENDOR KoZor)
set(CPACK_PACKAGE_FILE_NAME KoZor-${PROJECT_VERSION}-windows-${CMAKE_SYSTEM_PROCESSOR})
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_STRIP_FILES ON)
include(CPack)
