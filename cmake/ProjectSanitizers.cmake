# SPDX-License-Identifier: Apache-2.0
add_library(project_sanitizers INTERFACE)
if(PICTURE_SANITIZERS)
  target_compile_options(project_sanitizers INTERFACE
    -fsanitize=${PICTURE_SANITIZERS} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(project_sanitizers INTERFACE -fsanitize=${PICTURE_SANITIZERS})
endif()
if(PICTURE_OPTIMISE)
  target_compile_options(project_sanitizers INTERFACE ${PICTURE_OPTIMISE})
endif()
if(PICTURE_ASSERTIONS)
  # Instead of -O2 -g -DNDEBUG. Functions and lines are enough for a backtrace, and take a third less time to compile;
  # who steps through the code wants a Debug build anyway.
  set(CMAKE_CXX_FLAGS_RELWITHDEBINFO "-O2 -g1")
  set(CMAKE_C_FLAGS_RELWITHDEBINFO "-O2 -g1")
endif()
