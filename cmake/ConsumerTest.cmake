# Installs the built library into a scratch prefix, then configures, builds
# and runs the consumer hosts against it.
#   cmake -DBUILD_DIR=<library build> -DSOURCE_DIR=<tests/consumer> -DWORK_DIR=<scratch> -P ConsumerTest.cmake
file(REMOVE_RECURSE "${WORK_DIR}")
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc)
  if(NOT rc EQUAL 0)
    string(REPLACE ";" " " cmd "${ARGN}")
    message(FATAL_ERROR "failed: ${cmd}")
  endif()
endfunction()
run(${CMAKE_COMMAND} --install "${BUILD_DIR}" --prefix "${WORK_DIR}/prefix")
set(ENV{PKG_CONFIG_PATH} "${WORK_DIR}/prefix/lib/pkgconfig")
run(${CMAKE_COMMAND} -S "${SOURCE_DIR}" -B "${WORK_DIR}/build" -G Ninja "-DCMAKE_PREFIX_PATH=${WORK_DIR}/prefix"
    "-DCMAKE_C_FLAGS=${FLAGS}" "-DCMAKE_CXX_FLAGS=${FLAGS}" "-DCMAKE_EXE_LINKER_FLAGS=${FLAGS}")
run(${CMAKE_COMMAND} --build "${WORK_DIR}/build")
run("${WORK_DIR}/build/c_host")
run("${WORK_DIR}/build/cpp_host")
