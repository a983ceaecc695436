# SPDX-License-Identifier: Apache-2.0
pkg_check_modules(BENCH_XCB REQUIRED IMPORTED_TARGET xcb xcb-shm)
add_executable(show_bench show_bench.cpp)
target_link_libraries(show_bench PRIVATE project_options lumaview PkgConfig::BENCH_XCB)

add_executable(show_transitions show_transitions.cpp show_screen.cpp)
target_link_libraries(show_transitions PRIVATE
  project_options lumaview lumaview_effect lumaview_image sim_base PkgConfig::BENCH_XCB)
