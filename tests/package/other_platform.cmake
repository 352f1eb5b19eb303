# Builds the library with another port of the platform layer. It is linked without undefined symbols, so what the
# library takes from the host's port beyond the four interfaces is missed here.
cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/run.cmake)

file(REMOVE_RECURSE ${WORK_DIR})
run(${CMAKE_COMMAND} -S ${SOURCE_DIR} -B ${WORK_DIR} -G Ninja
  -D CMAKE_CXX_COMPILER=${CXX} -D CMAKE_BUILD_TYPE=Debug -D CMAKE_CXX_FLAGS_DEBUG=-O0 -D BUILD_TESTING=OFF
  -D DATAMODULE_PLATFORM_DIR=${PORT_DIR})
run(${CMAKE_COMMAND} --build ${WORK_DIR} --target dataModule -j 2)
file(REMOVE_RECURSE ${WORK_DIR})
