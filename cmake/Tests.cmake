# The functions that tests/CMakeLists.txt is written with. A list without sources makes no target.

include(GoogleTest)

set(LOG4VRK_TEST_PROGRAM_DIR "${PROJECT_BINARY_DIR}/tests/programs")
add_custom_target(log4vrk_test_programs)

# Every test includes tests/support/Tests.h, so it is compiled once. Not with clang, whose clang-tidy reads the
# includes.
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
  set(LOG4VRK_PRECOMPILE_TESTS ON)
endif()

# log4vrk_add_test(name sources...): one program; every test in it is a ctest test in a process of its own,
# with the program's name as its label.
function(log4vrk_add_test name)
  if(NOT ARGN)
    return()
  endif()
  add_executable(${name} ${ARGN})
  target_link_libraries(${name} PRIVATE log4vrk_test_support)
  target_compile_definitions(${name} PRIVATE
    LOG4VRK_TEST_PROGRAM_DIR="${LOG4VRK_TEST_PROGRAM_DIR}"
    LOG4VRK_SOURCE_DIR="${PROJECT_SOURCE_DIR}"
    LOG4VRK_BINARY_DIR="${PROJECT_BINARY_DIR}")
  log4vrk_enable_warnings(${name})
  if(LOG4VRK_PRECOMPILE_TESTS)
    target_precompile_headers(${name} REUSE_FROM log4vrk_test_support)
  endif()
  add_dependencies(${name} log4vrk_test_programs)
  # At ctest's time and not after the build, so that compiling does not run anything.
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60 PROPERTIES LABELS ${name})
endfunction()

# log4vrk_add_test_program(name sources...): a program that tests start; it is at LOG4VRK_TEST_PROGRAM_DIR "/name".
function(log4vrk_add_test_program name)
  if(NOT ARGN)
    return()
  endif()
  add_executable(${name} ${ARGN})
  log4vrk_finish_test_program(${name})
endfunction()

# log4vrk_add_test_module(Name sources...): a library that tests load; it is at LOG4VRK_TEST_PROGRAM_DIR "/libName.so".
function(log4vrk_add_test_module name)
  if(NOT ARGN)
    return()
  endif()
  add_library(${name} MODULE ${ARGN})
  log4vrk_finish_test_program(${name})
endfunction()

function(log4vrk_finish_test_program name)
  target_link_libraries(${name} PRIVATE log4vrk::log4vrk)
  log4vrk_enable_warnings(${name})
  set_target_properties(${name} PROPERTIES
    RUNTIME_OUTPUT_DIRECTORY "${LOG4VRK_TEST_PROGRAM_DIR}" LIBRARY_OUTPUT_DIRECTORY "${LOG4VRK_TEST_PROGRAM_DIR}")
  add_dependencies(log4vrk_test_programs ${name})
endfunction()

# Every public header compiles alone: one generated source for each. The glob is meant: the check is about all of them.
function(log4vrk_check_headers)
  file(GLOB_RECURSE headers RELATIVE "${PROJECT_SOURCE_DIR}" CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/log4vrk/*.h")
  set(sources "")
  foreach(header IN LISTS headers)
    set(source "${CMAKE_CURRENT_BINARY_DIR}/headers/${header}.cpp")
    file(CONFIGURE OUTPUT "${source}" CONTENT "#include \"${header}\"\n")
    list(APPEND sources "${source}")
  endforeach()
  add_library(log4vrk_every_header_compiles_alone OBJECT ${sources})
  target_link_libraries(log4vrk_every_header_compiles_alone PRIVATE log4vrk::log4vrk)
  log4vrk_enable_warnings(log4vrk_every_header_compiles_alone)
endfunction()

# A Turkish locale for the tests: comma as the decimal point, dotted and dotless i. The test presets point LOCPATH here.
function(log4vrk_make_test_locale)
  set(locale "${PROJECT_BINARY_DIR}/locale/tr_TR.UTF-8")
  if(NOT EXISTS "${locale}/LC_CTYPE")
    file(MAKE_DIRECTORY "${PROJECT_BINARY_DIR}/locale")
    execute_process(COMMAND localedef -i tr_TR -f UTF-8 "${locale}" OUTPUT_QUIET ERROR_QUIET)
  endif()
  if(NOT EXISTS "${locale}/LC_CTYPE")
    message(WARNING "The tests run in the C locale: localedef could not make tr_TR.UTF-8 (Debian package locales).")
  endif()
endfunction()
