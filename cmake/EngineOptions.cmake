# SPDX-License-Identifier: Apache-2.0
# The engine's folders see platform/, GLib, Xlib and ecore_x and nothing else. They are built without link-time
# optimisation, so that the archive is complete by itself.
add_library(engine_options INTERFACE)
set_property(TARGET engine_options PROPERTY INTERFACE_INTERPROCEDURAL_OPTIMIZATION OFF)
# An allocation that is cleared afterwards stays malloc, as it stands in the source: optimised, GCC makes calloc of it.
target_compile_options(engine_options INTERFACE -fno-builtin-malloc)
if(PICTURE_COVERAGE)
  target_compile_options(engine_options INTERFACE --coverage -fprofile-abs-path -O0)
  target_link_options(engine_options INTERFACE --coverage)
endif()
