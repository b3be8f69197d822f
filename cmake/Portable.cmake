# A build that runs on other systems than this: of libraries it needs the C library alone, and that from
# TASKLOG_OLDEST_GLIBC on. ./dev package makes the archive of it.
option(TASKLOG_PORTABLE "Build for any Linux of the last eight years (docs/install.md)" OFF)
set(TASKLOG_OLDEST_GLIBC 2.26 CACHE STRING "The oldest C library that a portable build runs with")
if(NOT TASKLOG_PORTABLE)
  return()
endif()

if(NOT CMAKE_SYSTEM_PROCESSOR STREQUAL "x86_64")
  message(FATAL_ERROR "A portable build is made on x86-64, for x86-64")
endif()

# From here on static libraries are found. Debian has none of fmt; of toml++ the headers are enough.
set(CMAKE_FIND_LIBRARY_SUFFIXES .a)
add_library(portable_fmt STATIC ${PROJECT_SOURCE_DIR}/cmake/portable/fmt.cpp)
target_compile_definitions(portable_fmt PRIVATE FMT_SHARED)
foreach(target IN ITEMS fmt::fmt fmt::fmt-header-only tomlplusplus::tomlplusplus)
  add_library(${target} INTERFACE IMPORTED)
endforeach()
set_target_properties(fmt::fmt PROPERTIES
  INTERFACE_LINK_LIBRARIES portable_fmt INTERFACE_COMPILE_DEFINITIONS FMT_SHARED)

# What is linked in place of this system's C library, and into each program and library. It stands at the end of
# every line of the linker, so it is compiled before there are targets; in a folder that is called after what it is made
# of, so that all is linked anew when that changes.
set(portableSources oldglibc compat.c start.c)
list(TRANSFORM portableSources PREPEND ${PROJECT_SOURCE_DIR}/cmake/portable/)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${portableSources})
set(hashes ${TASKLOG_OLDEST_GLIBC})
foreach(source IN LISTS portableSources)
  file(SHA1 ${source} hash)
  string(APPEND hashes ${hash})
endforeach()
string(SHA1 hash ${hashes})
set(oldGlibc ${CMAKE_BINARY_DIR}/oldglibc-${hash})
execute_process(COMMAND ${CMAKE_COMMAND} -E env CC=${CMAKE_C_COMPILER}
    ${PROJECT_SOURCE_DIR}/cmake/portable/oldglibc ${TASKLOG_OLDEST_GLIBC} ${oldGlibc}
  COMMAND_ERROR_IS_FATAL ANY)
foreach(unit IN ITEMS compat start)
  execute_process(COMMAND ${CMAKE_C_COMPILER} -O2 -fPIC -c ${PROJECT_SOURCE_DIR}/cmake/portable/${unit}.c
      -o ${oldGlibc}/${unit}.o
    COMMAND_ERROR_IS_FATAL ANY)
endforeach()
add_link_options(-static-libstdc++ -static-libgcc -L${oldGlibc}
  $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:-Wl,--wrap=__libc_start_main>
  $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:${oldGlibc}/start.o>)
set(CMAKE_CXX_STANDARD_LIBRARIES "${oldGlibc}/compat.o")
string(APPEND CMAKE_CXX_STANDARD_LIBRARIES
  " -Wl,--push-state,--no-as-needed ${oldGlibc}/libdl.so.2 ${oldGlibc}/libpthread.so.0 -Wl,--pop-state")
