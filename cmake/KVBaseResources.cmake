# SPDX-License-Identifier: MIT
# kvbase_add_resources(target file.rc...) gives a module its Windows resources, on every system.
# kvbase_add_resource_library(target file.rc... [OUTPUT_DIRECTORY folder]) makes a library that holds nothing else (a
# translation: toolabc.dll), in the current build folder unless another is given. It is the same file on every system.
#
# Off Windows the resources become a resource-only PE image, carried in an ELF note (owner "KVBase", type 1): found without a
# symbol, whatever the visibility, and it stays when the module is stripped. The tools come from binutils for mingw-w64, the headers
# that a script may include from mingw-w64 itself; no compiler for Windows is needed.
if(NOT WIN32)
  find_program(KVBASE_WINDRES NAMES x86_64-w64-mingw32-windres)
  find_program(KVBASE_PE_LINKER NAMES x86_64-w64-mingw32-ld)
  find_path(KVBASE_WINDOWS_INCLUDE winver.h PATHS /usr/x86_64-w64-mingw32/include NO_DEFAULT_PATH)
endif()

# Adds the rule that makes `image` of the resource scripts in ARGN. Files that they include are looked for beside them.
function(_kvbase_resource_image image)
  if(WIN32)
    set(windres "${CMAKE_RC_COMPILER}")
    set(options)
    string(REGEX REPLACE "windres([^/]*)$" "ld\\1" linker "${windres}")
  else()
    if(NOT KVBASE_WINDRES OR NOT KVBASE_PE_LINKER)
      message(FATAL_ERROR "Resources need x86_64-w64-mingw32-windres and -ld (Debian: binutils-mingw-w64-x86-64)")
    endif()
    set(windres "${KVBASE_WINDRES}")
    set(linker "${KVBASE_PE_LINKER}")
    set(options -D_WIN32)
    if(KVBASE_WINDOWS_INCLUDE)
      list(APPEND options "-I${KVBASE_WINDOWS_INCLUDE}")
    endif()
  endif()
  cmake_path(GET image FILENAME image_name)
  set(objects)
  set(commands)
  set(neighbours)
  foreach(script IN LISTS ARGN)
    cmake_path(ABSOLUTE_PATH script NORMALIZE)
    cmake_path(GET script PARENT_PATH folder)
    cmake_path(GET script STEM name)
    # windres has no list of what a script includes, so whatever lies beside it counts.
    file(GLOB beside CONFIGURE_DEPENDS "${folder}/*")
    list(APPEND neighbours ${beside})
    set(object "${CMAKE_CURRENT_BINARY_DIR}/${image_name}.${name}.o")
    list(APPEND objects "${object}")
    list(APPEND commands COMMAND "${windres}" --codepage=65001 "-I${folder}" ${options} -O coff -i "${script}" -o "${object}")
  endforeach()
  add_custom_command(
    OUTPUT "${image}" ${commands}
    COMMAND "${linker}" --dll --no-seh --no-insert-timestamp --subsystem windows -e 0 -s ${objects} -o "${image}"
    DEPENDS ${ARGN} ${neighbours} VERBATIM
    COMMENT "Resources ${image}")
endfunction()

function(kvbase_add_resources target)
  if(NOT ARGN)
    return()
  endif()
  if(WIN32)
    foreach(script IN LISTS ARGN)
      cmake_path(ABSOLUTE_PATH script NORMALIZE OUTPUT_VARIABLE path)
      cmake_path(GET path PARENT_PATH folder)
      file(GLOB beside CONFIGURE_DEPENDS "${folder}/*")
      set_source_files_properties(
        "${script}" PROPERTIES COMPILE_OPTIONS --codepage=65001 INCLUDE_DIRECTORIES "${folder}" OBJECT_DEPENDS "${beside}")
    endforeach()
    target_sources(${target} PRIVATE ${ARGN})
    return()
  endif()
  set(scripts)
  foreach(script IN LISTS ARGN)
    cmake_path(ABSOLUTE_PATH script NORMALIZE)
    list(APPEND scripts "${script}")
  endforeach()
  set(image "${CMAKE_CURRENT_BINARY_DIR}/${target}.rsrc")
  _kvbase_resource_image("${image}" ${scripts})
  set(note "${CMAKE_CURRENT_BINARY_DIR}/${target}_resources.cpp")
  file(CONFIGURE OUTPUT "${note}" @ONLY CONTENT [=[
__asm__(
    ".pushsection .note.kvbase.rsrc,\"a\",@note\n"
    ".balign 4\n"
    ".long 7, 2f - 1f, 1\n"
    ".asciz \"KVBase\"\n"
    ".balign 4\n"
    "1: .incbin \"@image@\"\n"
    "2: .balign 4\n"
    ".popsection\n");
]=])
  set_source_files_properties("${note}" PROPERTIES OBJECT_DEPENDS "${image}" SKIP_PRECOMPILE_HEADERS ON)
  target_sources(${target} PRIVATE "${note}")
endfunction()

function(kvbase_add_resource_library target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" OUTPUT_DIRECTORY "")
  if(NOT arg_OUTPUT_DIRECTORY)
    set(arg_OUTPUT_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}")
  endif()
  file(MAKE_DIRECTORY "${arg_OUTPUT_DIRECTORY}")
  set(image "${arg_OUTPUT_DIRECTORY}/${target}.dll")
  _kvbase_resource_image("${image}" ${arg_UNPARSED_ARGUMENTS})
  add_custom_target(${target} ALL DEPENDS "${image}")
endfunction()
