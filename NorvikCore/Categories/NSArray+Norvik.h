// NorvikCore/Categories/NSArray+Norvik.h - arrays joined into text, cut, filtered and put into another order.
//
//   nk_componentsJoinedByString(*names, ", ", NSDictionary::dictionaryWithObject(" and ", "joinLastWith"));
//   // "Ann, Bob and Zoe"
//   nk_moveItemsToStart(*names, *NSArray::arrayWithObjects("Zoe"));      // Zoe, Ann, Bob
//
// The receiver does not change; results are new arrays. Linear. Any thread, as far as the array is.
#pragma once

#include "NorvikCore/Categories/NSMutableArray+Norvik.h"  // so that nk_removeNulls is one or the other by type alone
#include "NorvikCore/linq/Closure.h"
#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "NorvikCore/platform/export.h"

#include <cstddef>
#include <type_traits>
#include <utility>
#include <vector>

namespace norvik {

class NSDictionary;

/// The elements' descriptions ("<null>" of the null marker), joined by the separator, which may be empty. Options, all
/// of which may be missing or null:
/// - "suffix", a text behind each element that is joined, the last included;
/// - "joinLastWith", a text in place of the last separator;
/// - "skipEmptyComponents", a boolean: elements of blanks and line breaks alone are left out. Where one is,
///   "joinLastWith" is not used. That is deliberate: it is used once all elements but one were written.
/// An option of another kind raises NSInvalidArgumentException.
[[nodiscard]] NK_EXPORT NSString nk_componentsJoinedByString(const NSArray& array, const NSString& separator,
                                                             const Ref<NSDictionary>& options = nullptr);

/// At most `maxLength` elements from that index on; none from beyond the end.
[[nodiscard]] NK_EXPORT Ref<NSArray> nk_subarrayFromIndex(const NSArray& array, std::size_t index,
                                                          std::size_t maxLength);

/// The elements for which `predicate(element, index, stop)` is true, in order. Where it sets `stop`, no element behind
/// is asked; the present one still counts by its answer. The predicate takes an element as a `const Value&` or as what
/// it is, `[](const Payslip& slip, std::size_t, bool&)`; an element that is something else raises
/// NSInvalidArgumentException. A predicate that changes the array raises NSGenericException; it may release it.
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

/// Without the null markers. An NSMutableArray that is not const is changed instead: NSMutableArray+Norvik.h.
[[nodiscard]] NK_EXPORT Ref<NSMutableArray> nk_removeNulls(const NSArray& array);

/// The items, whether the array has them or not, and then the elements that equal none of them.
[[nodiscard]] NK_EXPORT Ref<NSArray> nk_moveItemsToStart(const NSArray& array, const NSArray& items);

/// The first half; of an odd number of elements the smaller one.
[[nodiscard]] NK_EXPORT Ref<NSArray> nk_splitLower(const NSArray& array);
/// The rest, which has the middle one.
[[nodiscard]] NK_EXPORT Ref<NSArray> nk_splitUpper(const NSArray& array);

}  // namespace norvik
