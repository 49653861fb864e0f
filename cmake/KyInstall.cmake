# Library, headers, package files and tool. `find_package(kySystem 3.0 CONFIG)` gives the target ky::kySystem; the
# components "shared" and "static" name the linkage that is wanted.
include(CMakePackageConfigHelpers)

if(BUILD_SHARED_LIBS)
  set(KY_LINKAGE shared)
else()
  set(KY_LINKAGE static)
endif()
set(KY_CMAKE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/kySystem")

install(TARGETS kySystem EXPORT kySystemTargets
  RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}"
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/ky" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" FILES_MATCHING PATTERN "*.h")
install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" DESTINATION "${CMAKE_INSTALL_DOCDIR}")
if(TARGET ky)
  install(TARGETS ky RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
endif()

install(EXPORT kySystemTargets NAMESPACE ky:: FILE kySystemTargets-${KY_LINKAGE}.cmake DESTINATION "${KY_CMAKE_DIR}")
export(EXPORT kySystemTargets NAMESPACE ky:: FILE "${CMAKE_BINARY_DIR}/kySystemTargets-${KY_LINKAGE}.cmake")

configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/kySystemConfig.cmake.in"
  "${CMAKE_BINARY_DIR}/kySystemConfig.cmake" INSTALL_DESTINATION "${KY_CMAKE_DIR}")
write_basic_package_version_file("${CMAKE_BINARY_DIR}/kySystemConfigVersion.cmake" COMPATIBILITY SameMajorVersion)
install(FILES "${CMAKE_BINARY_DIR}/kySystemConfig.cmake" "${CMAKE_BINARY_DIR}/kySystemConfigVersion.cmake"
  DESTINATION "${KY_CMAKE_DIR}")
# What the package offers besides the target.
foreach(file IN ITEMS KyAddResources.cmake KyEmbedFile.cmake KyResources.cpp.in)
  configure_file("${PROJECT_SOURCE_DIR}/cmake/${file}" "${CMAKE_BINARY_DIR}/${file}" COPYONLY)
  install(FILES "${PROJECT_SOURCE_DIR}/cmake/${file}" DESTINATION "${KY_CMAKE_DIR}")
endforeach()

if(BUILD_SHARED_LIBS)
  set(KY_PC_CFLAGS "")
else()
  set(KY_PC_CFLAGS "-DKY_STATIC")
endif()
if(WIN32)
  set(KY_PC_LIBS_PRIVATE "-ladvapi32 -lrpcrt4")
else()
  set(KY_PC_LIBS_PRIVATE "-pthread")
endif()
# The file finds its prefix from where it lies, so that an install tree can be moved.
file(RELATIVE_PATH KY_PC_PREFIX "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
string(REGEX REPLACE "/$" "" KY_PC_PREFIX "${KY_PC_PREFIX}")
configure_file("${PROJECT_SOURCE_DIR}/cmake/kySystem.pc.in" "${CMAKE_BINARY_DIR}/kySystem.pc" @ONLY)
install(FILES "${CMAKE_BINARY_DIR}/kySystem.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
