# SPDX-License-Identifier: MIT
option(KVBASE_WARNINGS_AS_ERRORS "Treat warnings in KVBase's own code as errors" OFF)

set(KVBASE_WARNINGS_ALL -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wcast-qual -Wundef -Wvla -Wextra-semi
                        -Wimplicit-fallthrough)
set(KVBASE_WARNINGS_GNU ${KVBASE_WARNINGS_ALL} -Wduplicated-cond -Wlogical-op)
set(KVBASE_WARNINGS_Clang ${KVBASE_WARNINGS_ALL} -Wgnu -Wmicrosoft -Wloop-analysis -Wunreachable-code)
# Tests: GoogleTest's macros end in an `if` without `else`; and for a counted object on the stack g++ warns of a delete that
# never happens, because the object's last reference is never released.
set(KVBASE_TEST_WARNINGS_GNU -Wno-dangling-else -Wno-free-nonheap-object)
set(KVBASE_WARNINGS_MSVC /W4 /utf-8 /Zc:__cplusplus)

# The warnings of KVBase's own targets; they do not apply to GoogleTest.
function(kvbase_warnings target)
  target_compile_options(${target} PRIVATE ${KVBASE_WARNINGS_${CMAKE_CXX_COMPILER_ID}})
  set_target_properties(${target} PROPERTIES COMPILE_WARNING_AS_ERROR ${KVBASE_WARNINGS_AS_ERRORS})
endfunction()

function(kvbase_test_warnings target)
  kvbase_warnings(${target})
  target_compile_options(${target} PRIVATE ${KVBASE_TEST_WARNINGS_${CMAKE_CXX_COMPILER_ID}})
endfunction()
