// NorvikCore/platform/object/Block.h - a stored closure: counted, shared by its copies, and an object.
//
//   Block<bool(const Value&)> positive = [](const Value& v) { return v.as<Decimal>() > 0; };
//   if (positive) positive(Value(5));
//   auto same = positive;                // shares the closure: same == positive
//
// A function that only calls a closure takes any callable; a Block is for closures that are stored. An empty Block is
// the absent closure; calling it raises NSInvalidArgumentException. Calling a Block is as thread-safe as the closure
// itself.
#pragma once

#include "NorvikCore/platform/object/NSObject.h"

#include <concepts>
#include <type_traits>
#include <utility>

namespace norvik {

/// The class of all closure objects, whatever their parameters.
class NK_EXPORT NSBlock : public NSObject {
  NK_OBJECT(NSBlock, NSObject)
  ~NSBlock() override;
};

namespace detail {

template <class R, class... A>
class NK_EXPORT ClosureOf : public NSBlock {
 public:
  virtual R invoke(A... arguments) = 0;
};

template <class F, class R, class... A>
class Closure final : public ClosureOf<R, A...> {
 public:
  explicit Closure(F function) : function_(std::move(function)) {}
  R invoke(A... arguments) override {
    if constexpr (std::is_void_v<R>) {
      function_(std::forward<A>(arguments)...);
    } else {
      return function_(std::forward<A>(arguments)...);
    }
  }

 private:
  F function_;
};

[[noreturn]] NK_EXPORT void raiseAbsentClosure();

}  // namespace detail

template <class Signature>
class Block;

template <class R, class... A>
class Block<R(A...)> {
 public:
  constexpr Block() noexcept = default;
  constexpr Block(std::nullptr_t) noexcept {}  // NOLINT(google-explicit-constructor): nullptr is the absent closure
  template <class F>
  requires(!std::same_as<std::remove_cvref_t<F>, Block> && std::is_invocable_r_v<R, std::decay_t<F>&, A...>)
      Block(F&& function)  // NOLINT(google-explicit-constructor): a closure is what a Block is given
      : closure_(make<detail::Closure<std::decay_t<F>, R, A...>>(std::forward<F>(function))) {}

  R operator()(A... arguments) const {
    if (!closure_) detail::raiseAbsentClosure();
    return closure_->invoke(std::forward<A>(arguments)...);
  }

  explicit operator bool() const noexcept { return static_cast<bool>(closure_); }
  /// True for the same closure; equal closures that were made separately differ.
  template <std::same_as<Block> B>  // a template, so that no other closure converts to a Block for it
  friend bool operator==(const B& a, const B& b) noexcept {
    return a.closure_ == b.closure_;
  }
  friend bool operator==(const Block& a, std::nullptr_t) noexcept { return !a.closure_; }
  /// An order for keys, like that of Ref.
  template <std::same_as<Block> B>
  friend std::strong_ordering operator<=>(const B& a, const B& b) noexcept {
    return a.closure_ <=> b.closure_;
  }
  /// Writes the closure's description as an object, "(null)" for the absent one.
  friend std::ostream& operator<<(std::ostream& out, const Block& block) { return out << block.closure_; }

  /// The closure as an object, empty for the absent one.
  [[nodiscard]] Ref<NSBlock> object() const noexcept { return closure_; }
  operator Value() const {
    return Value(Ref<NSObject>(closure_));
  }  // NOLINT(google-explicit-constructor): it is an object

 private:
  friend struct ValueConversion<Block>;
  friend struct std::hash<Block>;
  Ref<detail::ClosureOf<R, A...>> closure_;
};

template <class R, class... A>
struct ValueConversion<Block<R(A...)>> {
  static Value toValue(const Block<R(A...)>& block) { return block; }
  static Block<R(A...)> fromValue(const Value& value) {
    Block<R(A...)> block;
    block.closure_ = ValueConversion<Ref<detail::ClosureOf<R, A...>>>::fromValue(value);
    return block;
  }
};

}  // namespace norvik

template <class Signature>
struct std::hash<norvik::Block<Signature>> {
  std::size_t operator()(const norvik::Block<Signature>& block) const noexcept {
    return std::hash<const void*>()(block.closure_.get());
  }
};
