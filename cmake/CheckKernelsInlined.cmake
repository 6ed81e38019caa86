# Every kernel is one function: its walk, its format's block and unit and
# the vector layer's operations all inlined into it. A helper of a level's
# namespace left out of line is a call per block (GCC's flattening leaves
# some lambdas out of line unless they are forced inline). Lists the
# library's local functions in the level namespaces and fails on any that is
# not a kernel entry.
#   cmake -DLIBRARY=<library> -DLEVELS=<level;...> -P CheckKernelsInlined.cmake
execute_process(COMMAND nm -C --defined-only ${LIBRARY} OUTPUT_VARIABLE symbols RESULT_VARIABLE failed)
if(failed)
  message(FATAL_ERROR "nm could not read ${LIBRARY}")
endif()
# Square brackets ("[clone .constprop.0]") would keep CMake's list from
# splitting at the semicolons.
string(REPLACE "[" "(" symbols "${symbols}")
string(REPLACE "]" ")" symbols "${symbols}")
string(REPLACE ";" "," symbols "${symbols}")
string(REPLACE "\n" ";" symbols "${symbols}")
set(entries "FrameKernel<|PairModeKernel<|DoublingKernel<|StoresAsRequested<")
set(kernels 0)
foreach(line ${symbols})
  foreach(level ${LEVELS})
    if(line MATCHES " [tTwW] (void |auto )?zenk::${level}::")
      if(line MATCHES "${entries}")
        math(EXPR kernels "${kernels} + 1")
      else()
        message(SEND_ERROR "out of line in ${LIBRARY}: ${line}")
      endif()
    endif()
  endforeach()
endforeach()
if(kernels EQUAL 0)
  message(FATAL_ERROR "no kernel entries found in ${LIBRARY}")
endif()
message(STATUS "${kernels} kernel entries, no helper out of line")
