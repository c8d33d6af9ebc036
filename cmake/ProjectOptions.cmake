# SPDX-FileCopyrightText: 2026 The bt-autoconnect authors
# SPDX-License-Identifier: Apache-2.0

# Warnings, sanitizers and coverage of everything that is built here.
add_library(project_options INTERFACE)
target_compile_options(project_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion
    # ", ##__VA_ARGS__", which GCC takes as GNU C++.
    $<$<CXX_COMPILER_ID:Clang>:-Wno-gnu-zero-variadic-macro-arguments>
    $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor> $<$<COMPILE_LANGUAGE:CXX>:-Woverloaded-virtual>
    $<$<BOOL:${BTAC_WERROR}>:-Werror>)
# No path of the machine that built it, in __FILE__ or in what debuggers read. Debug builds keep theirs
# for debuggers, and so does what measures coverage.
if(NOT BTAC_COVERAGE)
  target_compile_options(project_options INTERFACE
      $<$<NOT:$<CONFIG:Debug>>:-ffile-prefix-map=${PROJECT_BINARY_DIR}=build>
      $<$<NOT:$<CONFIG:Debug>>:-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.>)
endif()
if(BTAC_SANITIZE)
  target_compile_options(project_options INTERFACE
      -fsanitize=${BTAC_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(project_options INTERFACE -fsanitize=${BTAC_SANITIZE})
endif()
if(BTAC_COVERAGE)
  target_compile_options(project_options INTERFACE --coverage)
  target_link_options(project_options INTERFACE --coverage)
endif()
