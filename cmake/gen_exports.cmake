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
# With -DOUT_FORWARD=<file> it also writes, for the direct forwarding entries
# of a one-build library, one line an export
#     ZEPS_FWD(<return type>, <name>, (<parameters>), (<argument names>))
# Usage: cmake -DHEADER=<zepsc.h> -DOUT=<zepsc_exports.inc> [-DOUT_FORWARD=<f>] -P gen_exports.cmake
include("${CMAKE_CURRENT_LIST_DIR}/read_declarations.cmake")
file(READ "${HEADER}" text)
get_filename_component(incdir "${HEADER}" DIRECTORY)
zeps_family_headers("${HEADER}" family_headers)
foreach(rel IN LISTS family_headers)
  file(READ "${incdir}/${rel}" family_text)
  string(APPEND text "\n${family_text}")
endforeach()
zeps_declaration_code(text)
string(REGEX MATCHALL "ZEPSAPI[ \t\r\n]+[^;]*\\)" decls "${text}")
set(out "/* Generated from include/zepsc.h and the family headers it includes, by cmake/gen_exports.cmake; do not edit. */\n")
set(fwd "/* Generated from include/zepsc.h and the family headers it includes, by cmake/gen_exports.cmake; do not edit. */\n")
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
  # Argument names: the last identifier of each parameter ("void" has none).
  set(args "")
  if(NOT params STREQUAL "void")
    string(REPLACE "," ";" plist "${params}")
    foreach(p IN LISTS plist)
      string(STRIP "${p}" p)
      if(NOT p MATCHES "([A-Za-z_][A-Za-z0-9_]*)[ ]*(\\[[^]]*\\])?$")
        message(FATAL_ERROR "gen_exports: unnamed parameter in ${name}: ${p}")
      endif()
      list(APPEND args "${CMAKE_MATCH_1}")
    endforeach()
  endif()
  list(JOIN args ", " args)
  string(APPEND fwd "ZEPS_FWD(${ret}, ${name}, (${params}), (${args}))\n")
  math(EXPR count "${count} + 1")
endforeach()
if(count EQUAL 0)
  message(FATAL_ERROR "gen_exports: no ZEPSAPI declarations found in ${HEADER}")
endif()
write_if_changed("${OUT}" "${out}")
if(OUT_FORWARD)
  write_if_changed("${OUT_FORWARD}" "${fwd}")
endif()
