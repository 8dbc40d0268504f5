#include "NorvikCore/Categories/NSArray+Norvik.h"

#include "NorvikCore/Categories/NSString+Norvik.h"
#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/collections/NSSet.h"
#include "NorvikCore/platform/values/NSMutableString.h"

#include <algorithm>

namespace norvik {

NSString nk_componentsJoinedByString(const NSArray& array, const NSString& separator,
                                     const Ref<NSDictionary>& options) {
  const auto text = [&](const char* name, const NSString& otherwise) {
    return options ? options->objectForKey(name).as<std::optional<NSString>>().value_or(otherwise) : otherwise;
  };
  const NSString suffix = text("suffix", NSString()), last = text("joinLastWith", separator);
  const bool skipsEmpty =
      options && options->objectForKey("skipEmptyComponents").as<std::optional<bool>>().value_or(false);
  NSMutableString joined;
  std::size_t written = 0;
  detail::walk(
      array, [](const Value& element) { return element.description(); },
      [&](const Value&, const NSString& component) {
        if (skipsEmpty && isEmpty(component)) return true;
        if (written > 0) joined.appendString(written == array.count() - 1 ? last : separator);
        joined.appendString(component);
        joined.appendString(suffix);
        ++written;
        return true;
      });
  return joined.string();
}

Ref<NSArray> nk_subarrayFromIndex(const NSArray& array, std::size_t index, std::size_t maxLength) {
  const std::size_t from = std::min(index, array.count());
  return array.subarrayWithRange({from, std::min(maxLength, array.count() - from)});
}

Ref<NSMutableArray> nk_removeNulls(const NSArray& array) {
  std::vector<Value> kept;
  for (const Value& element : array) {
    if (!element.isNull()) kept.push_back(element);
  }
  return make<NSMutableArray>(std::move(kept));
}

Ref<NSArray> nk_moveItemsToStart(const NSArray& array, const NSArray& items) {
  const auto moved = NSSet::setWithArray(items);
  std::vector<Value> elements(items.elements().begin(), items.elements().end());
  detail::walk(
      array,
      [&](const Value& element) {
        const Value kept = element;  // hashing or comparing it may change the array
        return moved->containsObject(kept);
      },
      [&](const Value& element, bool isMoved) {
        if (!isMoved) elements.push_back(element);
        return true;
      });
  return make<NSArray>(std::move(elements));
}

Ref<NSArray> nk_splitLower(const NSArray& array) { return array.subarrayWithRange({0, array.count() / 2}); }

Ref<NSArray> nk_splitUpper(const NSArray& array) {
  return array.subarrayWithRange({array.count() / 2, array.count() - array.count() / 2});
}

}  // namespace norvik
