# SPDX-License-Identifier: Apache-2.0
pkg_check_modules(HIGHWAY REQUIRED IMPORTED_TARGET libhwy)
add_executable(effects_bench effects_bench.cpp effects_measure.cpp effects_limit.cpp effects_xfade.cpp)
target_link_libraries(effects_bench PRIVATE lumaview_effect PkgConfig::HIGHWAY)
set_source_files_properties(effects_limit.cpp PROPERTIES COMPILE_OPTIONS -O3)

# Draws the frames of the README's picture of all effects, see script/contact-sheet.
add_executable(effects_frame effects_frame.cpp)
target_link_libraries(effects_frame PRIVATE lumaview_effect)
