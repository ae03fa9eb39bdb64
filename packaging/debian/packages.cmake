# What `cpack` makes of an installed tree: three Debian packages. The versioned library with the udev rules that its hosts
# need, what programs are compiled against, and the command.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_VENDOR "ORB Vectorix Foundation")
# A placeholder, which no mail reaches: whoever publishes packages puts an address here and into changelog and copyright.
set(CPACK_PACKAGE_CONTACT "ORB Vectorix Foundation <maintainers@vectorix.invalid>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each description's first line is its own
set(CPACK_OUTPUT_FILE_PREFIX ${CMAKE_CURRENT_BINARY_DIR}/deb)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL library development tool)
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

# The notices that every package carries.
foreach(component library development tool)
  string(TOUPPER ${component} name)
  set(notices ${CMAKE_INSTALL_DATAROOTDIR}/doc/${CPACK_DEBIAN_${name}_PACKAGE_NAME})
  install(FILES packaging/debian/copyright DESTINATION ${notices} COMPONENT ${component} EXCLUDE_FROM_ALL)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/changelog.Debian.gz DESTINATION ${notices} COMPONENT ${component} EXCLUDE_FROM_ALL)
endforeach()
set(for_authors ${CMAKE_INSTALL_DATAROOTDIR}/doc/${CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME})
install(FILES docs/hosts.md docs/record.md DESTINATION ${for_authors} COMPONENT development)
install(FILES examples/host.c DESTINATION ${for_authors}/examples COMPONENT development)
install(PROGRAMS examples/host.py DESTINATION ${for_authors}/examples COMPONENT development)
configure_file(packaging/debian/changelog changelog.Debian COPYONLY)
execute_process(COMMAND gzip -9nkf ${CMAKE_CURRENT_BINARY_DIR}/changelog.Debian COMMAND_ERROR_IS_FATAL ANY)

include(CPack)
