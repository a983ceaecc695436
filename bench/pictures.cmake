# SPDX-License-Identifier: Apache-2.0
# What bench/pictures/measure runs, beside the engine.
pkg_check_modules(BENCH_JPEG REQUIRED IMPORTED_TARGET libjpeg)
pkg_check_modules(BENCH_SHM REQUIRED IMPORTED_TARGET xcb xcb-shm)
pkg_check_modules(BENCH_START REQUIRED IMPORTED_TARGET ecore-x glib-2.0 x11)
pkg_check_modules(BENCH_JXL IMPORTED_TARGET libjxl libjxl_threads)

add_library(jpeg_floor STATIC pictures/JpegFloor.cpp)
target_link_libraries(jpeg_floor PUBLIC lumaview_image PRIVATE PkgConfig::BENCH_JPEG)

add_executable(decode_floor pictures/decode_floor.cpp)
target_link_libraries(decode_floor PRIVATE jpeg_floor)

add_executable(put_floor pictures/put_floor.cpp)
target_link_libraries(put_floor PRIVATE jpeg_floor PkgConfig::BENCH_SHM)

add_executable(screen_watch pictures/screen_watch.cpp)
target_link_libraries(screen_watch PRIVATE project_options PkgConfig::BENCH_SHM)

add_executable(bare_start pictures/bare_start.cpp)
target_link_libraries(bare_start PRIVATE project_options PkgConfig::BENCH_START)

add_executable(stop_delay pictures/stop_delay.cpp)
target_link_libraries(stop_delay PRIVATE lumaview_picture)

add_custom_target(pictures_bench DEPENDS decode_floor put_floor screen_watch bare_start stop_delay)

# Programs of the tests, which are not there where tests are not built.
if(BENCH_JXL_FOUND AND NOT TARGET ppm-to-jxl)
  add_executable(ppm-to-jxl ${PROJECT_SOURCE_DIR}/tests/lumaview/ppm-to-jxl.cpp)
  target_link_libraries(ppm-to-jxl PRIVATE project_options PkgConfig::BENCH_JXL)
endif()
if(TARGET ppm-to-jxl)
  add_dependencies(pictures_bench ppm-to-jxl)
endif()
if(NOT TARGET picture-outcome)
  add_executable(picture-outcome ${PROJECT_SOURCE_DIR}/tests/lumaview/picture-outcome.cpp)
  target_link_libraries(picture-outcome PRIVATE lumaview_picture)
endif()
