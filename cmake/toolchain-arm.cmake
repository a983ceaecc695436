# SPDX-License-Identifier: Apache-2.0
# The television's processor: 32-bit ARM, hard float. Headers and libraries come from the sysroot that
# script/lib/arm-sysroot fills; programs run under qemu-user. PICTURE_SYSROOT names another folder than its own.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)

set(CMAKE_SYSROOT ${CMAKE_CURRENT_LIST_DIR}/../build/arm-sysroot)
if(DEFINED ENV{PICTURE_SYSROOT})
  set(CMAKE_SYSROOT $ENV{PICTURE_SYSROOT})
endif()
cmake_path(ABSOLUTE_PATH CMAKE_SYSROOT NORMALIZE)

# By full path: the sysroot holds an ARM compiler of its own, which does not run here.
set(CMAKE_C_COMPILER /usr/bin/arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER /usr/bin/arm-linux-gnueabihf-g++)

# -B: the start files lie in the sysroot's multiarch folder. psabi: g++ would print a note for every record passed by
# value whose passing changed in version 7.
set(arm_flags "-B ${CMAKE_SYSROOT}/usr/lib/arm-linux-gnueabihf -Wno-psabi")
set(CMAKE_C_FLAGS_INIT "${arm_flags}")
set(CMAKE_CXX_FLAGS_INIT "${arm_flags}")

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)

set(ENV{PKG_CONFIG_SYSROOT_DIR} ${CMAKE_SYSROOT})
set(ENV{PKG_CONFIG_LIBDIR} "${CMAKE_SYSROOT}/usr/lib/arm-linux-gnueabihf/pkgconfig:${CMAKE_SYSROOT}/usr/share/pkgconfig:${CMAKE_SYSROOT}/usr/lib/pkgconfig")

set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm;-L;${CMAKE_SYSROOT})
