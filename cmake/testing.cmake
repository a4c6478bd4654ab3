# SPDX-License-Identifier: MIT
# Tests are compiled more often than they are run, so they are not optimised; the library under test is compiled as it is
# shipped. The linker of mingw looks through all sections of an object for each of its symbols: inlined functions, a quarter
# of the sections, let it link in 8 s instead of 47. Only the library is compiled with the undefined behaviour sanitizer,
# which adds half to the tests' compile time.
set(kvbase_test_options -O0 -g0)
if(MINGW)
  set(kvbase_test_options -Og -g0)
endif()
if(KVBASE_SANITIZE)
  list(APPEND kvbase_test_options -fno-sanitize=undefined)
endif()

# On Linux clang++ compiles the tests of the library's objects, in 0.6 of the time of g++, which compiles the library and
# what its users would compile.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND NOT CMAKE_CROSSCOMPILING)
  set(kvbase_test_launcher "${PROJECT_SOURCE_DIR}/cmake/clang-launcher.sh")
endif()

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
    target_compile_options(${target} PRIVATE ${kvbase_test_options})
  endforeach()
else()
  find_package(GTest REQUIRED)
endif()

# What most tests include, precompiled.
set(kvbase_test_headers
    <algorithm> <filesystem> <fstream> <functional> <map> <random> <set> <sstream> <string> <thread> <vector> <gmock/gmock.h>
    "${PROJECT_SOURCE_DIR}/kvbase/kvbase.h")

set(kvbase_results_dir "${PROJECT_BINARY_DIR}/results")
file(MAKE_DIRECTORY "${kvbase_results_dir}")

# Registers a GoogleTest program as one test. Its single cases are counted from the report that it leaves under the test's
# name. The report's name is relative because a Windows program knows no path that starts with a slash.
function(kvbase_add_gtest target)
  # The thread sanitizer runs those tests that start threads.
  set(filter)
  if(KVBASE_SANITIZE STREQUAL "thread")
    set(filter --gtest_filter=*Concurrency*)
  endif()
  add_test(
    NAME ${target}
    COMMAND ${target} ${filter} --gtest_output=xml:results/${target}.xml
    WORKING_DIRECTORY "${PROJECT_BINARY_DIR}")
  set_tests_properties(${target} PROPERTIES TIMEOUT 900 RUN_SERIAL ON)
endfunction()

# The environments in which a program sees the languages of a user and of a system, German, Japanese and so on; without
# "on" both are the same. Wine takes them from LC_MESSAGES and LC_CTYPE, which must be installed on the host if they differ;
# on Linux the library reads the variables itself.
set(kvbase_language_english LC_ALL=en_US.UTF-8 KVBASE_SYSTEM_LANG=en_US.UTF-8)
set(kvbase_language_german LC_ALL=de_DE.UTF-8 KVBASE_SYSTEM_LANG=de_DE.UTF-8)
set(kvbase_language_austrian LC_ALL=de_AT.UTF-8 KVBASE_SYSTEM_LANG=de_AT.UTF-8)
set(kvbase_language_japanese LC_ALL=ja_JP.UTF-8 KVBASE_SYSTEM_LANG=ja_JP.UTF-8)
set(kvbase_language_german_on_french LC_MESSAGES=de_DE.UTF-8 LC_TIME=de_DE.UTF-8 LC_CTYPE=fr_FR.UTF-8
                                     KVBASE_SYSTEM_LANG=fr_FR.UTF-8 LOCPATH=${PROJECT_BINARY_DIR}/locales)
set(kvbase_language_english_on_german LC_MESSAGES=en_US.UTF-8 LC_TIME=en_US.UTF-8 LC_CTYPE=de_DE.UTF-8
                                      KVBASE_SYSTEM_LANG=de_DE.UTF-8 LOCPATH=${PROJECT_BINARY_DIR}/locales)

# Installs locales for the tests alone, in the build folder.
function(_kvbase_make_locales)
  if(NOT CMAKE_CROSSCOMPILING OR TARGET kvbase_locales)
    return()
  endif()
  set(locales)
  foreach(name de_DE en_US fr_FR)
    set(folder "${PROJECT_BINARY_DIR}/locales/${name}.UTF-8")
    add_custom_command(
      OUTPUT "${folder}/LC_CTYPE"
      COMMAND "${CMAKE_COMMAND}" -E make_directory "${PROJECT_BINARY_DIR}/locales"
      COMMAND localedef -i ${name} -f UTF-8 "${folder}"
      COMMENT "Locale ${name} for the tests"
      VERBATIM)
    list(APPEND locales "${folder}/LC_CTYPE")
  endforeach()
  add_custom_target(kvbase_locales DEPENDS ${locales})
endfunction()

# Registers those cases of a GoogleTest program that match FILTER as one test, run with the languages LANGUAGE, one of
# those above. The name of the test and of its report is <target>.<language>.
#
#   kvbase_add_gtest_in_language(my_tests german FILTER "InGerman.*" [ENVIRONMENT NAME=VALUE...])
function(kvbase_add_gtest_in_language target language)
  cmake_parse_arguments(PARSE_ARGV 2 arg "" FILTER ENVIRONMENT)
  if(NOT kvbase_language_${language} OR NOT arg_FILTER)
    message(FATAL_ERROR "kvbase_add_gtest_in_language: no language ${language}, or no filter")
  endif()
  _kvbase_make_locales()
  if(TARGET kvbase_locales)
    add_dependencies(${target} kvbase_locales)
  endif()
  set(name ${target}.${language})
  set(changes)
  foreach(variable LANGUAGE LC_ALL LC_MESSAGES LC_TIME LC_CTYPE LANG LOCPATH KVBASE_SYSTEM_LANG)
    list(APPEND changes ${variable}=unset:)
  endforeach()
  foreach(setting IN LISTS kvbase_language_${language} arg_ENVIRONMENT)
    string(REGEX REPLACE "^([^=]*)=" "\\1=set:" change "${setting}")
    list(APPEND changes "${change}")
  endforeach()
  add_test(
    NAME ${name}
    COMMAND ${target} --gtest_filter=${arg_FILTER} --gtest_output=xml:results/${name}.xml
    WORKING_DIRECTORY "${PROJECT_BINARY_DIR}")
  set_tests_properties(${name} PROPERTIES TIMEOUT 300 RUN_SERIAL ON ENVIRONMENT_MODIFICATION "${changes}")
endfunction()
