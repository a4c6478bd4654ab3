# SPDX-License-Identifier: MIT
# kvbase_unity_groups(target SIZE n SOURCES ... [SINGLE ...]) lets a target compile n of its sources at a time, all of one
# folder, where unity builds are on: what they all include and instantiate costs most of the time. So names in the unnamed
# namespaces of one folder must differ. SINGLE are those that must be compiled alone.
function(kvbase_unity_groups target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" SIZE "SOURCES;SINGLE")
  list(REMOVE_ITEM arg_SOURCES ${arg_SINGLE})
  set(folder_of_group "")
  foreach(source IN LISTS arg_SOURCES)
    cmake_path(GET source PARENT_PATH folder)
    if(NOT folder STREQUAL folder_of_group)
      set(folder_of_group "${folder}")
      set(count 0)
    endif()
    math(EXPR part "${count} / ${arg_SIZE}")
    math(EXPR count "${count} + 1")
    string(MAKE_C_IDENTIFIER "${folder}_${part}" group)
    set_source_files_properties("${source}" PROPERTIES UNITY_GROUP "${group}")
  endforeach()
  set_source_files_properties(${arg_SINGLE} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
  set_target_properties(${target} PROPERTIES UNITY_BUILD_MODE GROUP)
endfunction()
