// NorvikCore/linq/ChainSink.h - how the steps of a chain are put together. Users need not read it.
//
// A step is either one that elements pass through, or the last one, or one for which the whole collection is needed.
// When a chain meets the second or third, its steps are put together to one loop: the source puts each element into the
// first step's sink, that one puts what it makes of it into the next one's, and finish() asks for the result. put()
// tells whether the sink wants more; one that returns nothing always does.
#pragma once

#include <exception>
#include <type_traits>
#include <utility>

namespace norvik::detail {

// Steps. `apply` is the query itself, for a collection that is there. `Out<ofValues, E>` is what the step makes of
// elements E, and `into` gives the step's sink before `next`. `end` gives the last sink of a chain of elements E.

struct AnyStepOfAChain {};
/// Elements pass through; `isLazy` where its closure cannot be absent.
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

/// The next step's sink. What it throws waits until the steps before have had every element, as if each step made its
/// array before the next one began.
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
