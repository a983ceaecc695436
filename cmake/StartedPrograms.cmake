# SPDX-License-Identifier: Apache-2.0
# How a test starts one of our programs: by itself or, when it is built for another processor, under the emulator.
if(CMAKE_CROSSCOMPILING)
  set(EMULATOR ${CMAKE_CROSSCOMPILING_EMULATOR})
  set(EMULATED 1)
else()
  set(EMULATOR "")
  set(EMULATED 0)
endif()

# started_program(TARGET RESULT): the file that a program may exec as TARGET. For another processor that is a script.
function(started_program target result)
  if(NOT EMULATOR)
    set(${result} $<TARGET_FILE:${target}> PARENT_SCOPE)
    return()
  endif()
  set(script ${CMAKE_BINARY_DIR}/emulated/${target})
  list(JOIN EMULATOR "' '" words)
  get_property(generated GLOBAL PROPERTY started_program_${target})
  if(NOT generated)
    set_property(GLOBAL PROPERTY started_program_${target} YES)
    file(GENERATE OUTPUT ${script} CONTENT "#!/bin/sh\nexec '${words}' '$<TARGET_FILE:${target}>' \"$@\"\n"
      FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
  endif()
  set(${result} ${script} PARENT_SCOPE)
endfunction()
