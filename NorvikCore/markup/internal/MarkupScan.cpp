#include "NorvikCore/markup/internal/MarkupScan.h"

#include "NorvikCore/platform/foundation/NSStringCase.h"
#include "NorvikCore/platform/values/Format.h"
#include "NorvikCore/platform/values/Utf8.h"

#include <algorithm>
#include <new>
#include <utility>

namespace norvik::detail {
namespace {

constexpr std::string_view blanksTabsAndNewlines = " \t\n\v\f\r";
constexpr char escape = '\001';

constexpr char lowered(char c) noexcept { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

NSString shown(std::string_view name) { return name.data() ? textOfBytes(name) : NSString("(null)"_ns); }

class Scan {
 public:
  Scan(const NSString& source, bool tags) : source_(source), rest_(source.view()), keepsTags_(tags) {
    bytes_.reserve(source.view().size());
  }

  MarkupScan run() {
    while (!scan_.fault && !rest_.atEnd()) step();
    endStretch();
    if (!scan_.fault && !open_.empty()) scan_.fault = stillOpen();
    if (!scan_.fault) scan_.text = source_.isWellFormed() ? NSString(bytes_) : textOfBytes(bytes_);
    return std::move(scan_);
  }

 private:
  void step() {
    const std::string_view text = rest_.upTo('<');
    append(text);
    if (rest_.atEnd()) return;
    rest_.skip('<');
    if (text.ends_with(escape)) {
      bytes_.back() = '<';
      return;
    }
    const std::string_view body = rest_.upTo('>');
    if (rest_.atEnd()) {
      append(body);
      return;
    }
    rest_.skip('>');
    take(body);
  }

  void append(std::string_view text) {
    bytes_ += text;
    scan_.length += source_.isAscii() ? text.size() : utf8::unitCount(text);
  }

  void take(std::string_view body) {
    ByteScanner inner(body);
    inner.skip(blanksTabsAndNewlines);
    std::string_view name = inner.upTo(blanksAndTabs);
    if (name.empty()) name = {};
    if (!isEndingName(name)) {
      begin(name, inner.rest());
    } else if (!open_.empty() && scan_.tags[open_.back()].name.data() &&
               isEndedBy(scan_.tags[open_.back()].name, name)) {
      finish();
    } else {
      const NSString expected = shown(open_.empty() ? std::string_view() : scan_.tags[open_.back()].name);
      scan_.fault =
          stringWithFormat("String had ending tag %@ when we expected ending tag %@ or new tag", shown(name), expected);
    }
  }

  void begin(std::string_view name, std::string_view rawAttributes) {
    endStretch();
    if (scan_.tags.size() == MarkupScan::none) throw std::bad_alloc();
    scan_.tags.push_back(
        {name, rawAttributes, scan_.length, 0, innermost(), static_cast<MarkupScan::Index>(scan_.stretches.size())});
    open_.push_back(static_cast<MarkupScan::Index>(scan_.tags.size() - 1));
  }

  void finish() {
    endStretch();
    const MarkupScan::Index tag = open_.back();
    open_.pop_back();
    if (keepsTags_) {
      scan_.tags[tag].end = scan_.length;
      scan_.finished.push_back(tag);
    } else {
      scan_.tags.pop_back();
    }
  }

  [[nodiscard]] MarkupScan::Index innermost() const noexcept { return open_.empty() ? MarkupScan::none : open_.back(); }

  void endStretch() {
    if (!keepsTags_ || scan_.length == stretchStart_) return;
    scan_.stretches.push_back({scan_.length - stretchStart_, innermost()});
    stretchStart_ = scan_.length;
  }

  [[nodiscard]] NSString stillOpen() const {
    std::string names;
    for (const MarkupScan::Index tag : open_) {
      if (tag != open_.front()) names += ", ";
      names += scan_.tags[tag].name.data() ? scan_.tags[tag].name : "(null)";
    }
    return stringWithFormat("Reached end of string with %lu tags remaining (%@)", open_.size(), textOfBytes(names));
  }

  const NSString& source_;
  ByteScanner rest_;
  const bool keepsTags_;
  std::string bytes_;
  MarkupScan scan_;
  std::vector<MarkupScan::Index> open_;
  NSUInteger stretchStart_ = 0;
};

}  // namespace

NSString textOfBytes(std::string_view bytes) {
  if (utf8::isValid(bytes)) return NSString(bytes);
  std::u16string units;
  for (std::size_t at = 0; at < bytes.size();) {
    const utf8::Character character = utf8::decode(bytes.data() + at);
    at += character.size;
    if (character.point < 0x10000) {
      units += static_cast<char16_t>(character.point);
    } else {
      units += {utf8::highHalf(character.point), utf8::lowHalf(character.point)};
    }
  }
  return NSString::fromUtf16(units);
}

bool isEndedBy(std::string_view name, std::string_view ending) {
  ending.remove_prefix(1);
  if (name == ending) return true;
  if (utf8::isAscii(name) && utf8::isAscii(ending)) {
    return std::ranges::equal(name, ending, {}, lowered, lowered);
  }
  return lowercaseString(textOfBytes(name)) == lowercaseString(textOfBytes(ending));
}

MarkupScan scanMarkup(const NSString& source, bool tags) {
  Scan scan(source, tags);
  return scan.run();
}

}  // namespace norvik::detail
