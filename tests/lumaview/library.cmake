# SPDX-License-Identifier: Apache-2.0
# Tests of the library through its exported calls. Those that draw run on an X server of their own.
find_package(PNG REQUIRED)
find_package(JPEG REQUIRED)
find_package(GIF REQUIRED)
pkg_check_modules(TEST_XCB REQUIRED IMPORTED_TARGET xcb)

add_library(lumaview_test_kit STATIC PictureFiles.cpp Screen.cpp)
target_link_libraries(lumaview_test_kit
  PUBLIC project_options lumaview GTest::gtest_main PkgConfig::TEST_XCB
  PRIVATE PNG::PNG JPEG::JPEG GIF::GIF)

set(with_private_x ${PROJECT_SOURCE_DIR}/tests/system/with-private-x)

# lumaview_screen_test(NAME TARGET [ENVIRONMENT...])
function(lumaview_screen_test name target)
  add_test(NAME lumaview.${name} COMMAND ${with_private_x} --size 1280x720 -- ${EMULATOR} $<TARGET_FILE:${target}>)
  set_tests_properties(lumaview.${name} PROPERTIES TIMEOUT 300 ENVIRONMENT "${ARGN}")
endfunction()

add_executable(lumaview_show_test LibraryShowTest.cpp LoadedLibrary.cpp)
target_link_libraries(lumaview_show_test PRIVATE lumaview_test_kit)
foreach(put memfd sysv chunks)
  lumaview_screen_test(show.${put} lumaview_show_test LUMAVIEW_PUT=${put})
endforeach()

add_test(NAME lumaview.show.depth16
  COMMAND ${with_private_x} --size 1280x720 --depth 16 -- ${EMULATOR} $<TARGET_FILE:lumaview_show_test>)
set_tests_properties(lumaview.show.depth16 PROPERTIES TIMEOUT 300)

add_executable(lumaview_animation_test LibraryAnimationTest.cpp LoadedLibrary.cpp)
target_link_libraries(lumaview_animation_test PRIVATE lumaview_test_kit)
lumaview_screen_test(animation lumaview_animation_test)

add_executable(lumaview_view_test LibraryViewTest.cpp LoadedLibrary.cpp)
target_link_libraries(lumaview_view_test PRIVATE lumaview_test_kit)
lumaview_screen_test(view lumaview_view_test)

# Decoding in the process itself and in processes of its own: the same pictures.
foreach(part show animation view)
  foreach(cage on off)
    lumaview_screen_test(${part}.cage-${cage} lumaview_${part}_test LUMAVIEW_CAGE=${cage})
  endforeach()
endforeach()

add_executable(lumaview_transition_test LibraryTransitionTest.cpp LoadedLibrary.cpp)
target_link_libraries(lumaview_transition_test PRIVATE lumaview_test_kit)
foreach(put memfd chunks)
  lumaview_screen_test(transition.${put} lumaview_transition_test LUMAVIEW_PUT=${put} LUMAVIEW_EFFECT_MS=300)
endforeach()

# What ends an effect ends it at once: here one would take two minutes.
add_test(NAME lumaview.transition.long
  COMMAND ${with_private_x} --size 1280x720 -- ${EMULATOR} $<TARGET_FILE:lumaview_transition_test>
    --gtest_filter=*.*Destroyed*:*.ResizedWindow*:*.PictureShownDuring*:*.LockedDisplay*)
set_tests_properties(lumaview.transition.long PROPERTIES TIMEOUT 300 ENVIRONMENT LUMAVIEW_EFFECT_MS=120000)

add_executable(lumaview_call_test LibraryArgumentsTest.cpp LibraryReportsTest.cpp LoadedLibrary.cpp)
target_link_libraries(lumaview_call_test PRIVATE lumaview_test_kit)
gtest_discover_tests(lumaview_call_test)

add_executable(lumaview_timeline_test BandsTest.cpp TimelineTest.cpp)
target_link_libraries(lumaview_timeline_test PRIVATE lumaview_animate lumaview_image GTest::gtest_main)
gtest_discover_tests(lumaview_timeline_test)

add_executable(lumaview_rendering_test RenderingTest.cpp)
target_link_libraries(lumaview_rendering_test PRIVATE
  lumaview_test_kit lumaview_picture lumaview_screen lumaview_image lumaview_decode)
gtest_discover_tests(lumaview_rendering_test)

add_test(NAME lumaview.exports
  COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/exports-test $<TARGET_FILE:lumaview>
    ${PROJECT_SOURCE_DIR}/platform/lumaview.h
    ${PROJECT_SOURCE_DIR}/simulator/lumaview/include/lumaview_simulator.h)

add_executable(lumaview_motion_test LibraryMotionTest.cpp LoadedLibrary.cpp)
target_link_libraries(lumaview_motion_test PRIVATE lumaview_test_kit)
lumaview_screen_test(motion lumaview_motion_test LUMAVIEW_KEN_BURNS=600 LUMAVIEW_EFFECT_MS=200)
