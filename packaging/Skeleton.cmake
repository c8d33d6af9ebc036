# SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
# SPDX-License-Identifier: Apache-2.0

# A port to begin with, made from the platform's headers: a source for each header, in which each
# function fails as its contract says. It builds and runs, and no function is missing. In all texts
# here a "@" stands for a semicolon, which CMake takes for the end of a list's item.

# What a function returns, by the first pattern that fits its name.
set(skeleton_results
    "_(free|destroy)(_|$)|^device_power_get_" 0
    "^bt_adapter_get_state$" BT_ERROR_NONE
    "^bt_adapter_le_stop_scan$" BT_ERROR_NOT_IN_PROGRESS
    "^bt_adapter_le_get_" BT_ERROR_OPERATION_FAILED
    "^bt_avrcp_control_" BT_ERROR_REMOTE_DEVICE_NOT_CONNECTED
    "^bt_(audio|avrcp)_|headless|connectable" BT_ERROR_NOT_SUPPORTED
    "^bt_" BT_ERROR_NOT_ENABLED
    "^db_" SQLITE_CANTOPEN
    "^vconf_get_str$" nullptr
    "." -1)
# What it does before, where it does anything.
set(skeleton_does_bt_adapter_get_state "    if (state == nullptr) {
        return BT_ERROR_INVALID_PARAMETER@
    }
    *state = BT_ADAPTER_DISABLED@\n")
set(skeleton_does_app_control_get_app_id "    *app_id = nullptr@\n")
set(skeleton_does_app_control_get_extra_data "    *value = nullptr@\n")
set(skeleton_does___dlog_print "    va_list arguments@
    va_start(arguments, format)@
    std::fprintf(stderr, \"%d %s: \", priority, tag)@
    std::vfprintf(stderr, format, arguments)@
    std::fputc('\\n', stderr)@
    va_end(arguments)@\n")

# Puts the definition of the declared function "TYPE NAME(PARAMETERS)" into VARIABLE.
function(skeleton_definition type name parameters variable)
  set(does "${skeleton_does_${name}}")
  string(REPLACE "(void)" "()" parameters "${parameters}")
  string(REGEX MATCHALL "[a-z_]+[,)]" names "${parameters}")
  foreach(parameter ${names})
    string(REGEX REPLACE "[,)]" "" word ${parameter})
    if(NOT does MATCHES "[^a-z_]${word}[^a-z_]")
      string(REGEX REPLACE "([ *])${word}([,)])" "\\1/*${word}*/\\2" parameters "${parameters}")
    endif()
  endforeach()
  set(patterns ${skeleton_results})
  while(patterns)
    list(POP_FRONT patterns pattern result)
    if(name MATCHES "${pattern}")
      break()
    endif()
  endwhile()
  set(${variable} "\n${type} ${name}${parameters} {\n${does}    return ${result}@\n}\n" PARENT_SCOPE)
endfunction()

# Writes the skeleton into FOLDER.
function(write_skeleton headers folder)
  file(GLOB paths CONFIGURE_DEPENDS ${headers}/platform/*.h)
  set(spdx "SPDX-FileCopyrightText: 2026 The bt-autoconnect authors")
  set(licence "SPDX-License-Identifier: Apache-2.0")
  set(sources)
  foreach(path ${paths})
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${path})
    cmake_path(GET path STEM header)
    file(READ ${path} text)
    string(REPLACE ";" "@" text "${text}")
    string(REGEX REPLACE "/\\*([^*]|\\*+[^*/])*\\*+/" "" text "${text}")
    string(REGEX REPLACE " *\n +" " " text "${text}")
    string(REGEX MATCHALL "\n(int|char\\*) [a-zA-Z_]+\\([^)]*\\)" declarations "${text}")
    set(definitions "")
    foreach(declaration ${declarations})
      string(REGEX MATCH "\n(.*[ *])([a-zA-Z_]+)(\\(.*)" declaration "${declaration}")
      string(STRIP "${CMAKE_MATCH_1}" type)
      skeleton_definition("${type}" ${CMAKE_MATCH_2} "${CMAKE_MATCH_3}" definition)
      string(APPEND definitions "${definition}")
    endforeach()
    set(includes "#include \"platform/${header}.h\"\n")
    if(definitions MATCHES "va_list")
      string(APPEND includes "\n#include <cstdarg>\n#include <cstdio>\n")
    endif()
    string(REPLACE "@" ";" content "// ${spdx}\n// ${licence}\n${includes}${definitions}")
    file(CONFIGURE OUTPUT ${folder}/${header}.cpp CONTENT "${content}" @ONLY)
    list(APPEND sources ${header}.cpp)
  endforeach()
  list(JOIN sources "\n    " sources)
  file(CONFIGURE OUTPUT ${folder}/CMakeLists.txt CONTENT "# ${spdx}\n# ${licence}
add_library(tv_platform OBJECT\n    ${sources})
target_link_libraries(tv_platform PUBLIC platform_headers common PRIVATE project_options)\n")
endfunction()
