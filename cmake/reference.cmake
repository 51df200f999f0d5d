# What Doxygen is told about the library's public headers, those that are installed. It needs not be
# there to build: `doxygen build/release/Doxyfile` makes build/release/api.
file(GLOB public_headers CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/include/fabscope/*.h)
set(reference_input "\"${PROJECT_SOURCE_DIR}/docs/library.md\"")
foreach(header IN LISTS public_headers)
  string(APPEND reference_input " \\\n                         \"${header}\"")
endforeach()
configure_file(${CMAKE_CURRENT_LIST_DIR}/Doxyfile.in ${PROJECT_BINARY_DIR}/Doxyfile @ONLY)
