// Finding, splitting, replacing and trimming.
#include "NorvikCore/platform/values/NSMutableString.h"
#include "NorvikCore/platform/values/NSString.h"

#include "NorvikCore/platform/values/internal/StringHalves.h"
#include "NorvikCore/platform/values/internal/StringIndex.h"
#include "NorvikCore/platform/values/internal/TextSearch.h"

#include <optional>

namespace norvik {
namespace {

/// A text to search for. A half at its start or end may match inside a character. So occurrences of the text between
/// such halves are found first, and then the units beside them are compared.
struct Wanted {
  explicit Wanted(const NSString& text) noexcept : core(text.view()) {
    if (text.isWellFormed()) [[likely]]
      return;
    if (detail::beginsWithHalf(core) && utf8::isLowHalf(utf8::decode(core.data()).point)) {
      low = utf8::decode(core.data()).point;
      core.remove_prefix(detail::halfSize);
    }
    if (detail::endsWithHalf(core)) {
      const char32_t last = utf8::decode(core.data() + core.size() - detail::halfSize).point;
      if (!utf8::isHighHalf(last)) return;
      high = last;
      core.remove_suffix(detail::halfSize);
    }
  }

  std::string_view core;
  char32_t low = 0, high = 0;  // 0 if it does not begin with a low half, or end with a high one
};

/// A text to search in: whole characters, and the halves of the characters that a range cuts at its ends.
struct Searched {
  std::string_view characters;
  char32_t low = 0, high = 0;  // 0 if the range cuts no character there

  [[nodiscard]] char32_t unitBefore(std::size_t at) const noexcept {
    if (at == 0) return low;
    do --at;
    while (utf8::isContinuation(characters[at]));
    const char32_t point = utf8::decode(characters.data() + at).point;
    return point < 0x10000 ? point : utf8::lowHalf(point);
  }
  [[nodiscard]] char32_t unitAfter(std::size_t at) const noexcept {
    if (at == characters.size()) return high;
    const char32_t point = utf8::decode(characters.data() + at).point;
    return point < 0x10000 ? point : utf8::highHalf(point);
  }
  [[nodiscard]] bool hasBeside(const Wanted& wanted, detail::TextMatch match) const noexcept {
    return (wanted.low == 0 || unitBefore(match.from) == wanted.low) &&
           (wanted.high == 0 || unitAfter(match.to) == wanted.high);
  }

  /// The core of the first occurrence. An anchored one is at the start; backwards, at the end.
  [[nodiscard]] std::optional<detail::TextMatch> find(const Wanted& wanted, NSStringCompareOptions options) const {
    const detail::SearchManner manner{(options & NSCaseInsensitiveSearch) != 0, (options & NSBackwardsSearch) != 0};
    if ((options & NSAnchoredSearch) != 0) return findAnchored(wanted, manner);
    detail::TextSearch search(characters, wanted.core, manner);
    if (wanted.low == 0 && wanted.high == 0) [[likely]]
      return search.next();
    while (const auto match = search.next()) {
      if (hasBeside(wanted, *match)) return match;
    }
    return std::nullopt;
  }

 private:
  [[nodiscard]] std::optional<detail::TextMatch> findAnchored(const Wanted& wanted,
                                                              detail::SearchManner manner) const noexcept {
    // At the anchored end, a wanted half matches either a character that the range cuts or a lone half.
    std::string_view rest = characters;
    const char32_t wantedHalf = manner.backwards ? wanted.high : wanted.low, cut = manner.backwards ? high : low;
    if ((wantedHalf == 0) != (cut == 0)) {
      const bool isLone = manner.backwards ? detail::endsWithHalf(rest) : detail::beginsWithHalf(rest);
      if (cut != 0 || !isLone) return std::nullopt;
      manner.backwards ? rest.remove_suffix(detail::halfSize) : rest.remove_prefix(detail::halfSize);
    }
    std::optional<detail::TextMatch> match = detail::matchAtEdge(rest, wanted.core, manner);
    if (!match) return match;
    const auto skipped = static_cast<std::size_t>(rest.data() - characters.data());
    match->from += skipped;
    match->to += skipped;
    return hasBeside(wanted, *match) ? match : std::nullopt;
  }
};

bool isSpaceOrLineEnd(char32_t point) noexcept {
  return (point >= 0x09 && point <= 0x0D) || point == 0x20 || point == 0x85 || point == 0xA0 || point == 0x1680 ||
         (point >= 0x2000 && point <= 0x200A) || point == 0x2028 || point == 0x2029 || point == 0x202F ||
         point == 0x205F || point == 0x3000;
}

}  // namespace

NSRange NSString::rangeOfString(const NSString& text, NSStringCompareOptions options) const {
  return rangeOfString(text, options, {0, length()});
}

NSRange NSString::rangeOfString(const NSString& text, NSStringCompareOptions options, NSRange range) const {
  checkRange("rangeOfString", range);
  constexpr NSRange none{NSNotFound, 0};
  if (text.empty() || range.length == 0) return none;
  detail::StringPlace from = place(range.location);
  const detail::StringPlace to = place(NSMaxRange(range));
  Searched searched;
  if (from.secondHalf) [[unlikely]] {
    const utf8::Character pair = utf8::decode(data_ + from.byte);
    searched.low = utf8::lowHalf(pair.point);
    from.byte += pair.size;
  }
  if (to.secondHalf) [[unlikely]]
    searched.high = utf8::highHalf(utf8::decode(data_ + to.byte).point);
  searched.characters = view().substr(from.byte, to.byte - from.byte);
  const Wanted wanted(text);
  const std::optional<detail::TextMatch> match = searched.find(wanted, options);
  if (!match) return none;
  return {unitAtByte(from.byte + match->from) - (wanted.low != 0 ? 1 : 0), text.length()};
}

bool NSString::hasPrefix(const NSString& text) const {
  if (text.empty()) return false;
  if (view().starts_with(text.view())) return true;
  return !text.isWellFormed() && rangeOfString(text, NSAnchoredSearch).length != 0;
}

bool NSString::hasSuffix(const NSString& text) const {
  if (text.empty()) return false;
  if (view().ends_with(text.view())) return true;
  return !text.isWellFormed() && rangeOfString(text, NSAnchoredSearch | NSBackwardsSearch).length != 0;
}

std::vector<NSRange> NSString::matches(const NSString& text, NSStringCompareOptions options) const {
  std::vector<NSRange> found;
  if (text.empty()) return found;
  const Searched searched{view()};
  const Wanted wanted(text);
  const NSUInteger units = text.length();
  detail::TextSearch search(searched.characters, wanted.core, {(options & NSCaseInsensitiveSearch) != 0, false});
  NSUInteger unit = 0, end = 0;  // of the current position, and behind the last occurrence
  std::size_t byte = 0;
  while (const auto match = search.next()) {
    unit += isAscii() ? match->from - byte : utf8::unitCount(searched.characters.substr(byte, match->from - byte));
    byte = match->from;
    const NSUInteger first = unit - (wanted.low != 0 ? 1 : 0);
    if (unit < (wanted.low != 0 ? end + 1 : end) || !searched.hasBeside(wanted, *match)) continue;
    found.push_back({first, units});
    end = first + units;
  }
  return found;
}

std::vector<NSString> NSString::componentsSeparatedBy(const NSString& separator) const {
  std::vector<NSString> components;
  NSUInteger from = 0;
  const NSUInteger units = length();
  for (const NSRange& match : matches(separator, NSLiteralSearch)) {
    components.push_back(slice(from, match.location));
    from = NSMaxRange(match);
  }
  components.push_back(slice(from, units));
  return components;
}

NSString NSString::stringByReplacingOccurrencesOfString(const NSString& target, const NSString& replacement,
                                                        NSStringCompareOptions options) const {
  const bool ignoresCase = (options & NSCaseInsensitiveSearch) != 0;
  const std::vector<NSRange> found = matches(target, ignoresCase ? NSCaseInsensitiveSearch : NSLiteralSearch);
  if (found.empty()) return *this;
  NSMutableString result;
  NSUInteger from = 0;
  for (const NSRange& match : found) {
    result.appendString(slice(from, match.location));
    result.appendString(replacement);
    from = NSMaxRange(match);
  }
  result.appendString(slice(from, length()));
  return result.string();
}

NSString NSString::stringByTrimming() const {
  const std::string_view text = view();
  std::size_t from = 0, to = text.size();
  while (from < to) {
    const utf8::Character first = utf8::decode(text.data() + from);
    if (!isSpaceOrLineEnd(first.point)) break;
    from += first.size;
  }
  while (to > from) {
    std::size_t last = to - 1;
    while (utf8::isContinuation(text[last])) --last;
    if (!isSpaceOrLineEnd(utf8::decode(text.data() + last).point)) break;
    to = last;
  }
  return sliceBytes(from, to);
}

}  // namespace norvik
