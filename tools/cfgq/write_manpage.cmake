# Writes OUTPUT from `TOOL --manpage`; a failing tool fails the build.
execute_process(COMMAND ${TOOL} --manpage OUTPUT_FILE ${OUTPUT}.new RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  file(REMOVE ${OUTPUT}.new)
  message(FATAL_ERROR "${TOOL} --manpage failed: ${status}")
endif()
file(RENAME ${OUTPUT}.new ${OUTPUT})
