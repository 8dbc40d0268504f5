#include "NorvikCore/platform/values/internal/TextSearch.h"

#include "NorvikCore/platform/values/Utf8.h"
#include "NorvikCore/platform/values/internal/CaseFolding.h"

#include <bit>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

namespace norvik::detail {
namespace {

constexpr std::size_t npos = std::string_view::npos;

/// How many of `size` bytes are equal from the start. The first byte must be equal.
std::size_t commonBytes(const char* a, const char* b, std::size_t size) noexcept {
  std::size_t same = 1;  // the caller searched for the first byte
  if constexpr (std::endian::native == std::endian::little) {
    for (; same + 8 <= size; same += 8) {
      std::uint64_t left = 0, right = 0;
      std::memcpy(&left, a + same, 8);
      std::memcpy(&right, b + same, 8);
      if (left != right) return same + static_cast<std::size_t>(std::countr_zero(left ^ right)) / 8;
    }
  }
  while (same < size && a[same] == b[same]) ++same;
  return same;
}

std::size_t characterBefore(std::string_view text, std::size_t at) noexcept {
  do --at;
  while (utf8::isContinuation(text[at]));
  return at;
}

/// The next byte or folded letter in the direction of the search; `at` moves past it.
std::uint32_t takeSymbol(std::string_view text, std::size_t& at, SearchManner manner) noexcept {
  if (!manner.ignoresCase) return utf8::byteAt(text.data() + (manner.backwards ? --at : at++));
  if (manner.backwards) at = characterBefore(text, at);
  const utf8::Character letter = utf8::decode(text.data() + at);
  if (!manner.backwards) at += letter.size;
  return foldCase(letter.point);
}

struct FoldedPrefix {
  std::size_t size = npos;  // in bytes of the text; npos if it has no such prefix
  std::size_t letters = 0;  // number of letters compared
};

FoldedPrefix foldedPrefix(std::string_view text, std::string_view wanted) noexcept {
  FoldedPrefix prefix;
  std::size_t at = 0;
  for (std::size_t i = 0; i < wanted.size(); ++prefix.letters) {
    if (at == text.size()) return prefix;
    const utf8::Character a = utf8::decode(text.data() + at), b = utf8::decode(wanted.data() + i);
    if (foldCase(a.point) != foldCase(b.point)) return prefix;
    at += a.size;
    i += b.size;
  }
  prefix.size = at;
  return prefix;
}

}  // namespace

std::optional<TextMatch> matchAtEdge(std::string_view text, std::string_view wanted, SearchManner manner) noexcept {
  if (!manner.ignoresCase) {
    if (manner.backwards ? !text.ends_with(wanted) : !text.starts_with(wanted)) return std::nullopt;
    return manner.backwards ? TextMatch{text.size() - wanted.size(), text.size()} : TextMatch{0, wanted.size()};
  }
  std::size_t at = manner.backwards ? text.size() : 0, i = manner.backwards ? wanted.size() : 0;
  const std::size_t textsEnd = text.size() - at, wantedsEnd = wanted.size() - i;
  while (i != wantedsEnd) {
    if (at == textsEnd || takeSymbol(text, at, manner) != takeSymbol(wanted, i, manner)) return std::nullopt;
  }
  return manner.backwards ? TextMatch{at, text.size()} : TextMatch{0, at};
}

struct TextSearch::Table {
  /// The wanted text in the direction of the search, as bytes or folded letters.
  std::vector<std::uint32_t> symbols;
  /// For each number of leading symbols: the length of their longest proper suffix that is also a prefix of `symbols`.
  std::vector<std::size_t> borders;
  std::size_t read = 0, trail = 0;  // the last `symbolsRead` symbols are between them
  std::size_t matched = 0, symbolsRead = 0;
};

std::optional<TextMatch> TextSearch::next() {
  switch (way_) {
    case Way::Bytes:
      return nextOfBytes();
    case Way::BytesBackwards:
      return nextOfBytesBackwards();
    case Way::Letters:
      return nextOfLetters();
    case Way::LettersBackwards:
      return nextOfLettersBackwards();
    case Way::Boundaries:
      return nextBoundary();
    case Way::Table:
      return nextByTable();
    case Way::None:
      break;
  }
  return std::nullopt;
}

std::optional<TextMatch> TextSearch::nextBoundary() noexcept {
  std::size_t at = place_;
  if (manner_.backwards) {
    at = place_ > text_.size() ? text_.size() : characterBefore(text_, place_);
    place_ = at;
    if (at == 0) way_ = Way::None;
  } else {
    if (at == text_.size())
      way_ = Way::None;
    else
      place_ += utf8::decode(text_.data() + at).size;
  }
  return TextMatch{at, at};
}

/// True if the wanted bytes are at `here`; the first of them has been found there.
inline bool TextSearch::isAt(const char* here) noexcept {
  if (wanted_.size() > 1 && here[1] != wanted_[1]) {
    ++work_;
    return false;
  }
  const bool isSame = std::memcmp(here, wanted_.data(), wanted_.size()) == 0;
  work_ += 1 + (isSame ? wanted_.size() : commonBytes(here, wanted_.data(), wanted_.size())) / 8;
  return isSame;
}

std::optional<TextMatch> TextSearch::nextOfBytes() {
  const std::size_t size = wanted_.size();
  if (size <= text_.size()) {
    const char *const start = text_.data(), *const last = start + (text_.size() - size);
    const char* from = start + place_;
    while (from <= last) {
      from = static_cast<const char*>(std::memchr(from, wanted_.front(), static_cast<std::size_t>(last - from) + 1));
      if (from == nullptr) break;
      const auto at = static_cast<std::size_t>(from - start);
      place_ = at + 1;
      if (isAt(from)) return TextMatch{at, at + size};
      ++from;
      if (isTooDear(place_)) [[unlikely]] {
        makeTable();
        return nextByTable();
      }
    }
  }
  way_ = Way::None;
  return std::nullopt;
}

std::optional<TextMatch> TextSearch::nextOfBytesBackwards() {
  if (wanted_.size() <= text_.size()) {
    const std::size_t last = text_.size() - wanted_.size();
    if (place_ > last + 1) place_ = last + 1;
    while (place_ > 0) {
      const void* found = memrchr(text_.data(), wanted_.front(), place_);
      if (found == nullptr) break;
      place_ = static_cast<std::size_t>(static_cast<const char*>(found) - text_.data());
      if (isAt(text_.data() + place_)) return TextMatch{place_, place_ + wanted_.size()};
      if (isTooDear(last - place_)) [[unlikely]] {
        makeTable();
        return nextByTable();
      }
    }
  }
  way_ = Way::None;
  return std::nullopt;
}

std::optional<TextMatch> TextSearch::nextOfLetters() {
  const char32_t firstLetter = foldCase(utf8::decode(wanted_.data()).point);
  while (place_ < text_.size()) {
    const std::size_t at = place_;
    const utf8::Character letter = utf8::decode(text_.data() + at);
    place_ += letter.size;
    if (foldCase(letter.point) != firstLetter) continue;
    const FoldedPrefix prefix = foldedPrefix(text_.substr(at), wanted_);
    work_ += prefix.letters;
    if (prefix.size != npos) return TextMatch{at, at + prefix.size};
    if (isTooDear(place_)) [[unlikely]] {
      makeTable();
      return nextByTable();
    }
  }
  way_ = Way::None;
  return std::nullopt;
}

std::optional<TextMatch> TextSearch::nextOfLettersBackwards() {
  const char32_t firstLetter = foldCase(utf8::decode(wanted_.data()).point);
  if (place_ > text_.size()) place_ = text_.size();
  while (place_ > 0) {
    place_ = characterBefore(text_, place_);
    if (foldCase(utf8::decode(text_.data() + place_).point) != firstLetter) continue;
    const FoldedPrefix prefix = foldedPrefix(text_.substr(place_), wanted_);
    work_ += prefix.letters;
    if (prefix.size != npos) return TextMatch{place_, place_ + prefix.size};
    if (isTooDear(text_.size() - place_)) [[unlikely]] {
      makeTable();
      return nextByTable();
    }
  }
  way_ = Way::None;
  return std::nullopt;
}

void TextSearch::makeTable() {
  auto table = std::make_unique<Table>();
  auto& [symbols, borders, read, trail, matched, symbolsRead] = *table;
  const std::size_t end = manner_.backwards ? 0 : wanted_.size();
  for (std::size_t at = wanted_.size() - end; at != end;) symbols.push_back(takeSymbol(wanted_, at, manner_));
  borders.assign(symbols.size() + 1, 0);
  for (std::size_t count = 2; count <= symbols.size(); ++count) {
    std::size_t border = borders[count - 1];
    while (border > 0 && symbols[border] != symbols[count - 1]) border = borders[border];
    borders[count] = border + (symbols[border] == symbols[count - 1] ? 1 : 0);
  }
  // A backward search starts at the end again, because the end of a folded occurrence before `place_` is not known.
  read = trail = manner_.backwards ? text_.size() : place_;
  table_ = table.release();
  way_ = Way::Table;
}

void TextSearch::deleteTable() noexcept { delete table_; }

std::optional<TextMatch> TextSearch::nextByTable() noexcept {
  auto& [symbols, borders, read, trail, matched, symbolsRead] = *table_;
  const std::size_t end = manner_.backwards ? 0 : text_.size();
  while (read != end) {
    const std::uint32_t symbol = takeSymbol(text_, read, manner_);
    while (matched > 0 && (matched == symbols.size() || symbols[matched] != symbol)) matched = borders[matched];
    if (symbols[matched] == symbol) ++matched;
    if (symbolsRead == symbols.size()) {
      static_cast<void>(takeSymbol(text_, trail, manner_));
    } else {
      ++symbolsRead;
    }
    if (matched < symbols.size()) continue;
    if (!manner_.backwards) return TextMatch{trail, read};
    if (read < place_) return TextMatch{read, trail};
  }
  way_ = Way::None;
  return std::nullopt;
}

}  // namespace norvik::detail
