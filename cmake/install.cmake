# SPDX-License-Identifier: MIT
# Headers, library, CMake package (find_package(KVBase), KVBase::KVBase) with the embedding of resources, pkg-config file, and
# the displays for debuggers. Nothing in an installation names the place where it stands, so it can be moved.
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
    set(kvbase_pc_requires icu-uc)
    set(kvbase_pc_libraries " -pthread -ldl")
    set(kvbase_pc_flags " -DKVBASE_STATIC")
  endif()
  set(kvbase_pkgconfig_dir "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
  file(RELATIVE_PATH kvbase_prefix_from_pc "/${kvbase_pkgconfig_dir}" /)
  string(REGEX REPLACE "/$" "" kvbase_prefix_from_pc "${kvbase_prefix_from_pc}")
  configure_file(cmake/kvbase.pc.in kvbase.pc @ONLY)
  install(FILES "${PROJECT_BINARY_DIR}/kvbase.pc" DESTINATION "${kvbase_pkgconfig_dir}")
endif()

install(FILES debuggers/kvbase.natvis debuggers/kvbase_gdb.py DESTINATION "${CMAKE_INSTALL_DATADIR}/kvbase")
install(FILES LICENSE CHANGELOG.md DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/kvbase")
