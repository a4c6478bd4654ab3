# SPDX-License-Identifier: MIT
# cpack runs this before it packs an installation: it gives the Debian package what Debian asks for beside the files of KVBase.
if(NOT CPACK_GENERATOR STREQUAL "DEB")
  return()
endif()
set(usr "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr")
set(doc "${usr}/share/doc/kvbase")

file(READ "${doc}/LICENSE" licence)
string(REGEX REPLACE "^[^\n]*\n\nCopyright \\(c\\) ([^\n]*)\n\n" "" licence "${licence}")
set(holders "${CMAKE_MATCH_1}")
string(STRIP "${licence}" licence)
string(REPLACE "\n\n" "\n.\n" licence "${licence}")
string(REPLACE "\n" "\n " licence "${licence}")
file(CONFIGURE OUTPUT "${doc}/copyright" @ONLY CONTENT [=[
Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/
Upstream-Name: KVBase

Files: *
Copyright: 2026, @holders@
License: Expat
 @licence@
]=])
file(REMOVE "${doc}/LICENSE")

file(RENAME "${doc}/CHANGELOG.md" "${doc}/changelog")
file(COPY_FILE "${CMAKE_CURRENT_LIST_DIR}/changelog" "${doc}/changelog.Debian")
execute_process(COMMAND gzip -9n "${doc}/changelog" "${doc}/changelog.Debian" COMMAND_ERROR_IS_FATAL ANY)

# gdb loads by itself what it finds here under the path of a library.
file(MAKE_DIRECTORY "${usr}/share/gdb/auto-load/usr/lib")
file(CREATE_LINK ../../../../kvbase/kvbase_gdb.py "${usr}/share/gdb/auto-load/usr/lib/KVBase.so-gdb.py" SYMBOLIC)

file(MAKE_DIRECTORY "${usr}/share/lintian/overrides")
file(COPY_FILE "${CMAKE_CURRENT_LIST_DIR}/lintian-overrides" "${usr}/share/lintian/overrides/kvbase")

# The symbols file gives the packages of programs a dependency on this version or a later one with the same interface.
execute_process(
  COMMAND dpkg-gensymbols -q -pkvbase "-v${CPACK_PACKAGE_VERSION}" "-P${CPACK_TEMPORARY_INSTALL_DIRECTORY}"
          "-O${CPACK_KVBASE_SYMBOLS}"
  ERROR_QUIET COMMAND_ERROR_IS_FATAL ANY)
file(READ "${CPACK_KVBASE_SYMBOLS}" symbols)
math(EXPR next_major "${CPACK_PACKAGE_VERSION_MAJOR} + 1")
string(REPLACE "#MINVER#" "#MINVER#, kvbase (<< ${next_major})\n* Build-Depends-Package: kvbase" symbols "${symbols}")
file(WRITE "${CPACK_KVBASE_SYMBOLS}" "${symbols}")
