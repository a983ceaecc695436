# SPDX-License-Identifier: Apache-2.0
# Decoders in processes of their own.

# A folder with the library and one module of an attacker, which the loader finds before all others.
set(hostile ${CMAKE_CURRENT_BINARY_DIR}/hostile)
add_library(lumaview_hostile MODULE HostileModule.cpp)
target_link_libraries(lumaview_hostile PRIVATE lumaview_source)
set_target_properties(lumaview_hostile PROPERTIES
  OUTPUT_NAME lumaview-tiff
  LIBRARY_OUTPUT_DIRECTORY ${hostile}/lumaview)
add_custom_command(TARGET lumaview_hostile POST_BUILD
  COMMAND ${CMAKE_COMMAND} -E create_symlink $<TARGET_FILE:lumaview> ${hostile}/$<TARGET_SONAME_FILE_NAME:lumaview>
  COMMAND ${CMAKE_COMMAND} -E create_symlink $<TARGET_FILE:lumaview_module_png> ${hostile}/lumaview/liblumaview-png.so)

add_executable(lumaview_cage_hostile_test CageHostileTest.cpp Processes.cpp)
add_dependencies(lumaview_cage_hostile_test lumaview_hostile)
target_link_libraries(lumaview_cage_hostile_test PRIVATE lumaview_test_kit lumaview_bars)
target_link_options(lumaview_cage_hostile_test PRIVATE -Wl,--enable-new-dtags)
add_test(NAME lumaview.cage.hostile COMMAND lumaview_cage_hostile_test)
set_tests_properties(lumaview.cage.hostile PROPERTIES TIMEOUT 120
  ENVIRONMENT "LUMAVIEW_CAGE=on;LUMAVIEW_LIMITS=seconds=1;LD_LIBRARY_PATH=${hostile};OLM_LOG_FILE=${hostile}/log")

pkg_check_modules(LIBSECCOMP REQUIRED IMPORTED_TARGET libseccomp)
add_executable(lumaview_cage_test CageTest.cpp Processes.cpp)
target_link_libraries(lumaview_cage_test PRIVATE lumaview_test_kit lumaview_picture PkgConfig::LIBSECCOMP)
add_test(NAME lumaview.cage COMMAND lumaview_cage_test)
set_tests_properties(lumaview.cage PROPERTIES TIMEOUT 120 ENVIRONMENT LUMAVIEW_CAGE=on)

# Files that change under the decoder: a short form of script/changing-files.
add_executable(changing-files changing-files.cpp)
add_dependencies(changing-files small_pictures)
target_link_libraries(changing-files PRIVATE lumaview_picture)
if(NOT PICTURE_SANITIZERS)
  add_test(NAME lumaview.cage.changing-files COMMAND changing-files 40
    ${SMALL_PICTURES}/valid/jpeg/own-photo-384x256.jpg ${SMALL_PICTURES}/valid/jpeg/own-photo-384x256-progressive.jpg
    ${SMALL_PICTURES}/valid/png/interlaced-16-bit.png ${SMALL_PICTURES}/valid/webp/own-photo-384x256-lossless.webp
    ${SMALL_PICTURES}/valid/tiff/tiled-16-bit.tif)
  set_tests_properties(lumaview.cage.changing-files PROPERTIES TIMEOUT 120)
endif()
