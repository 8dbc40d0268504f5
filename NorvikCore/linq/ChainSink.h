// NorvikCore/linq/ChainSink.h - how the steps of a chain are combined. Users need not read it.
//
// There are three kinds of steps: one that passes elements on, one that ends the chain, and one that needs the whole
// collection. When a chain reaches a step of the second or third kind, the steps before it are combined into one loop.
// The source puts each element into the sink of the first step. Each sink puts its results into the sink of the next
// step, and finish() returns the result. put() returns true if the sink wants more elements; a put() that returns void
// always does.
#pragma once

#include <exception>
#include <type_traits>
#include <utility>

namespace norvik::detail {

// Members of steps: `apply` is the query itself, for an existing collection. `Out<ofValues, E>` is the type of the
// step's results for elements of type E. `into` returns the step's sink, which feeds `next`. `end` returns the last
// sink of a chain with elements of type E.

struct AnyStepOfAChain {};
/// A step that passes elements on. `isLazy` is true if its closure cannot be absent.
struct PassingStep : AnyStepOfAChain {
  template <bool, class E>
  using Out = E;
  static constexpr bool isLazy = true;
};
struct LastStep : AnyStepOfAChain {};

template <class Apply>
struct WholeStep : AnyStepOfAChain {
  Apply query;
  explicit WholeStep(Apply itsQuery) : query(std::move(itsQuery)) {}
  template <class Collection>
  auto apply(const Collection& collection) {
    return query(collection);
  }
};
template <class Apply>
auto wholeStep(Apply query) {
  return WholeStep<Apply>(std::move(query));
}

/// Holds the next step's sink. It stores an exception of that sink until the earlier steps have processed every
/// element, as if each step created its array before the next one began. finish() rethrows it.
template <class Next>
class Behind {
 public:
  explicit Behind(Next next) : next_(std::move(next)) {}

  [[nodiscard]] bool wantsMore() const noexcept { return wantsMore_; }
  template <class E, class Guard>
  void put(const E& element, const Guard& guard) {
    if (!wantsMore_) [[unlikely]]
      return;
    try {
      if constexpr (std::is_void_v<decltype(next_.put(element, guard))>)
        next_.put(element, guard);
      else
        wantsMore_ = next_.put(element, guard);
    } catch (...) {
      wantsMore_ = false;
      failure_ = std::current_exception();
    }
  }
  auto finish() {
    if (failure_) std::rethrow_exception(failure_);
    return next_.finish();
  }

 private:
  Next next_;
  std::exception_ptr failure_;
  bool wantsMore_ = true;
};

}  // namespace norvik::detail
