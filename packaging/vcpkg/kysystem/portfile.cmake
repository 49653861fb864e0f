# An overlay port: vcpkg install kysystem --overlay-ports=packaging/vcpkg
# It builds the source tree that it lies in.
get_filename_component(SOURCE_PATH "${CMAKE_CURRENT_LIST_DIR}/../../.." ABSOLUTE)

vcpkg_check_features(OUT_FEATURE_OPTIONS features FEATURES tool KYSYSTEM_BUILD_TOOLS)
vcpkg_cmake_configure(SOURCE_PATH "${SOURCE_PATH}"
  OPTIONS ${features} -DKYSYSTEM_BUILD_TESTS=OFF -DKYSYSTEM_BUILD_EXAMPLES=OFF)
vcpkg_cmake_install()
vcpkg_cmake_config_fixup(PACKAGE_NAME kySystem CONFIG_PATH lib/cmake/kySystem)
vcpkg_fixup_pkgconfig()
vcpkg_copy_pdbs()
if("tool" IN_LIST FEATURES)
  vcpkg_copy_tools(TOOL_NAMES ky AUTO_CLEAN)
endif()
file(REMOVE_RECURSE "${CURRENT_PACKAGES_DIR}/debug/include" "${CURRENT_PACKAGES_DIR}/debug/share/kySystem")
vcpkg_install_copyright(FILE_LIST "${SOURCE_PATH}/LICENSE")
file(INSTALL "${CMAKE_CURRENT_LIST_DIR}/usage" DESTINATION "${CURRENT_PACKAGES_DIR}/share/${PORT}")
