// NorvikCore/platform/values/internal/TextSearch.h - finds the occurrences of one text in another, by their bytes.
//
//   TextSearch search("banana", "ana", {});
//   search.next();                                   // {1, 4}
//   search.next();                                   // {3, 6}: occurrences may overlap
//   search.next();                                   // nothing
//
// Texts are UTF-8 in which lone surrogate halves may occur. Finding all occurrences takes linear time for any texts.
// Positions are tried one by one while that is cheap, as it is in ordinary text. In repetitive text the search switches
// to a table of the repetitions within the wanted text, which takes twelve bytes per byte or letter.
//
// Confined. The texts must outlive the search and must not change meanwhile.
#pragma once

#include "NorvikCore/platform/export.h"

#include <cstddef>
#include <optional>
#include <string_view>

namespace norvik::detail {

struct SearchManner {
  bool ignoresCase = false;  ///< letters are compared as CaseFolding.h folds them
  bool backwards = false;    ///< the last occurrence is found first
};

/// A part of a text, in bytes.
struct TextMatch {
  std::size_t from, to;
  friend bool operator==(const TextMatch&, const TextMatch&) = default;
};

/// The beginning of the text if it equals `wanted`; backwards, the end of the text.
[[nodiscard]] NK_EXPORT_FOR_TESTS std::optional<TextMatch> matchAtEdge(std::string_view text, std::string_view wanted,
                                                                       SearchManner manner) noexcept;

class NK_EXPORT_FOR_TESTS TextSearch {
 public:
  TextSearch(std::string_view text, std::string_view wanted, SearchManner manner) noexcept
      : text_(text),
        wanted_(wanted),
        manner_(manner),
        way_(wanted.empty()       ? Way::Boundaries
             : manner.ignoresCase ? manner.backwards ? Way::LettersBackwards : Way::Letters
             : manner.backwards   ? Way::BytesBackwards
                                  : Way::Bytes),
        place_(manner.backwards ? text.size() + 1 : 0) {}
  ~TextSearch() {
    if (table_ != nullptr) [[unlikely]]
      deleteTable();
  }
  TextSearch(const TextSearch&) = delete;
  TextSearch& operator=(const TextSearch&) = delete;

  /// The next occurrence. An empty text occurs before and after every character.
  [[nodiscard]] std::optional<TextMatch> next();

 private:
  struct Table;
  /// How the next occurrence is searched for; None if there are no more.
  enum class Way : unsigned char { Bytes, BytesBackwards, Letters, LettersBackwards, Boundaries, Table, None };

  [[nodiscard]] std::optional<TextMatch> nextBoundary() noexcept;
  [[nodiscard]] bool isAt(const char* here) noexcept;
  [[nodiscard]] std::optional<TextMatch> nextOfBytes();
  [[nodiscard]] std::optional<TextMatch> nextOfBytesBackwards();
  [[nodiscard]] std::optional<TextMatch> nextOfLetters();
  [[nodiscard]] std::optional<TextMatch> nextOfLettersBackwards();
  [[nodiscard]] std::optional<TextMatch> nextByTable() noexcept;
  [[nodiscard]] bool isTooDear(std::size_t progress) const noexcept { return work_ > 4 * progress + 512; }
  void makeTable();
  void deleteTable() noexcept;

  const std::string_view text_, wanted_;
  const SearchManner manner_;
  Way way_;
  /// The next occurrence begins at or behind this place; backwards, before it.
  std::size_t place_;
  std::size_t work_ = 0;    // comparisons of eight bytes or of one letter
  Table* table_ = nullptr;  // owned; made when it is needed
};

}  // namespace norvik::detail
