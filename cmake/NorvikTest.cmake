# norvik_add_tests(NAME [THREADS] SOURCES file...): one GoogleTest program; every test in it is a test of ctest's.
# THREADS marks the tests that start threads: those also run under the thread sanitizer, where nothing else is built.
include(GoogleTest)

function(norvik_add_tests name)
  cmake_parse_arguments(ARG "THREADS" "" "SOURCES;LIBRARIES" ${ARGN})
  if(NORVIK_SANITIZE STREQUAL "thread" AND NOT ARG_THREADS)
    return()
  endif()
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE NorvikCore::NorvikCore GTest::gmock GTest::gtest_main ${ARG_LIBRARIES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
  norvik_private_options(${name})
  # The tests are called once each, and what they test keeps its own level: -O1 compiles them in two thirds of the time of
  # -O2, and -O0 in half the time of -O1 where a sanitizer puts its checks in.
  if(NORVIK_SANITIZE)
    target_compile_options(${name} PRIVATE -O0)
  else()
    target_compile_options(${name} PRIVATE $<$<CONFIG:Release>:-O1>)
  endif()
  set(labels "")
  if(ARG_THREADS)
    set(labels LABELS threads)
  endif()
  # Whoever runs the tests may be of any country: what follows the user's locale is tested as a British user sees it.
  # (Two properties of one word each, since gtest_discover_tests() does not pass lists on.)
  set(environment ENVIRONMENT LC_ALL=en_GB.UTF-8)
  if(NORVIK_SANITIZE STREQUAL "thread")
    list(APPEND environment ENVIRONMENT_MODIFICATION
         TSAN_OPTIONS=set:suppressions=${PROJECT_SOURCE_DIR}/tests/support/thread_sanitizer.supp)
  endif()
  gtest_discover_tests(${name} TEST_PREFIX ${name}. DISCOVERY_TIMEOUT 120
                       PROPERTIES TIMEOUT 300 ${labels} ${environment})
endfunction()

# norvik_add_compile_fail(FILE MESSAGE): FILE compiles as it stands, and with -DSHOULD_NOT_COMPILE it is refused with an error
# that MESSAGE (a regular expression) matches. Two tests of ctest's; nothing is linked.
function(norvik_add_compile_fail file message)
  get_filename_component(name ${file} NAME_WE)
  set(compile ${CMAKE_CXX_COMPILER} -std=c++20 -fsyntax-only -Wall -Werror -I${PROJECT_SOURCE_DIR}
              ${CMAKE_CURRENT_SOURCE_DIR}/${file})
  add_test(NAME compile_fail.${name}.CompilesAsItStands COMMAND ${compile})
  add_test(NAME compile_fail.${name}.IsRefused COMMAND ${compile} -DSHOULD_NOT_COMPILE)
  set_tests_properties(compile_fail.${name}.IsRefused PROPERTIES PASS_REGULAR_EXPRESSION "error: [^\n]*(${message})")
endfunction()
