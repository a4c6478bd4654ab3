# SPDX-License-Identifier: MIT
# Two targets:
#   kvbase_objects  all sources, compiled once; the tests link these, so that they reach the internals
#   KVBase          the library made of them (alias KVBase::KVBase, the name that an installed KVBase has too)

file(GLOB_RECURSE kvbase_sources CONFIGURE_DEPENDS RELATIVE "${PROJECT_SOURCE_DIR}" "kvbase/*.cpp")
file(GLOB_RECURSE kvbase_public_headers CONFIGURE_DEPENDS RELATIVE "${PROJECT_SOURCE_DIR}" "kvbase/*.h")
file(GLOB_RECURSE kvbase_resources CONFIGURE_DEPENDS RELATIVE "${PROJECT_SOURCE_DIR}" "kvbase/*.rc")
list(FILTER kvbase_public_headers EXCLUDE REGEX
     "/internal/|^kvbase/(internal_assert.h|(kernels|library)/)|/platform/(linux|windows)/")
# What a public header includes is installed, though it is no interface.
list(APPEND kvbase_public_headers kvbase/strings/internal/printf_argument.h)
if(WIN32)
  list(FILTER kvbase_sources EXCLUDE REGEX "/platform/linux/")
else()
  list(FILTER kvbase_sources EXCLUDE REGEX "/platform/windows/")
endif()

# The framework's own backend takes the place of the one for programs without it.
if(KVBASE_WITH_MFC)
  if(NOT MSVC)
    message(FATAL_ERROR "KVBASE_WITH_MFC needs the compiler of the framework")
  endif()
  list(REMOVE_ITEM kvbase_sources kvbase/platform/plain_framework.cpp)
else()
  list(REMOVE_ITEM kvbase_sources kvbase/platform/windows/mfc_framework.cpp)
endif()

# All dynamic initialisation of the library is in this source. It must run first in any program that links the objects, so
# that the program's static objects can use the library. ELF systems run initialisers in link order, mingw in reverse order.
set(kvbase_globals kvbase/library/library_globals.cpp)
list(REMOVE_ITEM kvbase_sources ${kvbase_globals})
list(PREPEND kvbase_sources ${kvbase_globals})

add_library(kvbase_objects OBJECT ${kvbase_sources})
kvbase_warnings(kvbase_objects)
target_include_directories(kvbase_objects PUBLIC "${PROJECT_SOURCE_DIR}")
target_compile_features(kvbase_objects PUBLIC cxx_std_17)
target_compile_definitions(kvbase_objects PUBLIC $<$<BOOL:${KVBASE_CHECKED}>:KVBASE_CHECKED>)
target_compile_definitions(kvbase_objects PRIVATE KVBASE_BUILD $<$<NOT:$<BOOL:${BUILD_SHARED_LIBS}>>:KVBASE_STATIC>)
set_target_properties(
  kvbase_objects PROPERTIES POSITION_INDEPENDENT_CODE ON CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)

if(WIN32)
  set(kvbase_system_libraries version comctl32 shlwapi shell32 ole32 uuid advapi32 user32)
  target_compile_definitions(kvbase_objects PRIVATE _CRT_SECURE_NO_WARNINGS)
else()
  find_package(ICU REQUIRED COMPONENTS uc)
  find_package(Threads REQUIRED)
  # Call stacks are read by libdw, which is loaded at run time if it is there; only its headers are needed.
  find_path(KVBASE_LIBDW_HEADERS elfutils/libdwfl.h REQUIRED)
  set(kvbase_system_libraries ICU::uc Threads::Threads ${CMAKE_DL_LIBS})
  # A symbol of the kind "unique" (g++ makes them for statics in inline functions) prevents the library from being unloaded.
  target_compile_options(kvbase_objects PRIVATE $<$<CXX_COMPILER_ID:GNU>:-fno-gnu-unique>)
  # The library's functions are not interposed, so it calls them directly (the default of clang++).
  target_compile_options(kvbase_objects PRIVATE $<$<CXX_COMPILER_ID:GNU>:-fno-semantic-interposition>)
endif()
target_link_libraries(kvbase_objects PUBLIC ${kvbase_system_libraries})
if(KVBASE_WITH_MFC)
  # As an extension module of the shared framework; its headers name the libraries to link.
  target_compile_definitions(kvbase_objects PRIVATE _AFXEXT _AFXDLL UNICODE _UNICODE)
endif()

# Sources with these endings are compiled for AVX2 and AVX-512, and called only where the processor has it. mingw aligns the
# stack to 16 bytes although the compiler assumes as many as a register has, so vectors must be spilled by unaligned moves. A
# kernel begins a line of the cache: where its loops lie in their lines is worth a tenth of its time, and would change with
# each change of the kernels before it.
if(MSVC)
  set(kvbase_avx2_options /arch:AVX2)
  set(kvbase_avx512_options /arch:AVX512)
else()
  set(kvbase_avx2_options -mavx2 -falign-functions=64)
  set(kvbase_avx512_options -mavx512bw -mavx512vl -mavx512vbmi -mavx512vbmi2 -mbmi -mbmi2 -mpopcnt -falign-functions=64)
endif()
# The compiler's own header begins registers with what is undefined, on purpose.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  list(APPEND kvbase_avx512_options -Wno-maybe-uninitialized)
endif()
set(kvbase_vector_sources)
foreach(set avx2 avx512)
  set(sources ${kvbase_sources})
  list(FILTER sources INCLUDE REGEX "_${set}\\.cpp$")
  if(MINGW)
    list(APPEND kvbase_${set}_options -Wa,-muse-unaligned-vector-move)
  endif()
  set_source_files_properties(
    ${sources} PROPERTIES COMPILE_OPTIONS "${kvbase_${set}_options}" SKIP_PRECOMPILE_HEADERS ON)
  list(APPEND kvbase_vector_sources ${sources})
endforeach()

kvbase_unity_groups(kvbase_objects SOURCES ${kvbase_sources} SINGLE ${kvbase_globals} ${kvbase_vector_sources})

# Builds with sanitizers are for tests only and save time here.
if(KVBASE_SANITIZE)
  target_precompile_headers(kvbase_objects PRIVATE <algorithm> <functional> <memory> <string> <vector>)
endif()

add_library(KVBase $<TARGET_OBJECTS:kvbase_objects>)
add_library(KVBase::KVBase ALIAS KVBase)
target_link_libraries(KVBase PRIVATE ${kvbase_system_libraries})
target_compile_features(KVBase PUBLIC cxx_std_17)
target_compile_definitions(KVBase INTERFACE $<$<NOT:$<BOOL:${BUILD_SHARED_LIBS}>>:KVBASE_STATIC>)
if(NOT WIN32)
  # Nor can a library of its users be unloaded with such a symbol, which std::to_string is enough to bring in.
  target_compile_options(KVBase INTERFACE $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-fno-gnu-unique>)
endif()
target_sources(KVBase PUBLIC FILE_SET HEADERS BASE_DIRS "${PROJECT_SOURCE_DIR}" FILES ${kvbase_public_headers})
set_target_properties(KVBase PROPERTIES LINKER_LANGUAGE CXX)

if(BUILD_SHARED_LIBS)
  # A static library is no module: the resources of a program that links it are the program's own.
  kvbase_add_resources(KVBase ${kvbase_resources})
  # The stem of a module's file name is a contract: translations, help and settings hang on it, on every system.
  set_target_properties(KVBase PROPERTIES PREFIX "" IMPORT_PREFIX "lib" RUNTIME_OUTPUT_NAME KVBase)
  if(NOT WIN32)
    set(kvbase_version_script "${PROJECT_SOURCE_DIR}/cmake/exports/linux.map")
    target_link_options(KVBase PRIVATE LINKER:--version-script=${kvbase_version_script})
    # The run time of a sanitizer is linked into the program only, so a sanitized library has undefined names.
    if(NOT KVBASE_SANITIZE)
      target_link_options(KVBase PRIVATE LINKER:-z,defs)
    endif()
    set_target_properties(KVBase PROPERTIES LINK_DEPENDS "${kvbase_version_script}")
  endif()
endif()
