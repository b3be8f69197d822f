# Protozero writes protocol buffers. It is headers alone, and Debian's package says nothing to CMake.
find_path(PROTOZERO_INCLUDE_DIR protozero/pbf_writer.hpp)
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(Protozero DEFAULT_MSG PROTOZERO_INCLUDE_DIR)
if(Protozero_FOUND AND NOT TARGET Protozero::Protozero)
  add_library(Protozero::Protozero INTERFACE IMPORTED)
  target_include_directories(Protozero::Protozero SYSTEM INTERFACE ${PROTOZERO_INCLUDE_DIR})
endif()
mark_as_advanced(PROTOZERO_INCLUDE_DIR)
