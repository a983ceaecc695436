# SPDX-License-Identifier: Apache-2.0
add_executable(cage_bench cage_bench.cpp)
target_link_libraries(cage_bench PRIVATE lumaview_picture)
