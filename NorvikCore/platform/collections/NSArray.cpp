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

NSArray::NSArray() noexcept = default;

NSArray::NSArray(std::vector<Value> elements) : elements_(std::move(elements)) {
  for (const Value& element : elements_) {
    if (element.isAbsent()) detail::checkPresent(element, "NSArray");
  }
}

NSArray::~NSArray() { detail::releaseAll(std::move(elements_)); }

Ref<NSArray> NSArray::array() { return make<NSArray>(); }

Ref<NSArray> NSArray::arrayWith(std::initializer_list<Value> objects) {
  return make<NSArray>(std::vector<Value>(objects));
}

Ref<NSArray> NSArray::arrayWithArray(const NSArray& other) { return make<NSArray>(other.values()); }

std::span<const Value> NSArray::elements() const noexcept { return {elements_.data() + first_, count()}; }

std::vector<Value> NSArray::values() const { return {elements().begin(), elements().end()}; }

std::size_t NSArray::indexOfObject(const Value& object) const {
  const auto all = elements();
  const auto found = std::ranges::find(all, object);
  return found == all.end() ? NSNotFound : static_cast<std::size_t>(found - all.begin());
}

std::size_t NSArray::indexOfObjectIdenticalTo(const Value& object) const noexcept {
  for (std::size_t i = 0; i < count(); ++i) {
    if (elements()[i].isIdenticalTo(object)) return i;
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
  sum.reserve(count() + 1);
  sum.insert(sum.end(), elements().begin(), elements().end());
  sum.push_back(object);
  return make<NSArray>(std::move(sum));
}

Ref<NSArray> NSArray::arrayByAddingObjectsFromArray(const NSArray& other) const {
  std::vector<Value> sum;
  sum.reserve(count() + other.count());
  for (const NSArray* each : {this, &other}) sum.insert(sum.end(), each->elements().begin(), each->elements().end());
  return make<NSArray>(std::move(sum));
}

Ref<NSArray> NSArray::reversedArray() const {
  return make<NSArray>(std::vector<Value>(elements().rbegin(), elements().rend()));
}

Ref<NSArray> NSArray::sortedArray() const {
  return sortedArrayUsingComparator([](const Value& a, const Value& b) { return a.compare(b); });
}

NSString NSArray::componentsJoinedByString(const NSString& separator) const {
  std::u16string units;
  std::string text;
  bool isWellFormed = separator.isWellFormed();
  const auto all = elements();
  for (std::size_t i = 0; i < all.size(); ++i) {
    const NSString element = all[i].description();
    isWellFormed = isWellFormed && element.isWellFormed();
    if (i > 0) text += separator.view();
    text += element.view();
  }
  if (isWellFormed) return NSString(text);
  for (std::size_t i = 0; i < all.size(); ++i) {  // surrogate halves may become adjacent
    if (i > 0) units += separator.toUtf16();
    units += all[i].description().toUtf16();
  }
  return NSString::fromUtf16(units);
}

Ref<NSArray> NSArray::copy() const { return ref(const_cast<NSArray&>(*this)); }

Ref<NSMutableArray> NSArray::mutableCopy() const { return make<NSMutableArray>(values()); }

bool NSArray::isEqual(const NSObject& other) const {
  if (this == &other) return true;
  const auto* array = dynamic_cast<const NSArray*>(&other);
  if (!array || count() != array->count()) return false;
  detail::Comparison comparison(*this, other);
  return comparison.isKnown() || comparison.conclude(std::ranges::equal(elements(), array->elements()));
}

std::size_t NSArray::hash() const {
  std::size_t hash = count();
  for (const Value& element : elements()) hash = hash * 31 + detail::elementHash(element);
  return hash;
}

NSString NSArray::description() const { return detail::describeCollection(*this); }

void NSArray::giveUpRoom() noexcept {
  elements_.erase(elements_.begin(), elements_.begin() + static_cast<std::ptrdiff_t>(first_));
  first_ = 0;
}

void NSArray::raiseIndex(const char* operation, std::size_t index) const {
  const std::string bounds = count() == 0 ? "an empty array" : "bounds [0 .. " + std::to_string(count() - 1) + "]";
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
