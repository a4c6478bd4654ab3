# SPDX-License-Identifier: MIT
# Cross build for Windows x64 by mingw-w64 (posix threads), against the universal C runtime and with everything else linked
# in, so that the library needs nothing but Windows. Programs run by Wine, in a prefix inside the build folder.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(triple x86_64-w64-mingw32)
set(CMAKE_CXX_COMPILER ${triple}-g++-posix)
set(CMAKE_C_COMPILER ${triple}-gcc-posix)
set(CMAKE_RC_COMPILER ${triple}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${triple})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH)

# By default the compiler links msvcrt.dll, which prints and parses numbers unlike the universal runtime. Replacing the name
# in the compiler's link rules keeps start-up code and library on one runtime. Do not define _UCRT: the C++ library was
# compiled without it.
set(specs "${CMAKE_BINARY_DIR}/ucrt.specs")
if(NOT EXISTS "${specs}")
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} -dumpspecs OUTPUT_VARIABLE rules COMMAND_ERROR_IS_FATAL ANY)
  string(REPLACE "-lmsvcrt" "-lucrt" rules "${rules}")
  file(WRITE "${specs}" "${rules}")
endif()
set(link_flags "-specs=${specs} -Wl,--defsym=_setjmp=__intrinsic_setjmp -static")
set(CMAKE_EXE_LINKER_FLAGS_INIT "${link_flags}")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "${link_flags}")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "${link_flags}")

# The stack walker of Windows's debug help reads this version of the debug information, not the next.
set(CMAKE_CXX_FLAGS_DEBUG_INIT -gdwarf-4)
set(CMAKE_CXX_FLAGS_RELWITHDEBINFO_INIT -gdwarf-4)

set(KVBASE_WINE_PREFIX "${CMAKE_BINARY_DIR}/wine" CACHE PATH "Wine prefix in which built programs run")
set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/wine-runner.sh;${KVBASE_WINE_PREFIX}")
