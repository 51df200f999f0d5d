# The Debian packages: `cpack -G DEB` makes fabscope (the command), the shared library, and libfabscope-dev
# to build programs with.
# Who hands them on to others, puts a name and an address here: example.org belongs to nobody.
set(FABSCOPE_MAINTAINER "The fabscope developers <fabscope@example.org>" CACHE STRING
  "Who looks after the Debian packages, with an address")

set(debian ${PROJECT_SOURCE_DIR}/packaging/debian)
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_CONTACT "${FABSCOPE_MAINTAINER}")
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(soname_package libfabscope${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
set(CPACK_COMPONENTS_ALL command runtime library)
set(debian_packages fabscope ${soname_package} libfabscope-dev)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# Each package has its own, which the one of the project would stand before.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")

set(CPACK_DEBIAN_COMMAND_PACKAGE_NAME fabscope)
set(CPACK_DEBIAN_COMMAND_PACKAGE_SECTION net)
set(CPACK_DEBIAN_COMMAND_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_COMMAND_PACKAGE_CONTROL_EXTRA
  ${debian}/postinst ${debian}/prerm ${debian}/postrm)
set(CPACK_COMPONENT_COMMAND_DESCRIPTION "Finds the wrong cables of an InfiniBand fat tree
From the dump that ibnetdiscover prints it finds the tree, names the
switches and ports at fault, and says which cables to move.")
set(CPACK_DEBIAN_COMMAND_PACKAGE_RECOMMENDS infiniband-diags)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${soname_package})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/debian/shlibs
  ${debian}/triggers)
file(WRITE ${PROJECT_BINARY_DIR}/debian/shlibs
  "libfabscope ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR} ${soname_package}\n")
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "Finds the wrong cables of an InfiniBand fat tree: shared library
Needed to run programs that were built with libfabscope-dev.")
set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME libfabscope-dev)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_DEPENDS
  "${soname_package} (= ${PROJECT_VERSION}-1), zlib1g-dev, libsimdjson-dev, libfmt-dev, nettle-dev")
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "Finds the wrong cables of an InfiniBand fat tree: development files
Loads fabrics, recognises their fat tree, checks its cabling, finds repairs.")

# What every package has to hold.
find_program(GZIP gzip REQUIRED)
foreach(component package IN ZIP_LISTS CPACK_COMPONENTS_ALL debian_packages)
  set(changelog ${PROJECT_BINARY_DIR}/debian/${package}/changelog.Debian)
  configure_file(${debian}/changelog.in ${changelog} @ONLY)
  execute_process(COMMAND ${GZIP} -9nc ${changelog} OUTPUT_FILE ${changelog}.gz
    COMMAND_ERROR_IS_FATAL ANY)
  install(FILES ${changelog}.gz ${debian}/copyright COMPONENT ${component}
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package})
  install(FILES ${debian}/${package}.overrides RENAME ${package} COMPONENT ${component}
    DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides)
endforeach()
# Under the name that Debian wants; it changes with the sources, so it is packed at last.
install(CODE "
  set(folder \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_DATADIR}/doc/fabscope\")
  execute_process(COMMAND ${GZIP} -9nc \"${PROJECT_SOURCE_DIR}/CHANGELOG.md\"
    OUTPUT_FILE \"\${folder}/changelog.gz\" COMMAND_ERROR_IS_FATAL ANY)"
  COMPONENT command)
include(CPack)
