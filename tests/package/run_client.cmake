# Runs the README's client twice on a new root: the second run has to read what the first one stored.
cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/run.cmake)

file(REMOVE_RECURSE ${WORK_DIR})
file(MAKE_DIRECTORY ${WORK_DIR})
run(${DMCTL} --root ${WORK_DIR} init)
run(${CLIENT} ${WORK_DIR})
set(first "${output}")
run(${CLIENT} ${WORK_DIR})
if(NOT first MATCHES "contrast 50," OR NOT output MATCHES "contrast 55,")
  fail("first run:\n${first}\nsecond run:\n${output}")
endif()
file(REMOVE_RECURSE ${WORK_DIR})
