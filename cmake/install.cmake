# The library for others, as a CMake package and for pkg-config, and what the command brings.
include(CMakePackageConfigHelpers)

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/fabscope)
foreach(kind IN ITEMS shared static)
  install(EXPORT fabscope_${kind} NAMESPACE fabscope:: FILE fabscope_${kind}.cmake
    DESTINATION ${package_folder} COMPONENT library)
endforeach()
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

install(FILES ${PROJECT_SOURCE_DIR}/README.md COMPONENT command
  DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/fabscope)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs ${PROJECT_SOURCE_DIR}/examples COMPONENT command
  DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/fabscope)

# What is installed.
add_custom_target(product DEPENDS fabscope fabscope_shared fabscope_static manual_files)

# The nightly check. Its units name the prefix, which is known at last when files are installed.
set(packaging ${PROJECT_SOURCE_DIR}/packaging)
install(PROGRAMS ${packaging}/nightly ${packaging}/publish-numbers COMPONENT command
  DESTINATION libexec/fabscope)
install(FILES ${packaging}/fabscope-nightly.timer COMPONENT command
  DESTINATION lib/systemd/system)
install(CODE "
  foreach(unit IN ITEMS dump nightly numbers)
    set(file \"${PROJECT_BINARY_DIR}/fabscope-\${unit}.service\")
    configure_file(\"${packaging}/fabscope-\${unit}.service.in\" \"\${file}\" @ONLY)
    file(INSTALL \"\${file}\" DESTINATION \"\${CMAKE_INSTALL_PREFIX}/lib/systemd/system\")
  endforeach()"
  COMPONENT command)

include(${CMAKE_CURRENT_LIST_DIR}/debian.cmake)
