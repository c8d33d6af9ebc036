# SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
# SPDX-License-Identifier: Apache-2.0
#
# An example of a BitBake recipe for a TV: the folder my-tv beside it is the port. Without the second
# part of SRC_URI and without TV_PLATFORM it is the one for a Linux box with BlueZ; then add systemd to
# DEPENDS, bluez5 to RDEPENDS, and the users of bt-autoconnect-player and bt-autoconnect-wake.
SUMMARY = "Automatic Bluetooth connection of a registered phone"
LICENSE = "Apache-2.0"
LIC_FILES_CHKSUM = "file://LICENSE;md5=3b83ef96387f14655fc854ddc3c6bd57"

SRC_URI = "git://example.org/bt-autoconnect.git;protocol=https;branch=main \
           file://my-tv"
SRCREV = "${AUTOREV}"
S = "${WORKDIR}/git"

DEPENDS = "glib-2.0 jsoncpp sqlite3 boost"
inherit cmake pkgconfig systemd useradd

EXTRA_OECMAKE = "-DBTAC_BUILD_TESTS=OFF \
                 -DTV_PLATFORM=${WORKDIR}/my-tv \
                 -DBTAC_UNIT_DIR=${systemd_system_unitdir}"

SYSTEMD_SERVICE:${PN} = "bt-autoconnect.service"
USERADD_PACKAGES = "${PN}"
USERADD_PARAM:${PN} = "--system --user-group --no-create-home --home-dir /nonexistent \
                       --shell /sbin/nologin bt-autoconnect"
FILES:${PN} += "${libexecdir} ${datadir}/dbus-1 ${nonarch_libdir}/sysusers.d"
