# SPDX-License-Identifier: MIT
# kvbase_unity_groups(target SOURCES ... [SINGLE ...]) lets a target compile all sources of a folder at once, where unity
# builds are on: what they all include and instantiate costs most of the time. So names in the unnamed namespaces of one
# folder must differ. SINGLE are those that must be compiled alone.
function(kvbase_unity_groups target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;SINGLE")
  list(REMOVE_ITEM arg_SOURCES ${arg_SINGLE})
  foreach(source IN LISTS arg_SOURCES)
    cmake_path(GET source PARENT_PATH folder)
    string(MAKE_C_IDENTIFIER "${folder}" group)
    set_source_files_properties("${source}" PROPERTIES UNITY_GROUP "${group}")
  endforeach()
  set_source_files_properties(${arg_SINGLE} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
  set_target_properties(${target} PROPERTIES UNITY_BUILD_MODE GROUP)
endfunction()
