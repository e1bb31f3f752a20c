# SPDX-License-Identifier: BSD-3-Clause
cmake_minimum_required(VERSION 3.20)
# Reads the public headers and writes the X-macro export list used by the
# dispatch table, the forwarding entries and the variant declarations.
#
# include/zepsc.h includes one header a family (include/zepsc/<family>.h);
# they are read in that order. Every exported function is declared in them
# exactly once, as
#     ZEPSAPI <return type> <name>(<parameters>);
# and this script turns each declaration into one line
#     ZEPS_FN(<return type>, <name>, (<parameters>))
# Usage: cmake -DHEADER=<zepsc.h> -DOUT=<zepsc_exports.inc> -P gen_exports.cmake
file(READ "${HEADER}" top)
get_filename_component(incdir "${HEADER}" DIRECTORY)
string(REGEX MATCHALL "#include \"zepsc/[a-z0-9_]+\\.h\"" family_includes "${top}")
set(text "${top}")
foreach(inc IN LISTS family_includes)
  string(REGEX REPLACE "#include \"(zepsc/[a-z0-9_]+\\.h)\"" "\\1" rel "${inc}")
  file(READ "${incdir}/${rel}" family_text)
  string(APPEND text "\n${family_text}")
endforeach()
# Comments may mention ZEPSAPI; drop them before scanning.
string(REGEX REPLACE "/\\*([^*]|\\*+[^*/])*\\*+/" "" text "${text}")
string(REGEX REPLACE "//[^\n]*" "" text "${text}")
# Preprocessor lines (the ZEPSAPI definition itself) are not declarations.
string(REGEX REPLACE "\n[ \t]*#[^\n]*" "\n" text "\n${text}")
string(REGEX MATCHALL "ZEPSAPI[ \t\r\n]+[^;]*\\)" decls "${text}")
set(out "/* Generated from include/zepsc.h and the family headers it includes, by cmake/gen_exports.cmake; do not edit. */\n")
set(count 0)
set(seen "")
foreach(decl IN LISTS decls)
  string(REGEX REPLACE "[ \t\r\n]+" " " decl "${decl}")
  if(NOT decl MATCHES "^ZEPSAPI ([A-Za-z0-9_ ]*[A-Za-z0-9_][ *]*[ *])(zeps[A-Za-z0-9_]+) ?\\((.*)\\)$")
    message(FATAL_ERROR "gen_exports: cannot parse declaration: ${decl}")
  endif()
  set(ret "${CMAKE_MATCH_1}")
  set(name "${CMAKE_MATCH_2}")
  set(params "${CMAKE_MATCH_3}")
  string(STRIP "${ret}" ret)
  if(name IN_LIST seen)
    message(FATAL_ERROR "gen_exports: ${name} is declared twice")
  endif()
  list(APPEND seen "${name}")
  string(APPEND out "ZEPS_FN(${ret}, ${name}, (${params}))\n")
  math(EXPR count "${count} + 1")
endforeach()
if(count EQUAL 0)
  message(FATAL_ERROR "gen_exports: no ZEPSAPI declarations found in ${HEADER}")
endif()
# Only touch the output when it changes, so dependants are not rebuilt needlessly.
if(EXISTS "${OUT}")
  file(READ "${OUT}" old)
else()
  set(old "")
endif()
if(NOT old STREQUAL out)
  file(WRITE "${OUT}" "${out}")
endif()
