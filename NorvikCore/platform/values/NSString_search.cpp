// Finding, splitting, replacing and trimming.
#include "NorvikCore/platform/values/NSMutableString.h"
#include "NorvikCore/platform/values/NSString.h"

#include "NorvikCore/platform/values/internal/CaseFolding.h"
#include "NorvikCore/platform/values/internal/StringHalves.h"
#include "NorvikCore/platform/values/internal/StringIndex.h"

#include <utility>

namespace norvik {
namespace {

constexpr std::size_t npos = std::string_view::npos;

/// Part of a text, in bytes.
struct Match {
  std::size_t from = npos, to = npos;
};

/// Where the text after a prefix equal to `wanted` but for case begins; npos where it has no such prefix.
std::size_t foldedPrefix(std::string_view text, std::string_view wanted) noexcept {
  std::size_t at = 0;
  for (std::size_t i = 0; i < wanted.size();) {
    if (at == text.size()) return npos;
    const utf8::Character a = utf8::decode(text.data() + at), b = utf8::decode(wanted.data() + i);
    if (detail::foldCase(a.point) != detail::foldCase(b.point)) return npos;
    at += a.size;
    i += b.size;
  }
  return at;
}

/// The first letter rules most places out; a search from the end begins there.
Match foldedMatch(std::string_view text, std::string_view wanted, NSStringCompareOptions options) noexcept {
  const bool backwards = (options & NSBackwardsSearch) != 0, anchored = (options & NSAnchoredSearch) != 0;
  const char32_t first = detail::foldCase(utf8::decode(wanted.data()).point);
  const auto sizeAt = [&](std::size_t at) noexcept {
    if (detail::foldCase(utf8::decode(text.data() + at).point) != first) return npos;
    return foldedPrefix(text.substr(at), wanted);
  };
  if (!backwards) {
    for (std::size_t at = 0; at < text.size(); at += utf8::decode(text.data() + at).size) {
      if (const std::size_t size = sizeAt(at); size != npos) return {at, at + size};
      if (anchored) break;
    }
    return {};
  }
  for (std::size_t at = text.size(); at > 0;) {
    do --at;
    while (utf8::isContinuation(text[at]));
    const std::size_t size = sizeAt(at);
    if (size != npos && (!anchored || at + size == text.size())) return {at, at + size};
  }
  return {};
}

template <class View>
std::size_t literalMatch(View text, View wanted, NSStringCompareOptions options) noexcept {
  const bool backwards = (options & NSBackwardsSearch) != 0;
  if ((options & NSAnchoredSearch) == 0) return backwards ? text.rfind(wanted) : text.find(wanted);
  if (backwards) return text.ends_with(wanted) ? text.size() - wanted.size() : npos;
  return text.starts_with(wanted) ? 0 : npos;
}

Match matchInBytes(std::string_view text, std::string_view wanted, NSStringCompareOptions options) noexcept {
  if ((options & NSCaseInsensitiveSearch) != 0) return foldedMatch(text, wanted, options);
  const std::size_t at = literalMatch(text, wanted, options);
  return at == npos ? Match{} : Match{at, at + wanted.size()};
}

/// Text that begins or ends with half a character may be found inside one, so it is looked for among units.
bool isFoundAmongUnits(const NSString& text) noexcept {
  return detail::beginsWithHalf(text.view()) || detail::endsWithHalf(text.view());
}

/// The units, folded where case does not count.
std::u16string unitsOf(const NSString& text, NSStringCompareOptions options) {
  std::u16string units = text.toUtf16();
  if ((options & NSCaseInsensitiveSearch) == 0) return units;
  for (char16_t& unit : units) {
    const char32_t folded = detail::foldCase(unit);
    if (folded < 0x10000) unit = static_cast<char16_t>(folded);
  }
  return units;
}

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
  if (text.empty()) return none;
  const detail::StringPlace from = place(range.location), to = place(NSMaxRange(range));
  if (from.secondHalf || to.secondHalf || isFoundAmongUnits(text)) {
    const std::u16string units = unitsOf(substringWithRange(range), options), wanted = unitsOf(text, options);
    const std::size_t at = literalMatch(std::u16string_view(units), std::u16string_view(wanted), options);
    return at == npos ? none : NSRange{range.location + at, wanted.size()};
  }
  const Match match = matchInBytes(view().substr(from.byte, to.byte - from.byte), text.view(), options);
  if (match.from == npos) return none;
  const NSUInteger first = unitAtByte(from.byte + match.from);
  return {first, unitAtByte(from.byte + match.to) - first};
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
  if (isFoundAmongUnits(text)) {  // those of the whole text are made once
    const std::u16string units = unitsOf(*this, options), wanted = unitsOf(text, options);
    for (std::size_t at = units.find(wanted); at != npos; at = units.find(wanted, at + wanted.size())) {
      found.push_back({at, wanted.size()});
    }
    return found;
  }
  NSUInteger from = 0;
  const NSUInteger units = length();
  while (true) {
    const NSRange match = rangeOfString(text, options, {from, units - from});
    if (match.length == 0) return found;
    found.push_back(match);
    from = NSMaxRange(match);
  }
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
