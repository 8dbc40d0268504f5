# norvik_private_options(TARGET): warnings and sanitizers of this repository's own targets. All options are private, so
# a user of the library inherits neither.
function(norvik_private_options target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion
                         -Wnon-virtual-dtor -Woverloaded-virtual -Wold-style-cast -Wcast-qual -Wformat=2 -Wundef)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    target_compile_options(${target} PRIVATE -Wthread-safety -Wextra-semi)
  elseif(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(${target} PRIVATE -Wduplicated-cond -Wlogical-op -Wextra-semi)
  endif()
  # For several sources compiled as one, because names local to one source look global to the next, and types local to a
  # source look like types of a header.
  if(CMAKE_UNITY_BUILD)
    target_compile_options(${target} PRIVATE -Wno-shadow $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
  endif()
  if(NORVIK_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
  if(NORVIK_SANITIZE)
    target_compile_options(${target} PRIVATE -fsanitize=${NORVIK_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    target_link_options(${target} PRIVATE -fsanitize=${NORVIK_SANITIZE})
  endif()
  if(NORVIK_FUZZERS)
    target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link)
  endif()
endfunction()
