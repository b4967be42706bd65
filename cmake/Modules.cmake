# SPDX-License-Identifier: ISC
# Shared build rules of the modules.

# Flags of every target of ours. Floating point is left as the standard defines it: no contraction, no fast-math, so that
# a render is the same on every machine.
add_library(qlx_options INTERFACE)
target_include_directories(qlx_options INTERFACE ${CMAKE_SOURCE_DIR})
target_compile_options(qlx_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion
  $<$<BOOL:${QLX_WERROR}>:-Werror>
  -fvisibility=hidden -fvisibility-inlines-hidden -ffunction-sections -fdata-sections -ffp-contract=off)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # Unique symbols would pin the shared object in memory after dlclose.
  target_compile_options(qlx_options INTERFACE -fno-gnu-unique)
endif()
if(QLX_SANITIZE)
  target_compile_options(qlx_options INTERFACE -fsanitize=${QLX_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(qlx_options INTERFACE -fsanitize=${QLX_SANITIZE})
  # GCC 12 takes a vector's growth for an overflow once its checks are compiled in.
  target_compile_options(qlx_options INTERFACE "$<$<CXX_COMPILER_ID:GNU>:-Wno-stringop-overflow;-Wno-array-bounds>")
endif()

# ccache does not keep what is compiled with a precompiled header.
if(CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_DISABLE_PRECOMPILE_HEADERS ON)
endif()

# qlx_module(name SOURCES ... [LINKS ...]): the static library qlx_<name> of one module.
function(qlx_module name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
  add_library(qlx_${name} STATIC ${ARG_SOURCES})
  target_link_libraries(qlx_${name} PUBLIC qlx_options ${ARG_LINKS})
endfunction()

# qlx_test(name SOURCES ... [LINKS ...] [SLOW pattern ...] [EVERY_PROCESSOR]): one GoogleTest program; each of its tests is a
# ctest entry with the label quick, those whose names match a pattern of GoogleTest's with the label slow.
# EVERY_PROCESSOR: once more with the kernels that run on any x86-64, and with those of four lanes; these are slow.
function(qlx_test name)
  cmake_parse_arguments(ARG "EVERY_PROCESSOR" "" "SOURCES;LINKS;SLOW" ${ARGN})
  add_executable(test_${name} ${ARG_SOURCES})
  target_link_libraries(test_${name} PRIVATE qlx_options ${ARG_LINKS} qlx_test_support GTest::gtest GTest::gmock GTest::gtest_main)
  target_precompile_headers(test_${name} REUSE_FROM qlx_test_headers)
  if(CMAKE_CROSSCOMPILING)
    # One entry for each program: starting the emulator takes longer than most tests.
    add_test(NAME ${name} COMMAND test_${name})
    set_tests_properties(${name} PROPERTIES TIMEOUT 600 LABELS quick)
    if(ARG_EVERY_PROCESSOR)
      add_test(NAME baseline.${name} COMMAND test_${name})
      set_tests_properties(baseline.${name} PROPERTIES TIMEOUT 600 LABELS slow ENVIRONMENT QLX_ISA=baseline)
    endif()
    return()
  endif()
  include(GoogleTest)
  list(JOIN ARG_SLOW : slow)
  if(slow)
    gtest_discover_tests(test_${name} TEST_PREFIX "${name}." TEST_FILTER "${slow}" TEST_LIST test_${name}_SLOW_TESTS
      DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 600 LABELS slow)
  endif()
  gtest_discover_tests(test_${name} TEST_PREFIX "${name}." TEST_FILTER "-${slow}"
    DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 600 LABELS quick)
  if(ARG_EVERY_PROCESSOR)
    foreach(set baseline avx2)
      gtest_discover_tests(test_${name} TEST_PREFIX "${set}.${name}." TEST_LIST test_${name}_${set}_TESTS
        DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 600 LABELS slow ENVIRONMENT QLX_ISA=${set})
    endforeach()
  endif()
endfunction()

# qlx_find_headers(package header folder): the imported target package::package of a library of headers alone. A cross build
# takes the build machine's, through a folder of links to them, because the build machine's other headers must stay out.
function(qlx_find_headers package header folder)
  if(NOT CMAKE_CROSSCOMPILING)
    find_package(${package} REQUIRED GLOBAL)
    return()
  endif()
  find_path(${package}_HEADERS ${header} REQUIRED NO_CMAKE_FIND_ROOT_PATH PATHS /usr/include)
  set(links ${CMAKE_BINARY_DIR}/headers/${package})
  file(MAKE_DIRECTORY ${links})
  file(CREATE_LINK ${${package}_HEADERS}/${folder} ${links}/${folder} SYMBOLIC)
  add_library(${package}::${package} INTERFACE IMPORTED GLOBAL)
  target_include_directories(${package}::${package} SYSTEM INTERFACE ${links})
endfunction()
