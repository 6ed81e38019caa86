# The library needs nothing at load time beyond the C library and the host
# settings library: no shared C++ runtime.
#   cmake -DLIBRARY=<file> -P CheckDependencies.cmake
execute_process(COMMAND readelf -d "${LIBRARY}" OUTPUT_VARIABLE out RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "readelf failed on ${LIBRARY}")
endif()
string(REGEX MATCHALL "Shared library: \\[[^]]+\\]" needed "${out}")
foreach(entry IN LISTS needed)
  string(REGEX REPLACE "Shared library: \\[([^]]+)\\]" "\\1" lib "${entry}")
  if(NOT lib MATCHES "^(libc\\.so\\.6|libZenkHostSettings\\.so)$")
    message(FATAL_ERROR "${LIBRARY} needs ${lib} at load time")
  endif()
endforeach()
message(STATUS "${LIBRARY} needs: ${needed}")
