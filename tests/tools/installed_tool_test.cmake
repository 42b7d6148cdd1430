# Installs the build into a scratch prefix, moves the prefix, and runs the installed kaip there: it
# must find the installed library relative to itself.
file(REMOVE_RECURSE ${WORK_DIR})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${WORK_DIR}/prefix
  RESULT_VARIABLE r OUTPUT_QUIET)
if(NOT r EQUAL 0)
  message(FATAL_ERROR "install failed")
endif()
file(RENAME ${WORK_DIR}/prefix ${WORK_DIR}/moved)
execute_process(COMMAND ${WORK_DIR}/moved/${BINDIR}/kaip formats Mono8
  RESULT_VARIABLE r OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(NOT r EQUAL 0 OR NOT out MATCHES "Mono8 +0x01080001")
  message(FATAL_ERROR "the installed kaip did not run (${r}): ${out}${err}")
endif()
