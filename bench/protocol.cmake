# SPDX-License-Identifier: Apache-2.0
pkg_check_modules(BENCH_SOUP REQUIRED IMPORTED_TARGET libsoup-3.0)
add_executable(protocol_bench protocol_bench.cpp protocol_echo.cpp)
target_link_libraries(protocol_bench PRIVATE project_options sim_base PkgConfig::BENCH_SOUP)
