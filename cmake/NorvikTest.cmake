# norvik_add_tests(NAME [THREADS] SOURCES file...): one GoogleTest program; every test in it is a ctest test. THREADS
# marks programs whose tests start threads. They also run under the thread sanitizer, where nothing else is built.
include(GoogleTest)

# The options of every test program.
function(norvik_test_options target)
  target_link_libraries(${target} PRIVATE NorvikCore::NorvikCore GTest::gmock)
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR})
  norvik_private_options(${target})
  # Only the tests are compiled so; the tested library keeps its optimisation level. Each test runs once, so compiling
  # counts: -Og takes three fifths of the time of -O2, and models still run fast. With a sanitizer, -O0 takes half the
  # time of -O1.
  if(NORVIK_SANITIZE)
    target_compile_options(${target} PRIVATE -O0)
  else()
    target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-Og>)
  endif()
  # g++ 12 warns of overlapping texts within std::string, wrongly, if that header is precompiled.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(${target} PRIVATE -Wno-array-bounds -Wno-restrict -Wno-stringop-overflow
                           -Wno-stringop-overread)
  endif()
endfunction()

# GoogleTest's headers take a second, more than most tests need for the rest, so they are compiled once for all
# programs. No header of the library is precompiled, so that every test still includes what it tests.
function(norvik_precompile_test_headers)
  set(empty ${PROJECT_BINARY_DIR}/norvik_test_headers.cpp)
  file(CONFIGURE OUTPUT ${empty} CONTENT "")
  add_library(norvik_test_headers OBJECT ${empty})
  norvik_test_options(norvik_test_headers)
  target_precompile_headers(norvik_test_headers PRIVATE <gmock/gmock.h> <gtest/gtest.h>)
  # Compiled as for programs, because a program cannot use a header precompiled for a shared library.
  set_target_properties(norvik_test_headers PROPERTIES POSITION_INDEPENDENT_CODE OFF)
endfunction()

function(norvik_add_tests name)
  cmake_parse_arguments(ARG "THREADS" "" "SOURCES;LIBRARIES" ${ARGN})
  if(NORVIK_SANITIZE STREQUAL "thread" AND NOT ARG_THREADS)
    return()
  endif()
  add_executable(${name} ${ARG_SOURCES})
  # These tests check that the files are separate, so they must not be joined.
  set(separate ${ARG_SOURCES})
  list(FILTER separate INCLUDE REGEX "_other_file\\.cpp$")
  set_source_files_properties(${separate} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
  norvik_test_options(${name})
  target_link_libraries(${name} PRIVATE GTest::gtest_main ${ARG_LIBRARIES})
  target_precompile_headers(${name} REUSE_FROM norvik_test_headers)
  set(labels "")
  if(ARG_THREADS)
    set(labels LABELS threads)
  endif()
  # The tests may run on a machine of any country, so what follows the user's locale is tested with a British user's
  # settings. (These are two properties of one word each, because gtest_discover_tests() does not pass lists on.)
  set(environment ENVIRONMENT LC_ALL=en_GB.UTF-8)
  if(NORVIK_SANITIZE STREQUAL "thread")
    list(APPEND environment ENVIRONMENT_MODIFICATION
         TSAN_OPTIONS=set:suppressions=${PROJECT_SOURCE_DIR}/tests/support/thread_sanitizer.supp)
  elseif(NORVIK_SANITIZE MATCHES "address")
    list(APPEND environment ENVIRONMENT_MODIFICATION
         LSAN_OPTIONS=set:print_suppressions=0:suppressions=${PROJECT_SOURCE_DIR}/tests/support/leak_sanitizer.supp)
  endif()
  gtest_discover_tests(${name} TEST_PREFIX ${name}. DISCOVERY_TIMEOUT 120
                       PROPERTIES TIMEOUT 300 ${labels} ${environment})
endfunction()

# norvik_add_compile_fail(FILE MESSAGE): FILE compiles without changes, and with -DSHOULD_NOT_COMPILE it is refused with
# an error that MESSAGE (a regular expression) matches. Adds two ctest tests; nothing is linked.
function(norvik_add_compile_fail file message)
  get_filename_component(name ${file} NAME_WE)
  set(compile ${CMAKE_CXX_COMPILER} -std=c++20 -fsyntax-only -Wall -Werror -I${PROJECT_SOURCE_DIR}
              ${CMAKE_CURRENT_SOURCE_DIR}/${file})
  add_test(NAME compile_fail.${name}.CompilesAsItStands COMMAND ${compile})
  add_test(NAME compile_fail.${name}.IsRefused COMMAND ${compile} -DSHOULD_NOT_COMPILE)
  set_tests_properties(compile_fail.${name}.IsRefused PROPERTIES PASS_REGULAR_EXPRESSION "error: [^\n]*(${message})")
endfunction()

# norvik_add_compile_fail_cases(FILE [ALONE] [COUNTED] [CLANG_HEADERS header...]): with every public header included,
# FILE compiles without changes. For each of its lines `#elif SHOULD_NOT_COMPILE == N  // sentence` it is refused with
# -DSHOULD_NOT_COMPILE=N, in at most 40 lines that contain the sentence. g++ reads the headers precompiled, by a
# fixture. clang++ 14 crashes with precompiled headers, so it reads the given headers instead; its tests have the label
# clang. With ALONE the file includes the headers it needs itself, and g++ precompiles only those. With COUNTED the
# sentence is that of the only error, or of the first of as many errors as `// [g++: 2, clang++: 1] sentence` says.
function(norvik_add_compile_fail_cases file)
  cmake_parse_arguments(ARG "ALONE;COUNTED" "" "CLANG_HEADERS" ${ARGN})
  get_filename_component(name ${file} NAME_WE)
  norvik_every_header()
  file(STRINGS ${file} cases REGEX "^#elif SHOULD_NOT_COMPILE == [0-9]+")
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${file})
  set(headers_GXX ${precompiled})
  set(headers_CLANGXX ${ARG_CLANG_HEADERS})
  foreach(compiler GXX CLANGXX)
    if(NOT NORVIK_${compiler})
      continue()
    endif()
    set(compile ${NORVIK_${compiler}} ${options} ${CMAKE_CURRENT_SOURCE_DIR}/${file})
    set(fixture every_header)
    if(ARG_ALONE)
      set(fixture "")
      if(compiler STREQUAL "GXX")
        norvik_precompile_includes(${file} ${name})
        set(fixture ${name}_includes)
        list(APPEND compile -include ${own_includes})
      endif()
    else()
      foreach(header IN LISTS headers_${compiler})
        list(APPEND compile -include ${header})
      endforeach()
    endif()
    string(REPLACE "XX" "++" prefix compile_fail.${name}.${compiler})
    set(tests ${prefix}.CompilesAsItStands)
    add_test(NAME ${prefix}.CompilesAsItStands COMMAND ${compile})
    foreach(case IN LISTS cases)
      string(REGEX MATCH "== ([0-9]+) *// (\\[g[+][+]: ([0-9]+), clang[+][+]: ([0-9]+)\\] )?(.*)$" matched "${case}")
      set(number ${CMAKE_MATCH_1})
      set(sentence "${CMAKE_MATCH_5}")
      set(errors any)
      if(ARG_COUNTED)
        set(errors 1)
        if(CMAKE_MATCH_2)
          set(errors $<IF:$<STREQUAL:${compiler},GXX>,${CMAKE_MATCH_3},${CMAKE_MATCH_4}>)
        endif()
      endif()
      add_test(NAME ${prefix}.IsRefused.${number}
               COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/refused.sh 40 ${errors} "${sentence}" ${compile} -DSHOULD_NOT_COMPILE=${number})
      list(APPEND tests ${prefix}.IsRefused.${number})
    endforeach()
    if(fixture)
      set_tests_properties(${tests} PROPERTIES FIXTURES_REQUIRED ${fixture})
    endif()
    if(compiler STREQUAL "CLANGXX")
      set_tests_properties(${tests} PROPERTIES LABELS clang)
    endif()
  endforeach()
endfunction()

# norvik_precompile_includes(FILE NAME): adds the fixture that precompiles the includes of FILE for g++; own_includes is
# its header.
macro(norvik_precompile_includes file name)
  set(own_includes ${CMAKE_CURRENT_BINARY_DIR}/precompiled/${name}_includes.h)
  file(STRINGS ${file} includes REGEX "^#include")
  list(JOIN includes "\n" includes)
  file(CONFIGURE OUTPUT ${own_includes} CONTENT "${includes}\n" @ONLY)
  add_test(NAME compile_fail.${name}.GXX_includes
           COMMAND ${NORVIK_GXX} -std=c++20 -Wall -Werror -Wno-unused-variable -I${PROJECT_SOURCE_DIR} -x c++-header
                   ${own_includes} -o ${own_includes}.gch)
  set_tests_properties(compile_fail.${name}.GXX_includes PROPERTIES FIXTURES_SETUP ${name}_includes)
endmacro()

# norvik_add_compile_fail_lines(FILE): with every public header included, FILE compiles without changes. With
# -DSHOULD_NOT_COMPILE exactly the lines that end with `// refused` have errors, for g++ and for clang++.
function(norvik_add_compile_fail_lines file)
  get_filename_component(name ${file} NAME_WE)
  norvik_every_header()
  foreach(compiler GXX CLANGXX)
    if(NOT NORVIK_${compiler})
      continue()
    endif()
    set(source ${CMAKE_CURRENT_SOURCE_DIR}/${file})
    set(unlimited $<IF:$<STREQUAL:${compiler},GXX>,-fmax-errors=0,-ferror-limit=0>)
    set(compile ${NORVIK_${compiler}} ${options} ${source} -include $<IF:$<STREQUAL:${compiler},GXX>,${precompiled},${every_header}>)
    string(REPLACE "XX" "++" prefix compile_fail.${name}.${compiler})
    add_test(NAME ${prefix}.CompilesAsItStands COMMAND ${compile})
    add_test(NAME ${prefix}.HasAnErrorInEachLine
             COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/refused_lines.sh ${source} ${compile} ${unlimited} -DSHOULD_NOT_COMPILE)
    set_tests_properties(${prefix}.CompilesAsItStands ${prefix}.HasAnErrorInEachLine PROPERTIES FIXTURES_REQUIRED every_header)
    if(compiler STREQUAL "CLANGXX")
      set_tests_properties(${prefix}.CompilesAsItStands ${prefix}.HasAnErrorInEachLine PROPERTIES LABELS clang)
    endif()
  endforeach()
endfunction()

# Finds both compilers, and adds the fixture that precompiles a header that includes all public headers, for g++.
macro(norvik_every_header)
  find_program(NORVIK_GXX NAMES g++-12 g++)
  find_program(NORVIK_CLANGXX NAMES clang++-14 clang++)
  set(every_header ${CMAKE_CURRENT_BINARY_DIR}/every_header.h)
  set(precompiled ${CMAKE_CURRENT_BINARY_DIR}/precompiled/every_header.h)
  set(options -std=c++20 -Wall -Werror -Wno-unused-variable -I${PROJECT_SOURCE_DIR} -fsyntax-only)
  if(NORVIK_GXX AND NOT TEST compile_fail.EveryHeaderCompilesAtOnce)
    get_target_property(headers NorvikCore HEADER_SET)
    list(TRANSFORM headers REPLACE "(.+)" "#include \"\\1\"")
    list(JOIN headers "\n" headers)
    file(CONFIGURE OUTPUT ${every_header} CONTENT "${headers}\n" @ONLY)
    file(CONFIGURE OUTPUT ${precompiled} CONTENT "${headers}\n" @ONLY)
    add_test(NAME compile_fail.EveryHeaderCompilesAtOnce
             COMMAND ${NORVIK_GXX} -std=c++20 -Wall -Werror -Wno-unused-variable -I${PROJECT_SOURCE_DIR} -x c++-header ${precompiled}
                     -o ${precompiled}.gch)
    set_tests_properties(compile_fail.EveryHeaderCompilesAtOnce PROPERTIES FIXTURES_SETUP every_header)
  endif()
endmacro()
