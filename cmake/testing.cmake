# SPDX-License-Identifier: MIT
# GoogleTest comes from Debian's packages. There is none for mingw, so a cross build compiles the sources that Debian's package
# `googletest` installs.
if(CMAKE_CROSSCOMPILING)
  set(KVBASE_GOOGLETEST_DIR /usr/src/googletest CACHE PATH "Sources of GoogleTest")
  block()
    set(BUILD_SHARED_LIBS OFF)
    set(INSTALL_GTEST OFF)
    add_subdirectory("${KVBASE_GOOGLETEST_DIR}" "${PROJECT_BINARY_DIR}/googletest" EXCLUDE_FROM_ALL SYSTEM)
  endblock()
  foreach(target gtest gmock gmock_main)
    target_compile_options(${target} PRIVATE -O0 -g0)
  endforeach()
else()
  find_package(GTest REQUIRED)
endif()

# Tests are compiled more often than they are run, so they are not optimised; the library under test is compiled as it is
# shipped. Only the library is compiled with the undefined behaviour sanitizer, which adds half to the tests' compile time.
set(kvbase_test_options -O0 $<$<CONFIG:RelWithDebInfo>:-g0>)
if(KVBASE_SANITIZE)
  list(APPEND kvbase_test_options -fno-sanitize=undefined)
endif()

set(kvbase_results_dir "${PROJECT_BINARY_DIR}/results")
file(MAKE_DIRECTORY "${kvbase_results_dir}")

# Registers a GoogleTest program as one test. Its single cases are counted from the report that it leaves under the test's
# name. The report's name is relative because a Windows program knows no path that starts with a slash.
function(kvbase_add_gtest target)
  add_test(
    NAME ${target}
    COMMAND ${target} --gtest_output=xml:results/${target}.xml
    WORKING_DIRECTORY "${PROJECT_BINARY_DIR}")
  set_tests_properties(${target} PROPERTIES TIMEOUT 900 RUN_SERIAL ON)
endfunction()

# Registers a source whose cases must not compile: see compile_fail.cmake.
function(kvbase_add_compile_fail source)
  cmake_path(GET source STEM stem)
  add_test(
    NAME compile_fail.${stem}
    COMMAND "${CMAKE_COMMAND}" "-Dcompiler=${CMAKE_CXX_COMPILER}" "-Dinclude=${PROJECT_SOURCE_DIR}" "-Dsource=${source}"
            -P "${PROJECT_SOURCE_DIR}/cmake/checks/compile_fail.cmake")
endfunction()
