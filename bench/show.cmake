# SPDX-License-Identifier: Apache-2.0
pkg_check_modules(BENCH_XCB REQUIRED IMPORTED_TARGET xcb)
add_executable(show_bench show_bench.cpp)
target_link_libraries(show_bench PRIVATE project_options lumaview PkgConfig::BENCH_XCB)
