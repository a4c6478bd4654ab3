# SPDX-License-Identifier: MIT
# Compiles `source` with `case` defined. An empty `expected` asks for success, any other for a failure whose message it matches.
execute_process(
  COMMAND "${compiler}" -std=c++17 -I "${include}" -DKVBASE_STATIC -D${case} -S -o - "${source}"
  RESULT_VARIABLE failed ERROR_VARIABLE message OUTPUT_QUIET)
if(expected STREQUAL "")
  if(failed)
    message(FATAL_ERROR "must compile when no case is chosen, but:\n${message}")
  endif()
elseif(NOT failed)
  message(FATAL_ERROR "compiles, but must not")
elseif(NOT message MATCHES "error: [^\n]*(${expected})")
  message(FATAL_ERROR "fails, but not with an error that matches `${expected}`:\n${message}")
endif()
