# SPDX-License-Identifier: BSD-3-Clause
# Writes and installs zepsc.pc at install time (included by the install
# script). Input variables: ZEPS_PC_LIBDIR, ZEPS_PC_INCLUDEDIR (as
# CMAKE_INSTALL_LIBDIR/INCLUDEDIR, relative or absolute), ZEPS_PC_VERSION,
# ZEPS_PC_TEMPLATE, ZEPS_PC_OUT. CMAKE_INSTALL_PREFIX is the prefix of this
# install. A folder under the prefix is written as ${prefix}/..., so the file
# stays readable; any other folder is written as it is.
function(zeps_pc_dir var dir)
  if(IS_ABSOLUTE "${dir}")
    set(full "${dir}")
  else()
    set(full "${CMAKE_INSTALL_PREFIX}/${dir}")
  endif()
  cmake_path(NORMAL_PATH full)
  string(REGEX REPLACE "/$" "" full "${full}")
  string(LENGTH "${prefix}/" n)
  string(SUBSTRING "${full}/" 0 ${n} head)
  if(head STREQUAL "${prefix}/" AND NOT prefix STREQUAL "/")
    string(SUBSTRING "${full}" ${n} -1 rest)
    set(full "\${prefix}/${rest}")
  endif()
  set(${var} "${full}" PARENT_SCOPE)
endfunction()

set(prefix "${CMAKE_INSTALL_PREFIX}")
cmake_path(NORMAL_PATH prefix)
string(REGEX REPLACE "(.)/$" "\\1" prefix "${prefix}")
zeps_pc_dir(libdir "${ZEPS_PC_LIBDIR}")
zeps_pc_dir(includedir "${ZEPS_PC_INCLUDEDIR}")
set(version "${ZEPS_PC_VERSION}")
configure_file("${ZEPS_PC_TEMPLATE}" "${ZEPS_PC_OUT}" @ONLY)
if(IS_ABSOLUTE "${ZEPS_PC_LIBDIR}")
  set(dest "${ZEPS_PC_LIBDIR}/pkgconfig")
else()
  set(dest "${CMAKE_INSTALL_PREFIX}/${ZEPS_PC_LIBDIR}/pkgconfig")
endif()
file(INSTALL DESTINATION "${dest}" TYPE FILE FILES "${ZEPS_PC_OUT}")
