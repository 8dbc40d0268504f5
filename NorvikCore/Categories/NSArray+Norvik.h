// NorvikCore/Categories/NSArray+Norvik.h - joining, cutting, filtering and reordering arrays.
//
//   nk_componentsJoinedByString(*names, ", ", NSDictionary::dictionaryWithObject(" and ", "joinLastWith"));
//   // "Ann, Bob and Zoe"
//   nk_moveItemsToStart(*names, *NSArray::arrayWithObjects("Zoe"));      // Zoe, Ann, Bob
//
// The receiver does not change; results are new arrays. Linear. Any thread, as long as no thread changes the array.
#pragma once

#include "NorvikCore/Categories/NSMutableArray+Norvik.h"  // so that the type alone selects the nk_removeNulls
#include "NorvikCore/linq/Closure.h"
#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "NorvikCore/platform/export.h"

#include <cstddef>
#include <type_traits>
#include <utility>
#include <vector>

namespace norvik {

class NSDictionary;

/// The elements' descriptions, joined by the separator, which may be empty. The null marker is "<null>". Options, each
/// of which may be missing or null:
/// - "suffix", a text after each joined element, including the last;
/// - "joinLastWith", a text in place of the last separator;
/// - "skipEmptyComponents", a boolean: elements that hold only white space and line breaks are left out. If one is left
///   out, "joinLastWith" is not used. That is deliberate: it is used only when all elements of the array except one
///   have been written.
/// An option of another kind raises NSInvalidArgumentException.
[[nodiscard]] NK_EXPORT NSString nk_componentsJoinedByString(const NSArray& array, const NSString& separator,
                                                             const Ref<NSDictionary>& options = nullptr);

/// At most `maxLength` elements, starting at that index. The array is empty if the index is beyond the end.
[[nodiscard]] NK_EXPORT Ref<NSArray> nk_subarrayFromIndex(const NSArray& array, std::size_t index,
                                                          std::size_t maxLength);

/// The elements for which `predicate(element, index, stop)` is true, in order. If the predicate sets `stop`, the
/// elements after the current one are left out; the result for the current element still counts. The predicate takes an
/// element as a `const Value&` or by its own class, `[](const Payslip& slip, std::size_t, bool&)`; an element of
/// another class raises NSInvalidArgumentException. The predicate may release the array. If it changes the array,
/// NSGenericException is raised.
template <class Predicate>
[[nodiscard]] Ref<NSArray> nk_filteredArrayUsingBlock(const NSArray& array, Predicate&& predicate) {
  std::vector<Value> kept;
  std::size_t index = 0;
  bool stop = false;
  detail::walk(
      array,
      [&](const Value& element) -> bool {
        using Wanted = typename detail::FirstOf<typename detail::ParametersOf<std::decay_t<Predicate>>::Type>::Type;
        if constexpr (std::is_void_v<Wanted>) {
          return predicate(element, index++, stop);
        } else {
          return predicate(detail::argument<Wanted>(element), index++, stop);
        }
      },
      [&](const Value& element, bool isKept) {
        if (isKept) kept.push_back(element);
        return !stop;
      });
  return make<NSArray>(std::move(kept));
}

/// A copy without the null markers. A mutable array that is not const is changed in place instead, see
/// NSMutableArray+Norvik.h.
[[nodiscard]] NK_EXPORT Ref<NSMutableArray> nk_removeNulls(const NSArray& array);

/// The items, whether or not the array contains them, followed by the elements that equal none of them.
[[nodiscard]] NK_EXPORT Ref<NSArray> nk_moveItemsToStart(const NSArray& array, const NSArray& items);

/// The first half. An odd number of elements is split so that this half is the smaller one.
[[nodiscard]] NK_EXPORT Ref<NSArray> nk_splitLower(const NSArray& array);
/// The second half. It contains the middle element of an odd number of elements.
[[nodiscard]] NK_EXPORT Ref<NSArray> nk_splitUpper(const NSArray& array);

}  // namespace norvik
