# How everything here is compiled: C++20, warnings are errors, sanitizers and hardening on request.

set(TASKLOG_SANITIZE "" CACHE STRING "Sanitizers to build with, such as address,undefined or thread")

option(TASKLOG_FUZZ "Build the fuzz targets as fuzzers (clang)" OFF)

option(TASKLOG_VIEWER "Build the timeline page (emscripten, node, npm)" OFF)

option(TASKLOG_BENCH "Build the benchmarks" OFF)

option(TASKLOG_PYTHON "Build the Python package (pybind11, numpy)" OFF)

option(TASKLOG_COVERAGE "Count which branches of the library are taken" OFF)

option(TASKLOG_DEB "Lay out what is installed for Debian packages, and let CPack make them" OFF)

option(TASKLOG_LINT "Run clang-tidy on each file of the library that is compiled" OFF)

set(CMAKE_C_STANDARD 11)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
if(NOT EMSCRIPTEN)
  set(CMAKE_POSITION_INDEPENDENT_CODE ON)
endif()
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release)
endif()

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion
                    -Werror)
add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor>)
# Times and fractions are the same doubles on every machine: the older registers of an i386 keep more digits.
include(CheckSymbolExists)
check_symbol_exists(__i386__ stdint.h TASKLOG_I386)
if(TASKLOG_I386)
  add_compile_options(-msse2 -mfpmath=sse)
endif()
if(CMAKE_SIZEOF_VOID_P EQUAL 4)  # files of more than 2 GiB, and dates behind 2038
  add_compile_definitions(_FILE_OFFSET_BITS=64 _TIME_BITS=64)
endif()
# g++ 12 sees an overlap where text is put before a std::string; there is none.
add_compile_options($<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
# Shared libraries name all that they need; but those built with clang leave its sanitizers to the program.
set(TASKLOG_NO_UNDEFINED -Wl,--no-undefined)
if(TASKLOG_SANITIZE)
  set(TASKLOG_NO_UNDEFINED "")
  add_compile_options(-fsanitize=${TASKLOG_SANITIZE} -fno-sanitize-recover=all
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${TASKLOG_SANITIZE})
endif()
if(TASKLOG_FUZZ)
  # Comparisons are not traced: that costs as much as all else, and the corpora hold what they lead to.
  add_compile_options(-fsanitize=fuzzer-no-link -fno-sanitize-coverage=trace-cmp)
  add_compile_definitions(TASKLOG_FUZZ)
endif()
if(CMAKE_BUILD_TYPE STREQUAL "Release" AND NOT EMSCRIPTEN)
  add_compile_options(-fstack-protector-strong -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
  add_link_options(-Wl,-z,relro,-z,now)
  include(CheckPIESupported)
  check_pie_supported()
endif()
