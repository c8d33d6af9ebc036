# SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
# SPDX-License-Identifier: Apache-2.0

# An older GLib delivers signals of any sender, so that each process on the bus can pretend to be
# BlueZ. Some distributions have corrected theirs without a new version number.
option(BTAC_PATCHED_GLIB "GLib checks the sender of a signal, whatever its version says" OFF)

function(require_safe_glib)
  if(BTAC_PATCHED_GLIB OR GIO_VERSION VERSION_GREATER_EQUAL 2.80.1 OR
     (GIO_VERSION VERSION_GREATER_EQUAL 2.78.5 AND GIO_VERSION VERSION_LESS 2.79))
    return()
  endif()
  # Of each architecture, for that of a cross-build.
  execute_process(COMMAND sh -c "
      versions=$(dpkg-query -W -f='\${Version} ' libglib2.0-dev) && [ -n \"$versions\" ] || exit 1
      for version in $versions; do
        dpkg --compare-versions \"$version\" ge 2.74.6-2+deb12u2 || exit 1
        dpkg --compare-versions \"$version\" lt 2.74.7 || exit 1
      done" RESULT_VARIABLE failure OUTPUT_QUIET ERROR_QUIET)
  if(failure)
    message(FATAL_ERROR "GLib ${GIO_VERSION} lets any process on the bus pretend to be BlueZ. It must "
        "be 2.78.5, 2.80.1 or newer, or Debian's 2.74.6-2+deb12u2 or newer. With "
        "-DBTAC_PATCHED_GLIB=ON this one is taken all the same.")
  endif()
endfunction()
