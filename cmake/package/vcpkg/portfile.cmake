# An overlay port of vcpkg that builds the tree that it lies in:
#
#   vcpkg install kozor --overlay-ports=cmake/package/vcpkg
vcpkg_check_linkage(ONLY_DYNAMIC_LIBRARY)
cmake_path(SET SOURCE_PATH NORMALIZE "${CURRENT_PORT_DIR}/../../..")
vcpkg_check_features(OUT_FEATURE_OPTIONS features FEATURES program KOZOR_PROGRAM)
vcpkg_cmake_configure(SOURCE_PATH "${SOURCE_PATH}"
  OPTIONS ${features} -DKOZOR_TESTS=OFF -DKOZOR_EXAMPLES=OFF -DKOZOR_WERROR=OFF)
vcpkg_cmake_install()
vcpkg_cmake_config_fixup(PACKAGE_NAME KoZor CONFIG_PATH lib/cmake/KoZor)
vcpkg_fixup_pkgconfig()
if("program" IN_LIST FEATURES)
  vcpkg_copy_tools(TOOL_NAMES kozor AUTO_CLEAN)
endif()
file(REMOVE_RECURSE "${CURRENT_PACKAGES_DIR}/debug/include" "${CURRENT_PACKAGES_DIR}/debug/share")
vcpkg_install_copyright(FILE_LIST "${SOURCE_PATH}/LICENSE")
