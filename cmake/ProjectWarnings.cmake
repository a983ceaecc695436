# SPDX-License-Identifier: Apache-2.0
# Errors while we develop and in CI; a user's compiler may know warnings that ours does not.
option(PICTURE_WARNINGS_AS_ERRORS "Stop at the first warning" ON)

add_library(project_warnings INTERFACE)
target_compile_options(project_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wformat=2 -Wshadow -Wnon-virtual-dtor -Wold-style-cast -Wcast-qual -Woverloaded-virtual
  -Wno-format-nonliteral)
if(PICTURE_WARNINGS_AS_ERRORS)
  target_compile_options(project_warnings INTERFACE -Werror)
endif()
# At -O3 GCC 12 sees overlaps in std::string's operator+ that are none.
target_compile_options(project_warnings INTERFACE $<$<AND:$<CONFIG:Release>,$<CXX_COMPILER_ID:GNU>>:-Wno-restrict>)
