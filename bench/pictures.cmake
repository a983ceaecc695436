# SPDX-License-Identifier: Apache-2.0
pkg_check_modules(BENCH_JPEG REQUIRED IMPORTED_TARGET libjpeg)
add_executable(pictures-floor pictures_floor.cpp)
target_link_libraries(pictures-floor PRIVATE lumaview_image PkgConfig::BENCH_JPEG)
