# SPDX-License-Identifier: Apache-2.0
# What a developer of applications or of other players gets: the headers, the libraries as CMake targets
# (find_package(PicturePlayer), PicturePlayer::lumaview ...) and as pkg-config packages of the same names.
include(CMakePackageConfigHelpers)
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/PicturePlayer)
set(header_folder ${CMAKE_INSTALL_INCLUDEDIR}/picture-player)

install(FILES
  platform/lumaview.h platform/olm_emp.h platform/vconf.h simulator/lumaview/include/lumaview_simulator.h
  DESTINATION ${header_folder} COMPONENT development)

install(EXPORT PicturePlayer NAMESPACE PicturePlayer:: FILE PicturePlayerTargets.cmake DESTINATION ${package_folder}
  COMPONENT development)
configure_package_config_file(cmake/PicturePlayerConfig.cmake.in PicturePlayerConfig.cmake
  INSTALL_DESTINATION ${package_folder} NO_SET_AND_CHECK_MACRO)
# Before 1.0 every minor version may change the interface.
write_basic_package_version_file(PicturePlayerConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES
  ${CMAKE_CURRENT_BINARY_DIR}/PicturePlayerConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/PicturePlayerConfigVersion.cmake
  DESTINATION ${package_folder} COMPONENT development)

# pkg_config_file(LIBRARY DESCRIPTION [REQUIRED-PACKAGES])
function(pkg_config_file PC_NAME PC_DESCRIPTION)
  set(PC_REQUIRES ${ARGN})
  configure_file(cmake/library.pc.in ${PC_NAME}.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${PC_NAME}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
    COMPONENT development)
endfunction()
pkg_config_file(OlmCommon "Log of the television's application framework")
pkg_config_file(OlmEmp "Process and command interface of the television's application framework" OlmCommon)
pkg_config_file(lumaview "Picture library of the television" x11)
pkg_config_file(vconf "Key-value store of the television")

# Manual pages: some are kept as they are installed, the others are written for scdoc.
file(GLOB finished_pages CONFIGURE_DEPENDS docs/man/*.1)
install(FILES ${finished_pages} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
find_program(SCDOC scdoc)
file(GLOB manual_pages CONFIGURE_DEPENDS docs/man/*.scd)
if(SCDOC)
  foreach(source ${manual_pages})
    cmake_path(GET source STEM LAST_ONLY page)
    string(REGEX MATCH "[0-9]$" section ${page})
    add_custom_command(OUTPUT ${page} COMMAND sh -c "${SCDOC} <${source} >${page}" DEPENDS ${source} VERBATIM)
    list(APPEND pages ${CMAKE_CURRENT_BINARY_DIR}/${page})
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section})
  endforeach()
  add_custom_target(manual ALL DEPENDS ${pages})
endif()

# Kept as `tvsim help bash` and `tvsim help zsh` make them, because a tvsim for another processor does not run here.
install(FILES data/completion/tvsim DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
# zsh looks there for what packages bring, and elsewhere for what an administrator installs.
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  set(zsh_folder vendor-completions)
else()
  set(zsh_folder site-functions)
endif()
install(FILES data/completion/_tvsim DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/${zsh_folder})

install(FILES data/tvsim.service DESTINATION lib/systemd/system)
install(FILES data/tvsim.desktop DESTINATION ${CMAKE_INSTALL_DATADIR}/applications)
install(FILES data/tvsim.svg DESTINATION ${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps)
# tvsim has the page built in; these are for whoever writes an application of his own.
if(EXISTS ${PROJECT_SOURCE_DIR}/simulator/web)
  install(DIRECTORY simulator/web/ DESTINATION ${CMAKE_INSTALL_DATADIR}/tvsim/web)
endif()
