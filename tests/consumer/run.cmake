# SPDX-License-Identifier: MIT
# Makes the package of the build in `build`, installs it in a fresh folder, and there configures, builds and runs the project
# beside this file as a user of the package would. Where no package is made, for the static library and on a system without
# dpkg, the build is installed by CMake.
#
#   -Dbuild=  -Dsource=    the build and its source folder        -Dgenerator=  -Dcompiler=  for the project
#   -Dtoolchain=  -Dwine_prefix=    of a cross build for Windows, else empty
set(work "${build}/consumer")
# Whoever moves an installation may have a blank in the path.
set(root "${work}/fresh root")
file(REMOVE_RECURSE "${work}")
file(MAKE_DIRECTORY "${root}")

find_program(dpkg NAMES dpkg)
find_program(dpkg_shlibdeps NAMES dpkg-shlibdeps)
find_program(pkg_config NAMES pkg-config)

function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

function(make_package generator)
  run("${CMAKE_CPACK_COMMAND}" --config "${build}/CPackConfig.cmake" -G ${generator} -B "${work}")
endfunction()

# dpkg itself installs the package, since it reads the control data as it will on a user's machine: besides unpacking, it
# checks that what the package depends on is there. To the root belongs a list of installed packages, which has those that the
# library was linked with, as the building machine has them. The package is not configured: that runs its scripts, for which
# the root would need a whole system.
function(install_debian_package)
  file(GLOB package "${work}/*.deb")
  set(admin "${root}/var/lib/dpkg")
  file(MAKE_DIRECTORY "${admin}/info" "${admin}/updates" "${root}/var/log")
  execute_process(
    COMMAND dpkg-deb --field "${package}" Depends OUTPUT_VARIABLE depends OUTPUT_STRIP_TRAILING_WHITESPACE
    COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX REPLACE " *\\([^)]*\\)" "" depends "${depends}")
  string(REPLACE ", " ";" depends "${depends}")
  execute_process(COMMAND dpkg-query --status ${depends} OUTPUT_FILE "${admin}/status" COMMAND_ERROR_IS_FATAL ANY)
  set(dpkg_in_root "${dpkg}" "--root=${root}" --force-not-root --force-bad-path --force-unsafe-io)
  run(${dpkg_in_root} --unpack "${package}")
  run(${dpkg_in_root} --no-act --configure kvbase)
  run(${dpkg_in_root} --verify kvbase)
endfunction()

# Sets `prefix`.
function(install)
  set(prefix "${root}")
  if(EXISTS "${build}/CPackConfig.cmake" AND toolchain)
    make_package(ZIP)
    file(GLOB package "${work}/*.zip")
    file(ARCHIVE_EXTRACT INPUT "${package}" DESTINATION "${root}")
    file(GLOB prefix "${root}/*")
  elseif(EXISTS "${build}/CPackConfig.cmake" AND dpkg AND dpkg_shlibdeps)
    make_package(DEB)
    install_debian_package()
    set(prefix "${root}/usr")
  else()
    run("${CMAKE_COMMAND}" --install "${build}" --prefix "${root}" --strip)
  endif()
  set(prefix "${prefix}" PARENT_SCOPE)
endfunction()

# An installation that names no folder of the build works wherever it is moved. Only debug information may, which the static
# library keeps.
function(expect_no_path_of_the_build)
  file(GLOB_RECURSE files "${prefix}/*")
  list(LENGTH files count)
  if(count LESS 50)
    message(FATAL_ERROR "Only ${count} files are installed")
  endif()
  list(FILTER files EXCLUDE REGEX "/libKVBase\\.a$")
  foreach(folder "${source}" "${build}")
    string(REGEX REPLACE "([][+.*()^$?|\\\\])" "\\\\\\1" pattern "${folder}")
    foreach(file IN LISTS files)
      file(STRINGS "${file}" found REGEX "${pattern}" LIMIT_COUNT 1)
      if(found)
        message(FATAL_ERROR "${file} names a folder of the build: ${found}")
      endif()
    endforeach()
  endforeach()
endfunction()

# build_and_run(name cmake-option...)
function(build_and_run name)
  run("${CMAKE_COMMAND}" -S "${source}/tests/consumer" -B "${work}/${name}" -G "${generator}"
      "-DCMAKE_CXX_COMPILER=${compiler}" "-DSCANSHELF=${source}/examples/scanshelf" ${ARGN})
  run("${CMAKE_COMMAND}" --build "${work}/${name}")
  run("${CMAKE_CTEST_COMMAND}" --test-dir "${work}/${name}" --output-on-failure --no-tests=error)
endfunction()

install()
expect_no_path_of_the_build()
if(toolchain)
  set(toolchain_options "-DCMAKE_TOOLCHAIN_FILE=${toolchain}" "-DKVBASE_WINE_PREFIX=${wine_prefix}")
endif()
build_and_run(by_cmake "-DKVBase_ROOT=${prefix}" ${toolchain_options})
file(GLOB_RECURSE pc "${prefix}/*/kvbase.pc")
if(pkg_config AND pc)
  cmake_path(GET pc PARENT_PATH pc_dir)
  set(ENV{PKG_CONFIG_PATH} "${pc_dir}")
  build_and_run(by_pkg_config -DUSE_PKG_CONFIG=ON)
endif()
