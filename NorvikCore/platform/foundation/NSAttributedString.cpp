#include "NorvikCore/platform/foundation/NSAttributedString.h"

#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/foundation/internal/AttributeRuns.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/values/NSException.h"

#include <algorithm>
#include <string>
#include <utility>

namespace norvik {

constinit const NSString NSFontAttributeName = "NSFont";
constinit const NSString NSForegroundColorAttributeName = "NSColor";
constinit const NSString NSBackgroundColorAttributeName = "NSBackgroundColor";
constinit const NSString NSUnderlineStyleAttributeName = "NSUnderline";
constinit const NSString NSLinkAttributeName = "NSLink";

namespace {

using detail::AttributeRuns;

const Ref<NSDictionary>& noAttributes() {
  return kernel::madeOnce([] { return new Ref<NSDictionary>(NSDictionary::dictionary()); });
}

[[noreturn]] void raiseDamaged() {
  NSException::raise(NSInvalidUnarchiveOperationException, "the runs of an attributed text do not cover it");
}

/// A dictionary that stays the same even if the given one is changed.
Ref<NSDictionary> kept(const Ref<NSDictionary>& attributes) { return attributes ? attributes->copy() : noAttributes(); }

std::vector<AttributeRun> kept(std::vector<AttributeRun> runs) {
  for (AttributeRun& run : runs) run.attributes = kept(run.attributes);
  return runs;
}

std::vector<AttributeRun> oneRun(NSUInteger length, Ref<NSDictionary> attributes) {
  std::vector<AttributeRun> runs;
  if (length > 0) runs.push_back({length, std::move(attributes)});
  return runs;
}

bool hasAll(const NSDictionary& present, const NSDictionary& attributes) {
  return std::ranges::all_of(attributes, [&](const NSDictionary::Entry& entry) {
    const Value* value = present.find(entry.key);
    return value && value->isIdenticalTo(entry.value);
  });
}

/// Wraps a change of attributes so that it is computed once for neighbours that share a dictionary.
template <class Change>
auto rememberingTheLast(Change change) {
  return [change, before = Ref<NSDictionary>(), after = Ref<NSDictionary>()](const Ref<NSDictionary>& present) mutable {
    if (before != present) {
      after = change(present);
      before = present;
    }
    return after;
  };
}

}  // namespace

NSAttributedString::NSAttributedString() : runs_(new AttributeRuns) {}

NSAttributedString::NSAttributedString(NSString string, const Ref<NSDictionary>& attributes)
    : string_(std::move(string)), runs_(new AttributeRuns(oneRun(string_.length(), kept(attributes)))) {}

NSAttributedString::NSAttributedString(NSString string, std::vector<AttributeRun> runs)
    : NSAttributedString(std::move(string), AttributeRuns(kept(std::move(runs)))) {
  if (length() == string_.length()) return;
  NSException::raise(NSRangeException, "runs of " + std::to_string(length()) + " units for a text of " +
                                           std::to_string(string_.length()) + " units");
}

NSAttributedString::NSAttributedString(NSString string, AttributeRuns runs)
    : string_(std::move(string)), runs_(new AttributeRuns(std::move(runs))) {}

NSAttributedString::~NSAttributedString() { delete runs_; }

Ref<NSAttributedString> NSAttributedString::attributedStringWithString(NSString string,
                                                                       const Ref<NSDictionary>& attributes) {
  return make<NSAttributedString>(std::move(string), attributes);
}

NSUInteger NSAttributedString::length() const noexcept { return runs_->length(); }

void NSAttributedString::checkRange(NSRange range) const {
  const NSUInteger size = length();
  if (range.location <= size && range.length <= size - range.location) return;
  NSException::raise(NSRangeException, "the range {" + std::to_string(range.location) + ", " +
                                           std::to_string(range.length) + "} is beyond an attributed text of " +
                                           std::to_string(size) + " units");
}

Ref<NSDictionary> NSAttributedString::attributesAtIndex(NSUInteger index, NSRange* run) const {
  checkRange({index, 1});
  const AttributeRuns::Place place = runs_->at(index);
  if (run) *run = place.range;
  return place.attributes;
}

Value NSAttributedString::attribute_atIndex(const NSString& name, NSUInteger index) const {
  return attributesAtIndex(index)->objectForKey(name);
}

Ref<NSAttributedString> NSAttributedString::attributedSubstringFromRange(NSRange range) const {
  checkRange(range);
  return make<NSAttributedString>(string().substringWithRange(range), runs_->part(range));
}

std::vector<AttributeRun> NSAttributedString::runsOf(const NSAttributedString& text) {
  return text.runs_->part({0, text.length()});
}

NSAttributedString::Iterator NSAttributedString::begin() const { return Iterator(*this, 0); }

NSAttributedString::Iterator NSAttributedString::end() const { return Iterator(*this, length()); }

NSAttributedString::Iterator::Iterator(const NSAttributedString& text, NSUInteger from)
    : text_(&text), changes_(text.changes_), run_{{from, 0}, nullptr} {
  if (from >= text.length()) return;
  const AttributeRuns::Place place = text.runs_->at(from);
  run_ = {place.range, place.attributes};
}

NSAttributedString::Iterator& NSAttributedString::Iterator::operator++() {
  if (text_->changes_ != changes_) detail::raiseMutated(*text_);
  return *this = Iterator(*text_, NSMaxRange(run_.range));
}

bool NSAttributedString::isEqual(const NSObject& other) const {
  const auto* text = dynamic_cast<const NSAttributedString*>(&other);
  if (text == this) return true;
  if (!text || length() != text->length() || string() != text->string()) return false;
  for (NSUInteger unit = 0; unit < length();) {
    const AttributeRuns::Place here = runs_->at(unit), there = text->runs_->at(unit);
    if (!detail::sameAttributes(here.attributes, there.attributes)) return false;
    unit = std::min(NSMaxRange(here.range), NSMaxRange(there.range));
  }
  return true;
}

std::size_t NSAttributedString::hash() const { return std::hash<NSString>()(string()); }

NSString NSAttributedString::description() const {
  const NSString whole = string();
  NSMutableString text;
  for (const auto& [range, attributes] : *this) {
    text.appendString(whole.substringWithRange(range));
    text.appendString(attributes->description());
  }
  return text.string();
}

Ref<NSAttributedString> NSAttributedString::copy() const { return ref(const_cast<NSAttributedString&>(*this)); }

Ref<NSMutableAttributedString> NSAttributedString::mutableCopy() const {
  return make<NSMutableAttributedString>(string(), runsOf(*this));
}

/// The runs are an array with the end and the attributes of each run in turn.
void NSAttributedString::encodeWithCoder(NSCoder& coder) const {
  const auto runs = NSMutableArray::array();
  for (const auto& [range, attributes] : *this) {
    runs->addObject(NSMaxRange(range));
    runs->addObject(attributes);
  }
  coder.encodeObject(string(), "string");
  coder.encodeObject(runs, "runs");
}

bool NSAttributedString::initWithCoder(NSCoder& coder) {
  string_ = coder.decode<NSString>("string");
  const auto ends = coder.decode<Ref<NSArray>>("runs");
  std::vector<AttributeRun> runs;
  NSUInteger start = 0;
  for (NSUInteger i = 0; ends && i + 1 < ends->count(); i += 2) {
    const auto end = (*ends)[i].as<NSUInteger>();
    const auto attributes = (*ends)[i + 1].as<Ref<NSDictionary>>();
    if (end <= start || !attributes) raiseDamaged();
    runs.push_back({end - start, kept(attributes)});
    start = end;
  }
  if (start != string_.length()) raiseDamaged();
  *runs_ = AttributeRuns(std::move(runs));
  return true;
}

NSMutableAttributedString::~NSMutableAttributedString() = default;

Ref<NSMutableAttributedString> NSMutableAttributedString::attributedStringWithString(
    NSString string, const Ref<NSDictionary>& attributes) {
  return make<NSMutableAttributedString>(std::move(string), attributes);
}

NSString NSMutableAttributedString::string() const {
  if (!stringIsCurrent_) {
    string_ = buffer_.string();
    stringIsCurrent_ = true;
  }
  return string_;
}

void NSMutableAttributedString::replace(NSRange range, const NSString& text, std::vector<AttributeRun> runs) {
  checkRange(range);
  const NSUInteger newLength = text.length();
  if (range.length == 0 && newLength == 0) return;
  if (!bufferIsCurrent_) {
    buffer_.setString(string_);
    bufferIsCurrent_ = true;
  }
  // The memory for the text is reserved first, so that the runs never change without the text.
  buffer_.reserve(buffer_.view().size() + text.view().size());
  const bool atTheEnd = range.location == length();
  runs_->replace(range, std::move(runs));
  stringIsCurrent_ = false;
  string_ = NSString();
  if (atTheEnd) {
    buffer_.appendString(text);
  } else {
    buffer_.replaceCharactersInRange(range, text);
  }
  noteEdit(range, newLength);
}

template <class Change>
void NSMutableAttributedString::changeRuns(NSRange range, Change&& change) {
  checkRange(range);
  if (range.length == 0) return;
  runs_->change(range, rememberingTheLast(std::forward<Change>(change)));
  noteEdit(range, range.length);
}

void NSMutableAttributedString::addAttributes(const NSDictionary& attributes, NSRange range) {
  changeRuns(range, [&](const Ref<NSDictionary>& present) -> Ref<NSDictionary> {
    if (hasAll(*present, attributes)) return present;
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
    if (!present->find(name)) return present;
    const auto others = present->mutableCopy();
    others->removeObjectForKey(name);
    return others->copy();
  });
}

void NSMutableAttributedString::setAttributes(const Ref<NSDictionary>& attributes, NSRange range) {
  checkRange(range);
  if (range.length == 0) return;
  runs_->replace(range, oneRun(range.length, kept(attributes)));
  noteEdit(range, range.length);
}

void NSMutableAttributedString::appendAttributedString(const NSAttributedString& text) {
  replaceCharactersInRange({length(), 0}, text);
}

void NSMutableAttributedString::insertAttributedString(const NSAttributedString& text, NSUInteger index) {
  replaceCharactersInRange({index, 0}, text);
}

void NSMutableAttributedString::replaceCharactersInRange(NSRange range, const NSAttributedString& text) {
  const NSString units = text.string();  // copied, because `text` may be this object
  replace(range, units, runsOf(text));
}

void NSMutableAttributedString::setAttributedString(const NSAttributedString& text) {
  replaceCharactersInRange({0, length()}, text);
}

void NSMutableAttributedString::replaceCharactersInRange(NSRange range, const NSString& text) {
  checkRange(range);
  const NSUInteger like = range.length > 0 || range.location == 0 ? range.location : range.location - 1;
  replace(range, text, oneRun(text.length(), like < length() ? runs_->at(like).attributes : noAttributes()));
}

void NSMutableAttributedString::deleteCharactersInRange(NSRange range) { replace(range, NSString(), {}); }

void NSMutableAttributedString::beginEditing() { ++batches_; }

void NSMutableAttributedString::endEditing() {
  if (batches_ == 0) NSException::raise(NSInternalInconsistencyException, "endEditing() without a beginEditing()");
  if (--batches_ > 0 || !wasEdited_) return;
  wasEdited_ = false;
  edited(editedRange_, changeInLength_);
}

void NSMutableAttributedString::noteEdit(NSRange replaced, NSUInteger newLength) {
  ++changes_;
  const auto growth = static_cast<NSInteger>(newLength - replaced.length);
  if (wasEdited_) {
    const NSRange both = NSUnionRange(editedRange_, replaced);
    editedRange_ = {both.location, both.length + newLength - replaced.length};
    changeInLength_ += growth;
  } else {
    editedRange_ = {replaced.location, newLength};
    changeInLength_ = growth;
  }
  wasEdited_ = batches_ > 0;
  if (!wasEdited_) edited(editedRange_, changeInLength_);
}

void NSMutableAttributedString::edited(NSRange, NSInteger) {}

Ref<NSAttributedString> NSMutableAttributedString::copy() const {
  return make<NSAttributedString>(string(), runsOf(*this));
}

}  // namespace norvik
