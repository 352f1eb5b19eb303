# Installs the build to a prefix of its own and builds a client in another folder against it, by find_package and by
# pkg-config. Leaves nothing behind.
cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/run.cmake)

function(expect_output expected)
  if(NOT output MATCHES "${expected}")
    fail("expected ${expected}, got\n${output}")
  endif()
endfunction()

file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})

run(${READELF} --dynamic --wide ${prefix}/${LIB_DIR}/libdataModule.so)
expect_output("SONAME[^\n]*\\[${SONAME}\\]")

run(${prefix}/${BIN_DIR}/dmctl --help)
expect_output("verify")

set(client ${WORK_DIR}/find_package)
run(${CMAKE_COMMAND} -S ${CLIENT_DIR} -B ${client} -G Ninja
  -D CMAKE_CXX_COMPILER=${CXX} -D CMAKE_PREFIX_PATH=${prefix} -D CMAKE_FIND_USE_PACKAGE_REGISTRY=OFF)
run(${CMAKE_COMMAND} --build ${client})
run(${client}/client)
expect_output("^PICTURE_MODE\n$")
run(${client}/own_operator ${client}/root)
expect_output("33 of 4 bytes\n$")

set(ENV{PKG_CONFIG_PATH} ${prefix}/${LIB_DIR}/pkgconfig)
run(${PKG_CONFIG} --cflags --libs dataModule)
separate_arguments(flags UNIX_COMMAND "${output}")
set(client ${WORK_DIR}/pkg_config)
file(MAKE_DIRECTORY ${client})
run(${CXX} -std=c++17 ${CLIENT_DIR}/client.cpp -o ${client}/client ${flags} -Wl,-rpath,${prefix}/${LIB_DIR})
run(${client}/client)
expect_output("^PICTURE_MODE\n$")

file(REMOVE_RECURSE ${WORK_DIR})
