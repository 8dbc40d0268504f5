// programs/norvik-log/Pattern.h - a regular expression, and properties of it that make a search faster.
//
// ^ and $ match the ends of a text's lines, and . matches any character except a line feed. Bytes that are not UTF-8
// match nothing and cause no error.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace norvik_log {

/// An invalid regular expression; what() gives the place and the reason.
class PatternError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Properties that follow from a pattern's text. If the text is not understood, they promise nothing.
struct PatternTraits {
  std::string literal;          // a text that every match contains; empty: unknown
  bool matchesInPlace = false;  // every match in a text is also a match if other bytes surround the text
  bool needsCharacters = true;  // the search must decode the text into characters
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

  /// There is no literal if case is ignored.
  [[nodiscard]] const PatternTraits& traits() const noexcept { return traits_; }

  /// A pattern for the use of one thread.
  class Matcher {
   public:
    explicit Matcher(const Pattern& pattern);
    ~Matcher();
    Matcher(const Matcher&) = delete;
    Matcher& operator=(const Matcher&) = delete;

    /// True if there is a match. A search that takes too long is given up and counted.
    bool matches(std::string_view text);
    /// The start of the first match at or after `from`; npos if there is none. Absent if the search takes too long.
    std::optional<std::size_t> find(std::string_view text, std::size_t from);
    /// The number of texts that matches() has given up since the last call.
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
