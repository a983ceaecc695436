# SPDX-License-Identifier: Apache-2.0
# Formats, scaling and colours.
add_executable(picture-outcome picture-outcome.cpp)
target_link_libraries(picture-outcome PRIVATE lumaview_picture)

set(decode ${PROJECT_SOURCE_DIR}/simulator/lumaview/decode)
pkg_check_modules(TEST_JPEG REQUIRED IMPORTED_TARGET libjpeg)
add_executable(lumaview_render_test
  ${decode}/AvifLoops.cpp ${decode}/HuffmanTable.cpp ${decode}/JpegCoefficients.cpp ${decode}/JpegScan.cpp
  ${decode}/JpegScanAhead.cpp ${decode}/JpegSession.cpp JpegThreadTest.cpp
  AvifLoopsTest.cpp HandoverTest.cpp InterruptedTest.cpp OddFiles.cpp OddFilesTest.cpp PagesAheadTest.cpp TestPictures.cpp RenderGeometryTest.cpp RenderPsnrTest.cpp RenderScaleTest.cpp)
target_link_libraries(lumaview_render_test PRIVATE lumaview_image PkgConfig::TEST_JPEG GTest::gtest_main)
gtest_discover_tests(lumaview_render_test)

# Pictures to be shown: those in PICTURES_DIR when the tests run, else a small set made here.
set(SMALL_PICTURES ${CMAKE_CURRENT_BINARY_DIR}/pictures)
pkg_check_modules(TEST_JXL IMPORTED_TARGET libjxl libjxl_threads)
if(TEST_JXL_FOUND)
  add_executable(ppm-to-jxl ppm-to-jxl.cpp)
  target_link_libraries(ppm-to-jxl PRIVATE project_options PkgConfig::TEST_JXL)
  started_program(ppm-to-jxl PPM_TO_JXL)
  set(PPM_TO_JXL_TARGET ppm-to-jxl)
endif()
add_custom_command(OUTPUT ${SMALL_PICTURES}/MANIFEST.tsv
  COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/make-pictures ${SMALL_PICTURES} ${PPM_TO_JXL}
  DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/make-pictures ${PPM_TO_JXL_TARGET})
add_custom_target(small_pictures DEPENDS ${SMALL_PICTURES}/MANIFEST.tsv)

add_executable(lumaview_pictures_test FindsTest.cpp MetadataTest.cpp TestPictures.cpp PictureSet.cpp PicturesLookTest.cpp PicturesTest.cpp)
add_dependencies(lumaview_pictures_test small_pictures picture-outcome)
target_link_libraries(lumaview_pictures_test PRIVATE lumaview_image GTest::gtest_main)
started_program(picture-outcome picture_outcome)
target_compile_definitions(lumaview_pictures_test PRIVATE
  FINDS_FOLDER="${CMAKE_CURRENT_SOURCE_DIR}/finds"
  SMALL_PICTURES_FOLDER="${SMALL_PICTURES}" PICTURE_OUTCOME="${picture_outcome}")
# In processes of their own, and in the process itself.
if(NOT EMULATED)  # a process under qemu-user has two threads from the start, so none of its own can be made
  gtest_discover_tests(lumaview_pictures_test PROPERTIES TIMEOUT 1800 ENVIRONMENT LUMAVIEW_CAGE=on)
endif()
set(in_process Pictures/*)
if(EMULATED)
  set(in_process *)
endif()
gtest_discover_tests(lumaview_pictures_test
  TEST_PREFIX in-process. TEST_LIST lumaview_pictures_in_process
  TEST_FILTER ${in_process} PROPERTIES TIMEOUT 1800 ENVIRONMENT LUMAVIEW_CAGE=off)
