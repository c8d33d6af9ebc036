# SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
# SPDX-License-Identifier: Apache-2.0

# How CPack makes the Debian package of what is installed. packaging/build-deb runs it.

# The version is in two places; Debian's change log has a date and a text and is written by hand.
file(STRINGS debian/changelog newest LIMIT_COUNT 1)
if(NOT newest MATCHES "^bt-autoconnect \\(${PROJECT_VERSION}\\) ")
  message(FATAL_ERROR "packaging/debian/changelog does not begin with version ${PROJECT_VERSION}")
endif()

install_text(debian/changelog ${CMAKE_INSTALL_DOCDIR})
install(FILES debian/copyright DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES debian/lintian-overrides DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides
    RENAME bt-autoconnect)
add_custom_target(package_files ALL DEPENDS ${texts})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME bt-autoconnect)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT
    "The bt-autoconnect authors <bt-autoconnect@users.noreply.example.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "automatic Bluetooth connection of a registered phone")
set(CPACK_PACKAGE_DESCRIPTION
"When the box wakes up, the service finds a registered phone by its Bluetooth
LE advertisement, connects it as a source of audio, and has its music play.
.
tvctl registers phones, reads and writes what the service depends on, and
tells why a phone was not connected. tv-sim stands in for BlueZ with simulated
phones, on machines without a radio.")
set(CPACK_SET_DESTDIR ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# With older versions of GLib any process on the bus can pretend to be BlueZ.
set(CPACK_DEBIAN_PACKAGE_DEPENDS
    "adduser, default-dbus-system-bus | dbus-system-bus, libglib2.0-0 (>= 2.74.6-2+deb12u2)")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS
    "bluez (>= 5.65), pipewire-audio | pulseaudio-module-bluetooth | bluez-alsa-utils")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA
    ${CMAKE_CURRENT_SOURCE_DIR}/debian/conffiles
    ${CMAKE_CURRENT_SOURCE_DIR}/debian/postinst
    ${CMAKE_CURRENT_SOURCE_DIR}/debian/prerm
    ${CMAKE_CURRENT_SOURCE_DIR}/debian/postrm)
include(CPack)
