// NorvikCore/linq/ChainSources.h - the sources with which a chain begins: an array, or another range. Users need not
// read it.
#pragma once

#include "NorvikCore/linq/ChainElements.h"

#include <cstddef>
#include <iterator>
#include <type_traits>
#include <utility>

namespace norvik::detail {

/// True if the sink always wants more elements, because its put() returns void.
template <class Sink, class E, class Guard>
inline constexpr bool wantsAll =
    std::is_void_v<decltype(std::declval<Sink&>().put(std::declval<const E&>(), std::declval<const Guard&>()))>;

struct ArraySource {
  static constexpr bool isOfValues = true;
  using Element = Value;
  Ref<const NSArray> array;

  template <class Sink>
  void feed(Sink& sink) {
    std::size_t index = 0;
    for (auto at = array->begin(), end = array->end(); at != end;) {
      prefetchObject(*array, index++);
      if constexpr (wantsAll<Sink, Value, ArrayGuard>) {
        sink.put(*at, ArrayGuard{at});
        ++at;
      } else {
        const bool wantsMore = sink.put(*at, ArrayGuard{at});
        ++at;
        if (!wantsMore) return;
      }
    }
  }
};

/// R is a reference if the range is a variable, and a value if it is a temporary.
template <class R>
struct RangeSource {
  static constexpr bool isOfValues = false;
  R range;
  using Element = std::remove_cvref_t<decltype(*std::begin(std::declval<R&>()))>;

  template <class Sink>
  void feed(Sink& sink) {
    for (auto&& each : range) {
      const Element& element = each;
      if constexpr (wantsAll<Sink, Element, NoGuard>)
        sink.put(element, NoGuard());
      else if (!sink.put(element, NoGuard()))
        return;
    }
  }
};

}  // namespace norvik::detail
