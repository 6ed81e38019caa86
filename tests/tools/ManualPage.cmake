# The manual page built beside the tool renders with `man -l` and is the
# current --help (the line-pair words, the default matrix rule); the README
# shows `man -l` on it for the linux-x64 build.
#   cmake -DSOURCE_DIR=<source> -DPAGE=<built page> -DMAN=<man or empty> -P ManualPage.cmake
if(NOT EXISTS "${PAGE}")
  message(FATAL_ERROR "no manual page at ${PAGE}")
endif()
file(RELATIVE_PATH relative "${SOURCE_DIR}" "${PAGE}")
if(relative STREQUAL "build/linux-x64/tools/zenk-convert.1")
  file(READ "${SOURCE_DIR}/README.md" readme)
  string(FIND "${readme}" "man -l ${relative}" at)
  if(at EQUAL -1)
    message(FATAL_ERROR "README.md does not show `man -l ${relative}`")
  endif()
endif()
if(MAN)
  execute_process(COMMAND ${CMAKE_COMMAND} -E env MANWIDTH=80 ${MAN} -l "${PAGE}"
    OUTPUT_VARIABLE text ERROR_VARIABLE errors RESULT_VARIABLE rc)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "man -l ${PAGE} failed: ${errors}")
  endif()
  string(REGEX REPLACE "[ \n]+" " " text "${text}")
  foreach(said "--proxy 2|4" "--interlaced" "BT.601 up to 576 lines, BT.709 above" "-n never replace")
    string(FIND "${text}" "${said}" at)
    if(at EQUAL -1)
      message(FATAL_ERROR "the manual page does not say '${said}':\n${text}")
    endif()
  endforeach()
endif()
