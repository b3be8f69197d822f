# What an installed tree holds, and how a host finds it: by tasklog.pc or by find_package(tasklog). Nothing
# in it names its own place, so a tree may be moved or packed as it is.
include(CMakePackageConfigHelpers)

set(packageDir ${CMAKE_INSTALL_LIBDIR}/cmake/tasklog)
# The simulator stays out of the library folder: a site's own libquor_32.so.0 goes there, beside
# libtasklog.so.0, and is found first, and no other program gets the simulator by accident.
set(simulatorDir ${CMAKE_INSTALL_LIBDIR}/tasklog/simulator)

# As DT_RUNPATH, so that LD_LIBRARY_PATH comes before it. The linker of a host follows it too and so finds
# what libtasklog needs without being told.
target_link_options(tasklog PRIVATE -Wl,--enable-new-dtags)
target_link_options(tasklog_cli PRIVATE -Wl,--enable-new-dtags)
set_target_properties(tasklog PROPERTIES INSTALL_RPATH "$ORIGIN:$ORIGIN/tasklog/simulator")
file(RELATIVE_PATH libFromBin /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
set_target_properties(tasklog_cli PROPERTIES INSTALL_RPATH "$ORIGIN/${libFromBin}")

install(TARGETS tasklog tasklog_cli
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS quor_32 LIBRARY DESTINATION ${simulatorDir} NAMELINK_SKIP)
install(FILES sim/targets.toml DESTINATION ${simulatorDir})
install(DIRECTORY include/tasklog DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

file(RELATIVE_PATH prefixFromPkgConfig /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/tasklog.pc.in tasklog.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/tasklog.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

configure_package_config_file(cmake/tasklog-config.cmake.in tasklog-config.cmake
  INSTALL_DESTINATION ${packageDir} PATH_VARS CMAKE_INSTALL_LIBDIR CMAKE_INSTALL_INCLUDEDIR
  NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(tasklog-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/tasklog-config.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/tasklog-config-version.cmake DESTINATION ${packageDir})

install(FILES README.md CHANGELOG.md LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs examples DESTINATION ${CMAKE_INSTALL_DOCDIR})
