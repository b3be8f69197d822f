# Debian packages, one for each component of cmake/Install.cmake. ./dev package makes and checks them.
set(TASKLOG_MAINTAINER "The tasklog authors <tasklog@users.noreply.example>" CACHE STRING
    "Who makes the packages: NAME <ADDRESS>")
set(TASKLOG_DEB_REVISION 1 CACHE STRING "The revision of the packages of one version")
set(debVersion ${PROJECT_VERSION}-${TASKLOG_DEB_REVISION})
set(debDir ${PROJECT_BINARY_DIR}/debian)

# Who loads libtasklog.so.0 needs the package, and the linker's cache.
file(CONFIGURE OUTPUT ${debDir}/shlibs CONTENT "libtasklog 0 libtasklog0 (>= ${PROJECT_VERSION})\n")
file(CONFIGURE OUTPUT ${debDir}/triggers CONTENT "activate-noawait ldconfig\n")

# SOURCE_DATE_EPOCH dates the packages, so that two of one source are alike.
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
configure_file(packaging/changelog.in ${debDir}/changelog @ONLY)
execute_process(COMMAND gzip -9nc ${debDir}/changelog OUTPUT_FILE ${debDir}/changelog.Debian.gz
  COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND gzip -9nc ${PROJECT_SOURCE_DIR}/CHANGELOG.md OUTPUT_FILE ${debDir}/changelog.gz
  COMMAND_ERROR_IS_FATAL ANY)
set(packages libtasklog0 libtasklog-dev tasklog)
if(TASKLOG_PYTHON)
  list(APPEND packages python3-tasklog)
  math(EXPR nextPython "${TASKLOG_PYTHON_MINOR} + 1")  # the module is of one version
endif()
foreach(package IN LISTS packages)
  install(FILES packaging/copyright ${debDir}/changelog.Debian.gz ${debDir}/changelog.gz
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${package})
endforeach()
install(FILES packaging/lintian-overrides RENAME libtasklog0
  DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides COMPONENT libtasklog0)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tasklog)
set(CPACK_PACKAGE_VENDOR "The tasklog authors")
set(CPACK_PACKAGE_CONTACT "${TASKLOG_MAINTAINER}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL ${packages})
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_DEBIAN_PACKAGE_RELEASE ${TASKLOG_DEB_REVISION})
set(CPACK_DEBIAN_PACKAGE_SOURCE tasklog)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})

set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # it would stand above that of each package
set(about "tasklog reads what the tasks of a real-time controller did out of
the controller, keeps it in files, and answers questions about it.
")
set(CPACK_DEBIAN_LIBTASKLOG0_PACKAGE_NAME libtasklog0)
set(CPACK_DEBIAN_LIBTASKLOG0_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_LIBTASKLOG0_DESCRIPTION "task logs of real-time controllers, library
${about}
This package has the library. It reaches controllers through a site's own
libquor_32.so.0; without one, through the simulator in the package tasklog.")
set(CPACK_DEBIAN_LIBTASKLOG0_PACKAGE_RECOMMENDS "tasklog (= ${debVersion})")
set(CPACK_DEBIAN_LIBTASKLOG0_PACKAGE_CONTROL_EXTRA ${debDir}/shlibs ${debDir}/triggers)

# A host is linked against libtasklog.so and what that needs: libquor_32.so.0, which the simulator is.
set(CPACK_DEBIAN_LIBTASKLOG-DEV_PACKAGE_NAME libtasklog-dev)
set(CPACK_DEBIAN_LIBTASKLOG-DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_LIBTASKLOG-DEV_PACKAGE_DEPENDS "libtasklog0 (= ${debVersion}), tasklog (= ${debVersion})")
set(CPACK_COMPONENT_LIBTASKLOG-DEV_DESCRIPTION "task logs of real-time controllers, headers
${about}
This package has the headers for C and C++, tasklog.pc and a CMake package.")

set(CPACK_DEBIAN_TASKLOG_PACKAGE_NAME tasklog)
set(CPACK_DEBIAN_TASKLOG_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TASKLOG_PACKAGE_DEPENDS "libtasklog0 (= ${debVersion})")
set(CPACK_DEBIAN_TASKLOG_PACKAGE_SUGGESTS "librsvg2-2")
set(CPACK_COMPONENT_TASKLOG_DESCRIPTION "task logs of real-time controllers, command and simulator
${about}
This package has the command tasklog, its manual, and a simulated
controller to try it with.")

set(CPACK_DEBIAN_PYTHON3-TASKLOG_PACKAGE_NAME python3-tasklog)
set(CPACK_DEBIAN_PYTHON3-TASKLOG_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON3-TASKLOG_PACKAGE_DEPENDS
    "python3 (>= 3.${TASKLOG_PYTHON_MINOR}), python3 (<< 3.${nextPython}), python3-numpy, tasklog (= ${debVersion})")
set(CPACK_DEBIAN_PYTHON3-TASKLOG_PACKAGE_SUGGESTS python3-pandas)
set(CPACK_COMPONENT_PYTHON3-TASKLOG_DESCRIPTION "task logs of real-time controllers, Python package
${about}
This package gives logs, jobs and statistics to Python as numpy columns.")
include(CPack)
