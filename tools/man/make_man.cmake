# Writes the zepsc(1) manual page from the tool's own help text, so the page
# never drifts from the program: `zepsc --help`, then `--help` of every
# command and of every command's subcommands, each as a section.
#   cmake -DTOOL=<zepsc> -DVERSION=<x.y.z> -DOUT=<zepsc.1> -P make_man.cmake

function(help_of out)
  execute_process(COMMAND ${TOOL} ${ARGN} --help RESULT_VARIABLE rc OUTPUT_VARIABLE text ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "${TOOL} ${ARGN} --help failed (${rc}): ${err}")
  endif()
  set(${out} "${text}" PARENT_SCOPE)
endfunction()

# The names listed under "Subcommands:" in a help text.
function(commands_of out text)
  string(REGEX MATCH "\nSubcommands:\n([^\n]+\n)+" block "${text}")
  string(REGEX MATCHALL "\n  [a-z0-9_-]+ " names "${block}")
  set(list "")
  foreach(n IN LISTS names)
    string(STRIP "${n}" n)
    list(APPEND list "${n}")
  endforeach()
  set(${out} "${list}" PARENT_SCOPE)
endfunction()

# Help text as roff: verbatim lines, backslashes and leading dots escaped.
function(roff out text)
  string(REPLACE "\\" "\\e" text "${text}")
  string(REGEX REPLACE "\n([.'])" "\n\\\\&\\1" text "\n${text}")
  set(${out} ".nf\n${text}\n.fi\n" PARENT_SCOPE)
endfunction()

help_of(top)
string(TIMESTAMP today "%Y-%m-%d" UTC)
set(page ".TH ZEPSC 1 \"${today}\" \"zepsc ${VERSION}\" \"User Commands\"\n")
string(APPEND page ".SH NAME\nzepsc \\- speech coding from the zepsc library: codecs, VAD, LP analysis, filter banks\n")
string(APPEND page ".SH SYNOPSIS\n.B zepsc\n[\\fIcommand\\fR] [\\fIoptions\\fR] [\\fIfiles\\fR]\n")
roff(body "${top}")
string(APPEND page ".SH DESCRIPTION\n${body}")
string(APPEND page ".SH COMMANDS\n")
commands_of(commands "${top}")
foreach(cmd IN LISTS commands)
  help_of(text ${cmd})
  roff(body "${text}")
  string(APPEND page ".SS zepsc ${cmd}\n${body}")
  commands_of(subs "${text}")
  foreach(sub IN LISTS subs)
    help_of(text ${cmd} ${sub})
    roff(body "${text}")
    string(APPEND page ".SS zepsc ${cmd} ${sub}\n${body}")
  endforeach()
endforeach()
string(APPEND page ".SH EXIT STATUS\n0 on success; 1 for an unreadable or malformed input, a failed write or a bad\n"
                   "option (one line on standard error, no output file left behind); 2 for an\nunknown command.\n")
file(WRITE "${OUT}" "${page}")
