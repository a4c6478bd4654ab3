# SPDX-License-Identifier: MIT
# What cpack makes of an installation: a Debian package, and elsewhere a zip. The preset of a product names the generator.
#
# The library has one file name for linking and for running, without a version in it, so two releases cannot stand side by
# side, and a package for development would lack the link that such packages are made for. So there is one package for both.
if(NOT PROJECT_IS_TOP_LEVEL OR NOT BUILD_SHARED_LIBS)
  return()
endif()

# The version stands in the library itself, for whoever has only the file, and heads the history of the Debian package.
file(STRINGS kvbase/library/resources/library.rc kvbase_version_line REGEX "\"FileVersion\", \"${PROJECT_VERSION}\"")
file(STRINGS cmake/debian/changelog kvbase_debian_entry LIMIT_COUNT 1)
if(NOT kvbase_version_line OR NOT kvbase_debian_entry MATCHES "^kvbase \\(${PROJECT_VERSION}-([0-9]+)\\)")
  message(FATAL_ERROR "library.rc and cmake/debian/changelog must have version ${PROJECT_VERSION}, as CMakeLists.txt has")
endif()
set(CPACK_DEBIAN_PACKAGE_RELEASE "${CMAKE_MATCH_1}")

set(KVBASE_MAINTAINER "KVBase developers <kvbase@packages.example>" CACHE STRING "Maintainer of the Debian package")

set(CPACK_PACKAGE_NAME kvbase)
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_VERSION_MAJOR "${PROJECT_VERSION_MAJOR}")
set(CPACK_PACKAGE_VENDOR "KVBase developers")
set(CPACK_RESOURCE_FILE_LICENSE "${PROJECT_SOURCE_DIR}/LICENSE")
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${KVBASE_MAINTAINER}")
set(CPACK_DEBIAN_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"Text, counted objects, modules with resources in the user's language, paths
and disk operations, call stacks and assertion reports for C++17 programs, with
the same results on Linux and on Windows.
.
This package has the library, and what is needed to develop with it: headers,
CMake package, pkg-config file and displays for debuggers.")
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Loaded at run time: libdw1 names the functions of call stacks. The rest serves programs with resources, and the desktop.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS libdw1)
set(CPACK_DEBIAN_PACKAGE_SUGGESTS
    "g++, cmake, pkg-config, binutils-mingw-w64-x86-64, mingw-w64-x86-64-dev, gdb, xdg-utils, zenity | kdialog")

set(CPACK_KVBASE_SYMBOLS "${PROJECT_BINARY_DIR}/symbols")
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA "${CPACK_KVBASE_SYMBOLS}")

# Completes the Debian package, and writes its symbols file.
set(CPACK_PRE_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/cmake/debian/stage.cmake")
include(CPack)
