# norvik_add_fuzzer(CONCEPT): builds fuzz/<Concept>_fuzzer.cpp as a libFuzzer program, with its corpus in
# fuzz/corpus/<Concept>/. A test replays the corpus, so that every input that once failed remains a test.
function(norvik_add_fuzzer concept)
  set(name ${concept}_fuzzer)
  set(corpus ${PROJECT_SOURCE_DIR}/fuzz/corpus/${concept})
  add_executable(${name} ${name}.cpp)
  target_link_libraries(${name} PRIVATE NorvikCore::NorvikCore)
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
  norvik_private_options(${name})
  target_link_options(${name} PRIVATE -fsanitize=fuzzer)
  add_test(NAME fuzz.${concept} COMMAND ${name} -runs=0 ${corpus})
  set_tests_properties(fuzz.${concept} PROPERTIES TIMEOUT 300)
endfunction()
