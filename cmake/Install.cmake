# What an installed tree holds, and how a host finds it: by tasklog.pc or by find_package(tasklog). Nothing
# in it names its own place, so a tree may be moved or packed as it is.
include(CMakePackageConfigHelpers)

set(packageDir ${CMAKE_INSTALL_LIBDIR}/cmake/tasklog)
# The simulator stays out of the library folder: a site's own libquor_32.so.0 goes there, beside
# libtasklog.so.0, and is found first, and no other program gets the simulator by accident.
set(simulatorDir ${CMAKE_INSTALL_LIBDIR}/tasklog/simulator)
set(libraryPath "$ORIGIN")
file(RELATIVE_PATH libFromBin /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})
set(commandPath "$ORIGIN/${libFromBin}")
if(TASKLOG_DEB)
  # Where a site's library may lie on a Debian system, it is found before the simulator, too.
  list(APPEND libraryPath /usr/local/lib/${CMAKE_LIBRARY_ARCHITECTURE} /usr/local/lib /usr/lib)
  set(commandPath "")
endif()
list(APPEND libraryPath "$ORIGIN/tasklog/simulator")

# As DT_RUNPATH, so that LD_LIBRARY_PATH comes before it. The linker of a host follows it too and so finds
# what libtasklog needs without being told.
target_link_options(tasklog PRIVATE -Wl,--enable-new-dtags)
target_link_options(tasklog_cli PRIVATE -Wl,--enable-new-dtags)
set_target_properties(tasklog PROPERTIES INSTALL_RPATH "${libraryPath}")
set_target_properties(tasklog_cli PROPERTIES INSTALL_RPATH "${commandPath}")

# Components are packages (cmake/Package.cmake); what names none belongs to the command.
install(TARGETS tasklog LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  COMPONENT libtasklog0 NAMELINK_COMPONENT libtasklog-dev)
install(TARGETS tasklog_cli RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(TARGETS quor_32 LIBRARY DESTINATION ${simulatorDir} NAMELINK_SKIP)
install(FILES sim/targets.toml DESTINATION ${simulatorDir})
install(DIRECTORY include/tasklog DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT libtasklog-dev)

file(RELATIVE_PATH prefixFromPkgConfig /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/tasklog.pc.in tasklog.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/tasklog.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
  COMPONENT libtasklog-dev)

configure_package_config_file(cmake/tasklog-config.cmake.in tasklog-config.cmake
  INSTALL_DESTINATION ${packageDir} PATH_VARS CMAKE_INSTALL_LIBDIR CMAKE_INSTALL_INCLUDEDIR
  NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(tasklog-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/tasklog-config.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/tasklog-config-version.cmake DESTINATION ${packageDir}
  COMPONENT libtasklog-dev)

if(TARGET manpages)
  install(DIRECTORY ${CMAKE_BINARY_DIR}/man/ DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endif()
set(zshDir ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
if(TASKLOG_DEB)  # where Debian's shells look for what packages bring
  set(zshDir ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions)
endif()
install(FILES cli/completions/tasklog.bash RENAME tasklog
  DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES cli/completions/_tasklog DESTINATION ${zshDir})
install(FILES cli/completions/tasklog.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)

if(NOT TASKLOG_DEB)  # a Debian package states its licence and changes in its own way
  install(FILES CHANGELOG.md LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
endif()
install(FILES README.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(DIRECTORY docs examples DESTINATION ${CMAKE_INSTALL_DOCDIR})

# What of others is compiled in, under their terms.
if(TASKLOG_DEB OR TASKLOG_PORTABLE)
  set(compiledIn libcli11-dev libfmt-dev libprotozero-dev libtomlplusplus-dev nlohmann-json3-dev)
  if(TASKLOG_PORTABLE)
    list(APPEND compiledIn libncurses-dev libsqlite3-dev libstdc++6 libzstd-dev zlib1g-dev)
  endif()
  foreach(package IN LISTS compiledIn)
    install(FILES /usr/share/doc/${package}/copyright RENAME ${package}.txt
      DESTINATION ${CMAKE_INSTALL_DOCDIR}/third-party)
  endforeach()
endif()
