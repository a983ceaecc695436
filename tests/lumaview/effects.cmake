# SPDX-License-Identifier: Apache-2.0
pkg_check_modules(HIGHWAY REQUIRED IMPORTED_TARGET libhwy)
add_executable(lumaview_effect_test
  EffectTableTest.cpp EffectPropertiesTest.cpp EffectKernelsTest.cpp EffectKenBurnsTest.cpp)
target_link_libraries(lumaview_effect_test PRIVATE lumaview_effect lumaview_vector_kernels PkgConfig::HIGHWAY GTest::gtest_main GTest::gmock)
gtest_discover_tests(lumaview_effect_test DISCOVERY_TIMEOUT 60)
