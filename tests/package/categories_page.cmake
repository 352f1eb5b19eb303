# Fails when docs/categories.md is not what the declarations say now.
execute_process(COMMAND ${DMCTL} document OUTPUT_VARIABLE now RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "dmctl document failed: ${status}")
endif()
file(READ ${PAGE} page)
if(NOT page STREQUAL now)
  message(FATAL_ERROR "${PAGE} is out of date; make it anew: dmctl document >docs/categories.md")
endif()
