# What every target is compiled with, and what a user may choose.

option(DATAMODULE_WERROR "Treat compiler warnings as errors" OFF)
option(DATAMODULE_CHECK_LOCKS "Check the lock order at run time and end the program where it is not kept" OFF)
option(DATAMODULE_UNITY "Compile several sources at a time: much quicker from scratch" OFF)
option(DATAMODULE_COVERAGE "Count which lines of the library run; see scripts/coverage" OFF)
set(DATAMODULE_SANITIZE "" CACHE STRING "Sanitizers, as in -fsanitize= (address,undefined or thread)")
set(DATAMODULE_PLATFORM_DIR ${CMAKE_SOURCE_DIR}/platform/host
    CACHE PATH "Folder whose CMakeLists.txt makes dataModule_platform, the port of the platform interfaces")

find_program(DATAMODULE_CCACHE ccache)
if(DATAMODULE_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${DATAMODULE_CCACHE})
endif()

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "Build type" FORCE)
endif()

if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  # A settings file is far below 2 GiB, but with 32-bit inode numbers and times stat() fails for a small file too, where
  # the file system gives it a higher inode number or the clock has passed 2038. No exported header depends on these.
  add_compile_definitions(_FILE_OFFSET_BITS=64 _TIME_BITS=64)
endif()

add_library(dataModule_flags INTERFACE)
target_compile_options(dataModule_flags INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # GCC 12 warns of its own std::string when it optimises "text" + std::string (GCC bug 105651).
  target_compile_options(dataModule_flags INTERFACE -Wno-restrict)
endif()
if(DATAMODULE_WERROR)
  target_compile_options(dataModule_flags INTERFACE -Werror)
endif()
if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  target_compile_options(dataModule_flags INTERFACE -Wthread-safety)
endif()
if(DATAMODULE_SANITIZE)
  add_compile_options(-fsanitize=${DATAMODULE_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${DATAMODULE_SANITIZE})
endif()
if(DATAMODULE_SANITIZE MATCHES "thread" AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # The thread pool of Boost.Asio has fences, of which the sanitizer warns that it does not follow them. What they order
  # is also ordered by the pool's mutex, which it does follow.
  target_compile_options(dataModule_flags INTERFACE -Wno-tsan)
endif()
