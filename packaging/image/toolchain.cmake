# SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
# SPDX-License-Identifier: Apache-2.0
#
# An example for a TV with another processor: change the first two lines, and
#     cmake -G Ninja -B build/tv -DCMAKE_TOOLCHAIN_FILE=packaging/image/toolchain.cmake \
#         -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=/usr -DTV_PLATFORM=/path/to/my-tv
set(triplet aarch64-linux-gnu)
set(CMAKE_SYSROOT /opt/my-tv/sysroot)  # has the TV's GLib, jsoncpp, SQLite and Boost with headers

set(CMAKE_SYSTEM_NAME Linux)
string(REGEX REPLACE "-.*" "" CMAKE_SYSTEM_PROCESSOR ${triplet})
set(CMAKE_C_COMPILER ${triplet}-gcc)
set(CMAKE_CXX_COMPILER ${triplet}-g++)
set(CMAKE_LIBRARY_ARCHITECTURE ${triplet})

# Programs of this machine, everything else of the TV.
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_DIR} "")
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${CMAKE_SYSROOT})
set(libraries ${CMAKE_SYSROOT}/usr/lib)
set(ENV{PKG_CONFIG_LIBDIR}
    ${libraries}/${triplet}/pkgconfig:${libraries}/pkgconfig:${CMAKE_SYSROOT}/usr/share/pkgconfig)
