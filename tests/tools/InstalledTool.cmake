# Installs the build into a scratch prefix and runs the installed zenk-convert
# from another directory: it must find the installed library through its run
# path and convert with it.
#   cmake -DBUILD_DIR=<build> -DWORK_DIR=<scratch> -P InstalledTool.cmake
file(REMOVE_RECURSE "${WORK_DIR}")
execute_process(COMMAND ${CMAKE_COMMAND} --install "${BUILD_DIR}" --prefix "${WORK_DIR}/prefix"
  OUTPUT_QUIET RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "install failed")
endif()
execute_process(COMMAND "${WORK_DIR}/prefix/bin/zenk-convert" --test-card bars75 --size 16x2 --to BGR24I out.bgr
  WORKING_DIRECTORY "${WORK_DIR}" RESULT_VARIABLE rc ERROR_VARIABLE err)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "the installed zenk-convert failed: ${err}")
endif()
file(SIZE "${WORK_DIR}/out.bgr" size)
if(NOT size EQUAL 96)
  message(FATAL_ERROR "expected 96 bytes of BGR24I, got ${size}")
endif()
execute_process(COMMAND "${WORK_DIR}/prefix/bin/zenk-convert" --list
  WORKING_DIRECTORY "${WORK_DIR}" OUTPUT_VARIABLE list RESULT_VARIABLE rc)
string(FIND "${list}" "${WORK_DIR}/prefix/" at)
if(NOT rc EQUAL 0 OR at EQUAL -1)
  message(FATAL_ERROR "the installed zenk-convert did not load the installed library:\n${list}")
endif()
# The manual page, where the build made one: `man zenk-convert` finds it
# beside the installed tool, as it does for a user with the tool on PATH.
if(EXISTS "${BUILD_DIR}/tools/zenk-convert.1")
  find_program(MAN man)
  if(NOT EXISTS "${WORK_DIR}/prefix/share/man/man1/zenk-convert.1")
    message(FATAL_ERROR "the manual page was built but not installed")
  elseif(MAN)
    execute_process(COMMAND ${CMAKE_COMMAND} -E env --unset=MANPATH "PATH=${WORK_DIR}/prefix/bin:$ENV{PATH}"
      ${MAN} -w zenk-convert OUTPUT_VARIABLE page OUTPUT_STRIP_TRAILING_WHITESPACE RESULT_VARIABLE rc)
    if(NOT rc EQUAL 0 OR NOT page STREQUAL "${WORK_DIR}/prefix/share/man/man1/zenk-convert.1")
      message(FATAL_ERROR "man zenk-convert does not find the installed page: '${page}'")
    endif()
  endif()
endif()
