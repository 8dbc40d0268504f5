#include "NorvikCore/platform/collections/NSArray.h"

#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "NorvikCore/platform/collections/internal/CollectionAccess.h"
#include "NorvikCore/platform/values/NSException.h"

#include <algorithm>

namespace norvik {

std::vector<Value> detail::sorted(std::span<const Value> elements, const void* compare, CompareCall call) {
  std::vector<Value> result(elements.begin(), elements.end());
  std::ranges::stable_sort(result,
                           [&](const Value& a, const Value& b) { return call(compare, a, b) == NSOrderedAscending; });
  return result;
}

NSArray::NSArray(std::vector<Value> elements) : elements_(std::move(elements)) {
  for (const Value& element : elements_) detail::checkPresent(element, "NSArray");
}

NSArray::~NSArray() { detail::releaseAll(std::move(elements_)); }

std::size_t NSArray::indexOfObject(const Value& object) const {
  const auto found = std::ranges::find(elements_, object);
  return found == elements_.end() ? NSNotFound : static_cast<std::size_t>(found - elements_.begin());
}

std::size_t NSArray::indexOfObjectIdenticalTo(const Value& object) const noexcept {
  for (std::size_t i = 0; i < elements_.size(); ++i) {
    if (elements_[i].isIdenticalTo(object)) return i;
  }
  return NSNotFound;
}

Ref<NSArray> NSArray::subarrayWithRange(NSRange range) const {
  checkRange("subarrayWithRange", range);
  const auto part = elements().subspan(range.location, range.length);
  return make<NSArray>(std::vector<Value>(part.begin(), part.end()));
}

Ref<NSArray> NSArray::arrayByAddingObject(const Value& object) const {
  detail::checkPresent(object, "arrayByAddingObject");
  std::vector<Value> sum;
  sum.reserve(elements_.size() + 1);
  sum = elements_;
  sum.push_back(object);
  return make<NSArray>(std::move(sum));
}

Ref<NSArray> NSArray::arrayByAddingObjectsFromArray(const NSArray& other) const {
  std::vector<Value> sum;
  sum.reserve(elements_.size() + other.elements_.size());
  sum.insert(sum.end(), elements_.begin(), elements_.end());
  sum.insert(sum.end(), other.elements_.begin(), other.elements_.end());
  return make<NSArray>(std::move(sum));
}

Ref<NSArray> NSArray::reversedArray() const {
  return make<NSArray>(std::vector<Value>(elements_.rbegin(), elements_.rend()));
}

Ref<NSArray> NSArray::sortedArray() const {
  return sortedArrayUsingComparator([](const Value& a, const Value& b) { return a.compare(b); });
}

NSString NSArray::componentsJoinedByString(const NSString& separator) const {
  std::u16string units;
  std::string text;
  bool isWellFormed = separator.isWellFormed();
  for (std::size_t i = 0; i < elements_.size(); ++i) {
    const NSString element = elements_[i].description();
    isWellFormed = isWellFormed && element.isWellFormed();
    if (i > 0) text += separator.view();
    text += element.view();
  }
  if (isWellFormed) return NSString(text);
  for (std::size_t i = 0; i < elements_.size(); ++i) {  // halves of characters may meet
    if (i > 0) units += separator.toUtf16();
    units += elements_[i].description().toUtf16();
  }
  return NSString::fromUtf16(units);
}

Ref<NSArray> NSArray::copy() const { return ref(const_cast<NSArray&>(*this)); }

Ref<NSMutableArray> NSArray::mutableCopy() const { return make<NSMutableArray>(elements_); }

bool NSArray::isEqual(const NSObject& other) const {
  if (this == &other) return true;
  const auto* array = dynamic_cast<const NSArray*>(&other);
  if (!array || count() != array->count()) return false;
  detail::Comparison comparison(*this, other);
  return comparison.isKnown() || comparison.conclude(elements_ == array->elements_);
}

std::size_t NSArray::hash() const {
  std::size_t hash = elements_.size();
  for (const Value& element : elements_) hash = hash * 31 + detail::elementHash(element);
  return hash;
}

NSString NSArray::description() const { return detail::describeCollection(*this); }

void NSArray::raiseIndex(const char* operation, std::size_t index) const {
  const std::string bounds = elements_.empty() ? "an empty array" : "bounds [0 .. " + std::to_string(count() - 1) + "]";
  NSException::raise(NSRangeException, "-[" + classObject().name().str() + " " + operation + "]: index " +
                                           std::to_string(index) + " beyond " + bounds);
}

void NSArray::checkRange(const char* operation, NSRange range) const {
  if (range.location <= count() && range.length <= count() - range.location) return;
  NSException::raise(NSRangeException, "-[" + classObject().name().str() + " " + operation + "]: range {" +
                                           std::to_string(range.location) + ", " + std::to_string(range.length) +
                                           "} beyond the count of " + std::to_string(count()));
}

}  // namespace norvik
