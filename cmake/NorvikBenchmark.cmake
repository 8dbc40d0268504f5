# norvik_add_benchmark(CONCEPT [LIBRARIES library...]): builds benchmarks/<folder>/<Concept>_benchmark.cpp as a program
# of that name. The program checks its results before it times anything, and runs its peers too: names are
# <subject>/ours and <subject>/<peer>, which tools/bench puts into one table.
function(norvik_add_benchmark concept)
  cmake_parse_arguments(ARG "" "" "LIBRARIES" ${ARGN})
  set(name ${concept}_benchmark)
  add_executable(${name} ${name}.cpp)
  add_dependencies(benchmarks ${name})
  target_link_libraries(${name} PRIVATE NorvikCore::NorvikCore benchmark::benchmark ${ARG_LIBRARIES})
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR})
  norvik_private_options(${name})
  # Loops of a few instructions take twice as long if they happen to cross two lines of the decoder's cache.
  target_compile_options(${name} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-falign-loops=64>)
endfunction()
