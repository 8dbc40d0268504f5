// fuzz/PatternFailure.h - reports a finding of a fuzzer of patterns.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace norvik::fuzz {

/// Prints what is wrong with the text that the pattern wrote, and ends the program.
[[noreturn]] inline void fail(std::string_view what, std::string_view pattern, std::string_view text) {
  const auto sizeOf = [](std::string_view part) { return static_cast<int>(part.size()); };
  std::fprintf(stderr, "%.*s: pattern \"%.*s\", text \"%.*s\"\n", sizeOf(what), what.data(), sizeOf(pattern),
               pattern.data(), sizeOf(text), text.data());
  std::abort();
}

}  // namespace norvik::fuzz
