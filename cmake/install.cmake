# SPDX-License-Identifier: MIT
# Headers, library, CMake package (find_package(KVBase), KVBase::KVBase) and pkg-config file.
include(CMakePackageConfigHelpers)

set(kvbase_package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/KVBase")

install(
  TARGETS KVBase
  EXPORT KVBaseTargets
  FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
install(EXPORT KVBaseTargets NAMESPACE KVBase:: DESTINATION "${kvbase_package_dir}")

configure_package_config_file(cmake/KVBaseConfig.cmake.in KVBaseConfig.cmake INSTALL_DESTINATION "${kvbase_package_dir}")
write_basic_package_version_file(KVBaseConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(
  FILES "${PROJECT_BINARY_DIR}/KVBaseConfig.cmake" "${PROJECT_BINARY_DIR}/KVBaseConfigVersion.cmake"
        cmake/KVBaseResources.cmake
  DESTINATION "${kvbase_package_dir}")

if(NOT WIN32)
  if(BUILD_SHARED_LIBS)
    set(kvbase_library_file KVBase.so)
  else()
    set(kvbase_library_file libKVBase.a)
  endif()
  configure_file(cmake/kvbase.pc.in kvbase.pc @ONLY)
  install(FILES "${PROJECT_BINARY_DIR}/kvbase.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
endif()
