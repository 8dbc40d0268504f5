// programs/norvik-log/Pattern.h - a regular expression, and what can be told of the texts that it matches before it is
// tried.
//
// ^ and $ are the ends of a text's lines, . is any character but a line feed. Bytes that are not UTF-8 match nothing
// but are no fault.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace norvik_log {

/// No regular expression; what() says where and why.
class PatternError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// What its text says of a pattern. Where it is not understood nothing is promised.
struct PatternTraits {
  std::string literal;          // in every text that it matches; empty: unknown
  bool matchesInPlace = false;  // what matches in a text alone also matches where others stand around that
  bool needsCharacters = true;  // bytes and characters must be told apart
};
[[nodiscard]] PatternTraits traitsOf(std::string_view pattern);

/// Immutable; shared by threads.
class Pattern {
 public:
  enum class Kind { Regular, Literal };

  /// Throws PatternError.
  Pattern(const std::string& pattern, Kind kind, bool ignoresCase);
  ~Pattern();
  Pattern(const Pattern&) = delete;
  Pattern& operator=(const Pattern&) = delete;

  /// Without a literal where case is ignored.
  [[nodiscard]] const PatternTraits& traits() const noexcept { return traits_; }

  /// A pattern in use by one thread.
  class Matcher {
   public:
    explicit Matcher(const Pattern& pattern);
    ~Matcher();
    Matcher(const Matcher&) = delete;
    Matcher& operator=(const Matcher&) = delete;

    /// Whether there is a match. A search that takes too long is given up and counted.
    bool matches(std::string_view text);
    /// Where the first match from there on begins; npos where there is none. Absent if it takes too long.
    std::optional<std::size_t> find(std::string_view text, std::size_t from);
    /// How many texts matches() gave up since the last call.
    std::size_t takeGivenUp();

   private:
    struct State;
    std::unique_ptr<State> state_;
  };

 private:
  struct Code;
  std::unique_ptr<Code> code_;
  PatternTraits traits_;
};

}  // namespace norvik_log
