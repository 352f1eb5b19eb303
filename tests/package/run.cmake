# run(COMMAND...): runs a command of a test script and sets `output`; when it fails, so does the test.
# fail(TEXT): ends the test. Both remove WORK_DIR, the test's own folder.
function(fail text)
  file(REMOVE_RECURSE ${WORK_DIR})
  message(FATAL_ERROR "${text}")
endfunction()

function(run)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT status EQUAL 0)
    list(JOIN ARGV " " command)
    fail("${command}\n${output}\nstatus ${status}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()
