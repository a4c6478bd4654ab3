# SPDX-License-Identifier: MIT
# KVBASE_SANITIZE names the sanitizers, as in -fsanitize=... . They apply to everything in the build except GoogleTest.
set(KVBASE_SANITIZE "" CACHE STRING "Sanitizers of this build: address,undefined or thread")

if(KVBASE_SANITIZE)
  add_compile_options(-fsanitize=${KVBASE_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${KVBASE_SANITIZE})

  # The sanitizers cannot place their shadow memory if the kernel uses many bits for address randomisation, so programs run
  # without it. Some containers do not permit that; most of those do not need it.
  execute_process(COMMAND setarch ${CMAKE_HOST_SYSTEM_PROCESSOR} -R true RESULT_VARIABLE failed OUTPUT_QUIET ERROR_QUIET)
  if(NOT failed)
    set(CMAKE_CROSSCOMPILING_EMULATOR setarch ${CMAKE_HOST_SYSTEM_PROCESSOR} -R)
  endif()
endif()
