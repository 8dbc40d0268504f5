#include "NorvikCore/platform/foundation/NSAttributedString.h"

#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/values/NSException.h"

#include <algorithm>

namespace norvik {

constinit const NSString NSFontAttributeName = "NSFont";
constinit const NSString NSForegroundColorAttributeName = "NSColor";
constinit const NSString NSBackgroundColorAttributeName = "NSBackgroundColor";
constinit const NSString NSUnderlineStyleAttributeName = "NSUnderline";
constinit const NSString NSLinkAttributeName = "NSLink";

namespace {

const Ref<NSDictionary>& noAttributes() {
  return kernel::madeOnce([] { return new Ref<NSDictionary>(NSDictionary::dictionary()); });
}

[[noreturn]] void raiseDamaged() {
  NSException::raise(NSInvalidUnarchiveOperationException, "the runs of an attributed text do not cover it");
}

/// A dictionary that stays as it is, whatever becomes of the given one.
Ref<NSDictionary> kept(const Ref<NSDictionary>& attributes) { return attributes ? attributes->copy() : noAttributes(); }

}  // namespace

NSAttributedString::NSAttributedString(NSString string, const Ref<NSDictionary>& attributes)
    : string_(std::move(string)) {
  if (!string_.empty()) runs_.push_back({string_.length(), kept(attributes)});
}

NSAttributedString::~NSAttributedString() = default;

Ref<NSAttributedString> NSAttributedString::attributedStringWithString(NSString string,
                                                                       const Ref<NSDictionary>& attributes) {
  return make<NSAttributedString>(std::move(string), attributes);
}

std::size_t NSAttributedString::runAt(NSUInteger index) const noexcept {
  const auto run = std::ranges::upper_bound(runs_, index, {}, &Run::end);
  return static_cast<std::size_t>(run - runs_.begin());
}

void NSAttributedString::checkRange(NSRange range) const {
  const NSUInteger size = length();
  if (range.location <= size && range.length <= size - range.location) return;
  NSException::raise(NSRangeException, "the range {" + std::to_string(range.location) + ", " +
                                           std::to_string(range.length) + "} is beyond an attributed text of " +
                                           std::to_string(size) + " units");
}

Ref<NSDictionary> NSAttributedString::attributesAtIndex(NSUInteger index, NSRange* run) const {
  checkRange({index, 1});
  const std::size_t found = runAt(index);
  const NSUInteger start = found == 0 ? 0 : runs_[found - 1].end;
  if (run) *run = {start, runs_[found].end - start};
  return runs_[found].attributes;
}

Value NSAttributedString::attribute_atIndex(const NSString& name, NSUInteger index) const {
  return attributesAtIndex(index)->objectForKey(name);
}

Ref<NSAttributedString> NSAttributedString::attributedSubstringFromRange(NSRange range) const {
  checkRange(range);
  auto part = make<NSAttributedString>();
  part->string_ = string_.substringWithRange(range);
  const NSUInteger end = range.location + range.length;
  for (std::size_t i = runAt(range.location); i < runs_.size() && range.length > 0; ++i) {
    part->runs_.push_back({std::min(runs_[i].end, end) - range.location, runs_[i].attributes});
    if (runs_[i].end >= end) break;
  }
  return part;
}

bool NSAttributedString::isEqual(const NSObject& other) const {
  const auto* text = dynamic_cast<const NSAttributedString*>(&other);
  return text && string_ == text->string_ && std::ranges::equal(runs_, text->runs_, [](const Run& a, const Run& b) {
           return a.end == b.end && a.attributes->isEqual(*b.attributes);
         });
}

std::size_t NSAttributedString::hash() const { return std::hash<NSString>()(string_); }

NSString NSAttributedString::description() const {
  NSString text;
  NSUInteger start = 0;
  for (const Run& run : runs_) {
    text = text + string_.substringWithRange({start, run.end - start}) + run.attributes->description();
    start = run.end;
  }
  return text;
}

Ref<NSMutableAttributedString> NSAttributedString::mutableCopy() const {
  auto copy = make<NSMutableAttributedString>();
  copy->appendAttributedString(*this);
  return copy;
}

/// The runs are an array of each one's end and attributes in turn.
void NSAttributedString::encodeWithCoder(NSCoder& coder) const {
  const auto runs = NSMutableArray::array();
  for (const Run& run : runs_) {
    runs->addObject(run.end);
    runs->addObject(run.attributes);
  }
  coder.encodeObject(string_, "string");
  coder.encodeObject(runs, "runs");
}

bool NSAttributedString::initWithCoder(NSCoder& coder) {
  string_ = coder.decode<NSString>("string");
  const auto runs = coder.decode<Ref<NSArray>>("runs");
  NSUInteger start = 0;
  for (NSUInteger i = 0; runs && i + 1 < runs->count(); i += 2) {
    const auto end = (*runs)[i].as<NSUInteger>();
    const auto attributes = (*runs)[i + 1].as<Ref<NSDictionary>>();
    if (end <= start || !attributes) raiseDamaged();
    runs_.push_back({end, kept(attributes)});
    start = end;
  }
  if (start != length()) raiseDamaged();
  return true;
}

NSMutableAttributedString::~NSMutableAttributedString() = default;

Ref<NSMutableAttributedString> NSMutableAttributedString::attributedStringWithString(
    NSString string, const Ref<NSDictionary>& attributes) {
  return make<NSMutableAttributedString>(std::move(string), attributes);
}

void NSMutableAttributedString::splitAt(NSUInteger index) {
  const std::size_t run = runAt(index);
  const NSUInteger start = run == 0 ? 0 : runs_[run - 1].end;
  if (run == runs_.size() || start == index) return;
  runs_.insert(runs_.begin() + static_cast<std::ptrdiff_t>(run), {index, runs_[run].attributes});
}

void NSMutableAttributedString::joinEqualRuns() {
  std::vector<Run> joined;
  for (Run& run : runs_) {
    const NSUInteger start = joined.empty() ? 0 : joined.back().end;
    if (run.end == start) continue;
    if (!joined.empty() && joined.back().attributes->isEqual(*run.attributes)) {
      joined.back().end = run.end;
    } else {
      joined.push_back(std::move(run));
    }
  }
  runs_ = std::move(joined);
}

template <class Change>
void NSMutableAttributedString::changeRuns(NSRange range, Change&& change) {
  checkRange(range);
  if (range.length == 0) return;
  splitAt(range.location);
  splitAt(range.location + range.length);
  for (std::size_t i = runAt(range.location); i < runs_.size(); ++i) {
    runs_[i].attributes = change(runs_[i].attributes);
    if (runs_[i].end == range.location + range.length) break;
  }
  joinEqualRuns();
}

void NSMutableAttributedString::addAttributes(const NSDictionary& attributes, NSRange range) {
  changeRuns(range, [&](const Ref<NSDictionary>& present) -> Ref<NSDictionary> {
    const auto both = present->mutableCopy();
    both->addEntriesFromDictionary(attributes);
    return both->copy();
  });
}

void NSMutableAttributedString::addAttribute(const NSString& name, const Value& value, NSRange range) {
  addAttributes(*NSDictionary::dictionaryWithObject(value, name), range);
}

void NSMutableAttributedString::removeAttribute(const NSString& name, NSRange range) {
  changeRuns(range, [&](const Ref<NSDictionary>& present) -> Ref<NSDictionary> {
    const auto others = present->mutableCopy();
    others->removeObjectForKey(name);
    return others->copy();
  });
}

void NSMutableAttributedString::setAttributes(const Ref<NSDictionary>& attributes, NSRange range) {
  changeRuns(range, [only = kept(attributes)](const Ref<NSDictionary>&) { return only; });
}

void NSMutableAttributedString::appendAttributedString(const NSAttributedString& text) {
  // A copy first: the text to append may be this one.
  const auto whole = text.attributedSubstringFromRange({0, text.length()});
  NSUInteger at = 0;
  NSUInteger end = length();
  for (NSUInteger start = 0; start < whole->length(); start = at) {
    NSRange run;
    Ref<NSDictionary> attributes = whole->attributesAtIndex(start, &run);
    at = start + run.length;
    end += run.length;
    runs_.push_back({end, std::move(attributes)});
  }
  string_ = string_ + whole->string();
  joinEqualRuns();
}

void NSMutableAttributedString::replaceCharactersInRange(NSRange range, const NSString& text) {
  checkRange(range);
  Ref<NSDictionary> attributes = noAttributes();
  if (range.length > 0) {
    attributes = attributesAtIndex(range.location);
  } else if (range.location > 0) {
    attributes = attributesAtIndex(range.location - 1);
  }
  const auto before = attributedSubstringFromRange({0, range.location});
  const NSUInteger behind = range.location + range.length;
  const auto after = attributedSubstringFromRange({behind, length() - behind});
  string_ = NSString();
  runs_.clear();
  appendAttributedString(*before);
  appendAttributedString(*NSAttributedString::attributedStringWithString(text, attributes));
  appendAttributedString(*after);
}

}  // namespace norvik
