# SPDX-License-Identifier: BSD-3-Clause
# How the generators read the export declarations (included by
# gen_exports.cmake and gen_catalogue.cmake, so both read them alike).
#
# include/zepsc.h includes one header a family (include/zepsc/<family>.h);
# the exports are declared in them, in that order, as
#     ZEPSAPI <return type> <name>(<parameters>);

# zeps_family_headers(<zepsc.h> <out>): the family headers zepsc.h includes,
# in include order, as paths relative to its folder ("zepsc/<family>.h").
function(zeps_family_headers header out)
  file(READ "${header}" top)
  string(REGEX MATCHALL "#include \"zepsc/[a-z0-9_]+\\.h\"" family_includes "${top}")
  set(rels "")
  foreach(inc IN LISTS family_includes)
    string(REGEX REPLACE "#include \"(zepsc/[a-z0-9_]+\\.h)\"" "\\1" rel "${inc}")
    list(APPEND rels "${rel}")
  endforeach()
  set(${out} "${rels}" PARENT_SCOPE)
endfunction()

# zeps_declaration_code(<var>): the text of <var> with its comments (which may
# mention ZEPSAPI) and its preprocessor lines (the ZEPSAPI definition itself)
# removed, leaving the declarations to scan.
function(zeps_declaration_code var)
  string(REGEX REPLACE "/\\*([^*]|\\*+[^*/])*\\*+/" "" code "${${var}}")
  string(REGEX REPLACE "//[^\n]*" "" code "${code}")
  string(REGEX REPLACE "\n[ \t]*#[^\n]*" "\n" code "\n${code}")
  set(${var} "${code}" PARENT_SCOPE)
endfunction()

# write_if_changed(<path> <text>): writes an output only when it changes, so
# its dependants are not rebuilt needlessly.
function(write_if_changed path text)
  set(old "")
  if(EXISTS "${path}")
    file(READ "${path}" old)
  endif()
  if(NOT old STREQUAL text)
    file(WRITE "${path}" "${text}")
  endif()
endfunction()
