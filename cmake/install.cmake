# The library for others, as a CMake package and for pkg-config, and the Debian packages: `cpack -G
# DEB` makes fabscope (the command) and libfabscope-dev (the library).
include(CMakePackageConfigHelpers)

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/fabscope)
install(EXPORT fabscope_library NAMESPACE fabscope:: FILE fabscopeTargets.cmake
  DESTINATION ${package_folder} COMPONENT library)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/fabscopeConfig.cmake.in fabscopeConfig.cmake
  INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(fabscopeConfigVersion.cmake COMPATIBILITY SameMinorVersion)
# From the folder of the .pc file to the prefix, wherever that is in the end.
file(RELATIVE_PATH to_prefix /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(${CMAKE_CURRENT_LIST_DIR}/fabscope.pc.in fabscope.pc @ONLY)
install(
  FILES
    ${PROJECT_BINARY_DIR}/fabscopeConfig.cmake
    ${PROJECT_BINARY_DIR}/fabscopeConfigVersion.cmake
  DESTINATION ${package_folder} COMPONENT library)
install(FILES ${PROJECT_BINARY_DIR}/fabscope.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT library)

install(FILES ${PROJECT_SOURCE_DIR}/LICENSE RENAME copyright COMPONENT command
  DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/fabscope)
install(FILES ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/CHANGELOG.md COMPONENT command
  DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/fabscope)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs ${PROJECT_SOURCE_DIR}/examples COMPONENT command
  DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/fabscope)
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE RENAME copyright COMPONENT library
  DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/libfabscope-dev)

# The nightly check. Its units name the prefix, which is known at last when files are installed.
set(packaging ${PROJECT_SOURCE_DIR}/packaging)
install(PROGRAMS ${packaging}/nightly COMPONENT command DESTINATION libexec/fabscope)
install(FILES ${packaging}/fabscope-nightly.timer COMPONENT command
  DESTINATION lib/systemd/system)
install(CODE "
  configure_file(\"${packaging}/fabscope-nightly.service.in\"
    \"${PROJECT_BINARY_DIR}/fabscope-nightly.service\" @ONLY)
  file(INSTALL \"${PROJECT_BINARY_DIR}/fabscope-nightly.service\"
    DESTINATION \"\${CMAKE_INSTALL_PREFIX}/lib/systemd/system\")"
  COMPONENT command)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_CONTACT "The fabscope developers <fabscope@localhost>")
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL command library)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMMAND_PACKAGE_NAME fabscope)
set(CPACK_DEBIAN_COMMAND_PACKAGE_SECTION net)
set(CPACK_DEBIAN_COMMAND_PACKAGE_SHLIBDEPS ON)
set(CPACK_COMPONENT_COMMAND_DESCRIPTION "Finds the wrong cables of an InfiniBand fat tree
 From the dump that ibnetdiscover prints it finds the tree, and names the switches and ports at fault.")
set(CPACK_DEBIAN_COMMAND_PACKAGE_RECOMMENDS infiniband-diags)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME libfabscope-dev)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_DEPENDS "zlib1g-dev, libsimdjson-dev, libfmt-dev")
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "Finds the wrong cables of an InfiniBand fat tree: library
 Loads fabrics, recognises their fat tree and checks its cabling.")
include(CPack)
