# SPDX-License-Identifier: Apache-2.0
# A picture comes from anywhere: what a mistake in memory could be used for is made as little as compiler and loader
# can. Programs are position-independent, and nothing that is written to runs. A sanitizer does more than all of this
# and replaces it; without optimisation _FORTIFY_SOURCE would only warn.
include(CheckPIESupported)
check_pie_supported()

add_library(project_hardening INTERFACE)
if(NOT PICTURE_SANITIZERS AND NOT PICTURE_COVERAGE AND NOT PICTURE_FUZZ)
  target_compile_options(project_hardening INTERFACE
    -fstack-protector-strong
    $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-fstack-clash-protection>
    $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE>
    $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
  # All relocations at start, and then read-only.
  target_link_options(project_hardening INTERFACE -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
endif()
