# Starts tracelab on an empty configuration root with --quit-after-start, twice:
# the first start seeds the root and writes the first-run marker, the second
# finds the marker. Both must end with exit code 0. With SIM (tracelab-sim) a
# third start loads a simulated run named on the command line (<f:path>) and
# processes it, the default answer of the question.
if(NOT TRACELAB OR NOT CONFIG_DIR)
  message(FATAL_ERROR "usage: cmake -DTRACELAB=... -DCONFIG_DIR=... -P smoke_start.cmake")
endif()
file(REMOVE_RECURSE ${CONFIG_DIR})
foreach(pass first second)
  execute_process(
    COMMAND ${TRACELAB} --config-dir ${CONFIG_DIR} --quit-after-start <hx40> <kart>
    RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_VARIABLE err TIMEOUT 50)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${pass} start exited with ${result}\n${out}\n${err}")
  endif()
  set(marker ${CONFIG_DIR}/Configuration/HX40_FirstRun.txt)
  if(NOT EXISTS ${marker})
    message(FATAL_ERROR "${pass} start left no ${marker}\n${err}")
  endif()
  if(pass STREQUAL "first" AND NOT err MATCHES "frmFirstRun")
    message(FATAL_ERROR "the first start showed no first-run form\n${err}")
  endif()
  if(pass STREQUAL "second" AND err MATCHES "frmFirstRun")
    message(FATAL_ERROR "the second start showed the first-run form again\n${err}")
  endif()
endforeach()
file(READ ${marker} text)
if(NOT text MATCHES "^Tracelab has been run")
  message(FATAL_ERROR "marker holds: ${text}")
endif()
if(SIM)
  set(run ${CONFIG_DIR}/runs/kart.run)
  file(MAKE_DIRECTORY ${CONFIG_DIR}/runs)
  execute_process(
    COMMAND ${SIM} --family hx40 --circuit kart --laps 1 --seed 7 --quiet -o ${run}
    RESULT_VARIABLE result ERROR_VARIABLE err)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "tracelab-sim failed: ${err}")
  endif()
  execute_process(
    COMMAND ${TRACELAB} --config-dir ${CONFIG_DIR} --quit-after-start <hx40> <kart> <f:${run}>
    RESULT_VARIABLE result OUTPUT_VARIABLE out ERROR_VARIABLE err TIMEOUT 50)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "the start with a run exited with ${result}\n${out}\n${err}")
  endif()
  if(NOT err MATCHES "\"Process File\"")
    message(FATAL_ERROR "the run named on the command line was not loaded\n${err}")
  endif()
  if(err MATCHES "frmVQMsgBox")
    message(FATAL_ERROR "the run's load or processing showed a message\n${err}")
  endif()
endif()
file(REMOVE_RECURSE ${CONFIG_DIR})
