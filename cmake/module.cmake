include(CheckCXXCompilerFlag)

# Flags that every target of the project is built with.
add_library(fabscope_flags INTERFACE)
target_compile_options(fabscope_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
# g++ 12 reports overlaps of 2^63 bytes in "text" + std::to_string(n) (gcc bug 105329).
target_compile_options(fabscope_flags INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
# It runs as root, on texts that any host of the fabric can choose.
if(FABSCOPE_HARDENING)
  target_compile_options(fabscope_flags INTERFACE
    -fstack-protector-strong -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2 -D_GLIBCXX_ASSERTIONS)
  check_cxx_compiler_flag(-fstack-clash-protection HAVE_STACK_CLASH_PROTECTION)
  if(HAVE_STACK_CLASH_PROTECTION)
    target_compile_options(fabscope_flags INTERFACE -fstack-clash-protection)
  endif()
  check_cxx_compiler_flag(-fcf-protection HAVE_CF_PROTECTION)  # x86 has it
  if(HAVE_CF_PROTECTION)
    target_compile_options(fabscope_flags INTERFACE -fcf-protection)
  endif()
  target_link_options(fabscope_flags INTERFACE
    $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:-pie> -Wl,-z,relro,-z,now,-z,noexecstack)
endif()
if(FABSCOPE_SANITIZE)
  target_compile_options(fabscope_flags INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(fabscope_flags INTERFACE -fsanitize=address,undefined)
endif()
if(FABSCOPE_COVERAGE)
  # Several threads count.
  target_compile_options(fabscope_flags INTERFACE --coverage -fprofile-update=atomic -O0)
  target_link_options(fabscope_flags INTERFACE --coverage)
endif()
if(FABSCOPE_FUZZ)
  target_compile_options(fabscope_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()

# fabscope_module(NAME [BUSY] SOURCES ... LINKS ...): one library target for the folder src/NAME, with the
# alias fabscope::NAME. LINKS are the modules and libraries that it may include, and no others. In a BUSY
# one the compiler does not inline less because the sources are compiled together.
function(fabscope_module name)
  cmake_parse_arguments(MODULE "BUSY" "" "SOURCES;LINKS;PRIVATE_LINKS" ${ARGN})
  add_library(fabscope_${name} STATIC ${MODULE_SOURCES})
  add_library(fabscope::${name} ALIAS fabscope_${name})
  target_include_directories(fabscope_${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(fabscope_${name}
    PUBLIC ${MODULE_LINKS} PRIVATE fabscope_flags ${MODULE_PRIVATE_LINKS})
  set_target_properties(fabscope_${name} PROPERTIES
    UNITY_BUILD ${FABSCOPE_BATCHES} UNITY_BUILD_BATCH_SIZE 30)
  if(MODULE_BUSY)
    target_compile_options(fabscope_${name} PRIVATE
      $<$<CXX_COMPILER_ID:GNU>:--param=large-unit-insns=1000000>)
  endif()
endfunction()
