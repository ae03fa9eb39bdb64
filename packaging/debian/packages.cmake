# What `cpack` makes of an installed tree: Debian packages. The versioned library with the udev rules that its hosts need, what
# programs are compiled against, the command, and the print queues.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_VENDOR "ORB Vectorix Foundation")
# A placeholder, which no mail reaches: whoever publishes packages puts an address here and into changelog and copyright.
set(CPACK_PACKAGE_CONTACT "ORB Vectorix Foundation <maintainers@vectorix.invalid>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each description's first line is its own
set(CPACK_OUTPUT_FILE_PREFIX ${CMAKE_CURRENT_BINARY_DIR}/deb)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL library development tool)
if(ORB_BUILD_PRINTER_APP)
  list(APPEND CPACK_COMPONENTS_ALL printer-app)
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_COMPONENT_TOOL_DEPENDS library)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS library)

set(library_package liborbvectorixfoundation${PROJECT_VERSION_MAJOR})

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${library_package})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_SOURCE_DIR}/packaging/debian/triggers)
set(CPACK_DEBIAN_LIBRARY_DESCRIPTION "plotter output plug-in, shared library
Programs load this library to drive pen plotters and cutters on serial
ports and on USB: it lists them, asks for their hard-clip limits, and
sends plot files in HP-GL and related languages.
.
The package also holds the udev rules that let people at the machine,
and the group lp, use the USB plotters that it knows.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME liborbvectorixfoundation-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "plotter output plug-in, development files
What a program is compiled against that drives pen plotters and cutters:
the C header, package descriptions for pkg-config and CMake, and example
hosts in C and in Python.")

set(CPACK_DEBIAN_TOOL_PACKAGE_NAME vectorix)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_TOOL_PACKAGE_SHLIBDEPS ON)
# The programs that read SVG and PDF.
set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS "librsvg2-bin, poppler-utils")
set(CPACK_DEBIAN_TOOL_DESCRIPTION "plots drawings on pen plotters and cutters
A command that plots SVG, PDF and plot files in HP-GL or DM/PL on serial
ports and on USB. It places, orders and hatches drawings, mends plot
files, previews both as PNG, PDF or SVG, lists plotters and asks for
their limits. It has a plotter in software for those without one.")

set(CPACK_COMPONENT_PRINTER-APP_DEPENDS tool)
set(CPACK_DEBIAN_PRINTER-APP_PACKAGE_NAME vectorix-printer-app)
set(CPACK_DEBIAN_PRINTER-APP_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PRINTER-APP_PACKAGE_SHLIBDEPS ON)
# What makes its user.
set(CPACK_DEBIAN_PRINTER-APP_PACKAGE_DEPENDS "systemd | systemd-standalone-sysusers | systemd-sysusers")
# What tells others of shared queues.
set(CPACK_DEBIAN_PRINTER-APP_PACKAGE_RECOMMENDS avahi-daemon)
set(for_queues ${CMAKE_CURRENT_SOURCE_DIR}/packaging/printer_app)
set(CPACK_DEBIAN_PRINTER-APP_PACKAGE_CONTROL_EXTRA ${for_queues}/postinst ${for_queues}/prerm ${for_queues}/postrm)
set(CPACK_DEBIAN_PRINTER-APP_DESCRIPTION "print queues of pen plotters and cutters
A service that makes a network print queue (IPP) of every profile of the
vectorix command, with a page that shows what is plotted, asks for paper
and takes files. Programs on this computer can print; others can when it
is told to share.
.
The package also has CUPS recognise plot files.")

# The notices that every package carries.
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} name)
  set(notices ${CMAKE_INSTALL_DATAROOTDIR}/doc/${CPACK_DEBIAN_${name}_PACKAGE_NAME})
  install(FILES packaging/debian/copyright DESTINATION ${notices} COMPONENT ${component} EXCLUDE_FROM_ALL)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/changelog.Debian.gz DESTINATION ${notices} COMPONENT ${component} EXCLUDE_FROM_ALL)
endforeach()
set(for_authors ${CMAKE_INSTALL_DATAROOTDIR}/doc/${CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME})
install(FILES docs/hosts.md docs/record.md DESTINATION ${for_authors} COMPONENT development)
install(FILES examples/host.c DESTINATION ${for_authors}/examples COMPONENT development)
install(PROGRAMS examples/host.py DESTINATION ${for_authors}/examples COMPONENT development)
if(ORB_BUILD_PRINTER_APP)
  install(FILES ${for_queues}/vectorix-printer-app.service DESTINATION lib/systemd/system COMPONENT printer-app)
  install(FILES ${for_queues}/sysusers.conf DESTINATION lib/sysusers.d RENAME vectorix-printer-app.conf
    COMPONENT printer-app)
  install(FILES packaging/cups/vectorix.types packaging/cups/vectorix.convs
    DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/cups/mime COMPONENT printer-app)
  set(for_owners ${CMAKE_INSTALL_DATAROOTDIR}/doc/${CPACK_DEBIAN_PRINTER-APP_PACKAGE_NAME})
  install(FILES docs/network.md DESTINATION ${for_owners} COMPONENT printer-app OPTIONAL)
  install(FILES ${for_queues}/share.conf DESTINATION ${for_owners}/examples COMPONENT printer-app)
endif()
configure_file(packaging/debian/changelog changelog.Debian COPYONLY)
execute_process(COMMAND gzip -9nkf ${CMAKE_CURRENT_BINARY_DIR}/changelog.Debian COMMAND_ERROR_IS_FATAL ANY)

include(CPack)
