# 32-bit ARM with hardware floating point, by Debian's cross compiler; its programs run here under qemu.
#
# The C and C++ libraries are those of the cross compiler's packages. Everything else comes from one folder that holds
# Debian's armhf packages unpacked (scripts/armhf-libraries makes it), and nothing from the building machine: its
# headers are configured for another processor.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
set(CMAKE_STRIP arm-linux-gnueabihf-strip)
# Not a word about argument passing that changed with GCC 7: nothing here is linked with anything older.
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)

cmake_path(SET armhf_libraries NORMALIZE ${CMAKE_CURRENT_LIST_DIR}/../../build/armhf-libraries)
set(DATAMODULE_ARMHF_LIBRARIES ${armhf_libraries} CACHE PATH "Folder that holds Debian's armhf packages unpacked")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES DATAMODULE_ARMHF_LIBRARIES)

set(CMAKE_FIND_ROOT_PATH ${DATAMODULE_ARMHF_LIBRARIES} /usr/arm-linux-gnueabihf)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_LIBDIR} ${DATAMODULE_ARMHF_LIBRARIES}/usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/pkgconfig)
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${DATAMODULE_ARMHF_LIBRARIES})

set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm -L /usr/arm-linux-gnueabihf)
