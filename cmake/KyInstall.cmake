# Library, headers, package files and tool. `find_package(kySystem 3.0 CONFIG)` gives the target ky::kySystem; the
# components "shared" and "static" name the linkage that is wanted.
include(CMakePackageConfigHelpers)

if(BUILD_SHARED_LIBS)
  set(KY_LINKAGE shared)
else()
  set(KY_LINKAGE static)
endif()
set(KY_CMAKE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/kySystem")

# Three components, which become three packages: what programs need to run, what is needed to build them, the tool.
install(TARGETS kySystem EXPORT kySystemTargets
  RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT runtime
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development)
install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/ky" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" COMPONENT development
  FILES_MATCHING PATTERN "*.h")
install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT runtime)
install(FILES "${PROJECT_SOURCE_DIR}/debug/kySystem_gdb.py" "${PROJECT_SOURCE_DIR}/debug/kySystem.natvis"
  DESTINATION "${CMAKE_INSTALL_DATADIR}/kySystem" COMPONENT development)
if(TARGET ky)
  # Found from where the tool lies, so that an install tree can be moved.
  file(RELATIVE_PATH KY_LIBRARY_FROM_TOOL "/${CMAKE_INSTALL_BINDIR}" "/${CMAKE_INSTALL_LIBDIR}")
  set_target_properties(ky PROPERTIES INSTALL_RPATH "$ORIGIN/${KY_LIBRARY_FROM_TOOL}")
  install(TARGETS ky RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT tool)
endif()
if(MINGW AND BUILD_SHARED_LIBS)
  install(FILES ${KY_COMPILER_LIBRARIES} DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT runtime)
endif()

install(EXPORT kySystemTargets NAMESPACE ky:: FILE kySystemTargets-${KY_LINKAGE}.cmake DESTINATION "${KY_CMAKE_DIR}"
  COMPONENT development)
export(EXPORT kySystemTargets NAMESPACE ky:: FILE "${CMAKE_BINARY_DIR}/kySystemTargets-${KY_LINKAGE}.cmake")

configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/kySystemConfig.cmake.in"
  "${CMAKE_BINARY_DIR}/kySystemConfig.cmake" INSTALL_DESTINATION "${KY_CMAKE_DIR}")
write_basic_package_version_file("${CMAKE_BINARY_DIR}/kySystemConfigVersion.cmake" COMPATIBILITY SameMajorVersion)
install(FILES "${CMAKE_BINARY_DIR}/kySystemConfig.cmake" "${CMAKE_BINARY_DIR}/kySystemConfigVersion.cmake"
  DESTINATION "${KY_CMAKE_DIR}" COMPONENT development)
# What the package offers besides the target.
foreach(file IN ITEMS KyAddResources.cmake KyEmbedFile.cmake KyResources.cpp.in)
  configure_file("${PROJECT_SOURCE_DIR}/cmake/${file}" "${CMAKE_BINARY_DIR}/${file}" COPYONLY)
  install(FILES "${PROJECT_SOURCE_DIR}/cmake/${file}" DESTINATION "${KY_CMAKE_DIR}" COMPONENT development)
endforeach()

if(BUILD_SHARED_LIBS)
  set(KY_PC_CFLAGS "")
else()
  set(KY_PC_CFLAGS "-DKY_STATIC")
endif()
if(WIN32)
  get_target_property(libraries kySystemInternal INTERFACE_LINK_LIBRARIES)
  list(REMOVE_ITEM libraries Threads::Threads)
  list(TRANSFORM libraries PREPEND "-l")
  list(JOIN libraries " " KY_PC_LIBS_PRIVATE)
else()
  set(KY_PC_LIBS_PRIVATE "-pthread")
endif()
# The file finds its prefix from where it lies, so that an install tree can be moved.
file(RELATIVE_PATH KY_PC_PREFIX "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
string(REGEX REPLACE "/$" "" KY_PC_PREFIX "${KY_PC_PREFIX}")
configure_file("${PROJECT_SOURCE_DIR}/cmake/kySystem.pc.in" "${CMAKE_BINARY_DIR}/kySystem.pc" @ONLY)
install(FILES "${CMAKE_BINARY_DIR}/kySystem.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT development)
