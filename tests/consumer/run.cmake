# SPDX-License-Identifier: MIT
# Installs KVBase from `build`, then configures, builds and runs the project beside this file as a user of it would.
set(work "${build}/consumer")
file(REMOVE_RECURSE "${work}")

function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

set(options)
if(toolchain)
  list(APPEND options "-DCMAKE_TOOLCHAIN_FILE=${toolchain}" "-DKVBASE_WINE_PREFIX=${wine_prefix}")
endif()
run("${CMAKE_COMMAND}" --install "${build}" --prefix "${work}/installed")
run("${CMAKE_COMMAND}" -S "${source}" -B "${work}/build" -G "${generator}" "-DCMAKE_CXX_COMPILER=${compiler}"
    "-DKVBase_ROOT=${work}/installed" ${options})
run("${CMAKE_COMMAND}" --build "${work}/build")
run("${CMAKE_CTEST_COMMAND}" --test-dir "${work}/build" --output-on-failure --no-tests=error)

# The pkg-config file serves those who do not use CMake.
find_program(pkg_config NAMES pkg-config)
if(pkg_config AND NOT toolchain)
  file(GLOB_RECURSE pc "${work}/installed/*.pc")
  cmake_path(GET pc PARENT_PATH pc_dir)
  execute_process(
    COMMAND "${CMAKE_COMMAND}" -E env "PKG_CONFIG_PATH=${pc_dir}" "${pkg_config}" --define-prefix --cflags --libs kvbase
    OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  separate_arguments(flags UNIX_COMMAND "${flags}")
  cmake_path(GET pc_dir PARENT_PATH library_dir)
  run("${compiler}" -std=c++17 "${source}/main.cpp" -o "${work}/by_pkg_config" ${flags} "-Wl,-rpath,${library_dir}")
  run("${work}/by_pkg_config")
endif()
