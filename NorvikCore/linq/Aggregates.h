// NorvikCore/linq/Aggregates.h - the sums, extremes and accumulations that queries over arrays, dictionaries and chains
// compute. Users need not read it.
#pragma once

#include "NorvikCore/linq/Closure.h"
#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/values/DecimalSum.h"

namespace norvik::detail {

/// A sum of values. A single value is returned unchanged, even if it is not a number; the first value is converted only
/// when a second one is added.
class Total {
 public:
  void add(const Decimal& number) {
    if (count_++ < 2) [[unlikely]]
      return addEarly(number);
    sum_ += number;
  }
  void add(const Value& value) {
    if (count_++ < 2) [[unlikely]]
      return addEarly(value);
    sum_ += argument<Decimal>(value);
  }
  [[nodiscard]] Value sum() const {
    if (count_ == 0) return Decimal();
    return count_ == 1 ? first_ : Value(sum_.value());
  }
  [[nodiscard]] Decimal average() const { return count_ == 0 ? Decimal() : sum().as<Decimal>() / Decimal(count_); }

 private:
  /// Adds the first or the second value.
  void addEarly(const Value& value) {
    if (count_ == 1) {
      first_ = value;
    } else {
      sum_ += argument<Decimal>(first_);
      sum_ += argument<Decimal>(value);
    }
  }

  DecimalSum sum_;
  Value first_;
  std::size_t count_ = 0;
};

/// The greatest or the least value, and the first of equal ones.
template <NSComparisonResult wanted>
class Extreme {
 public:
  void add(const Value& value) {
    if (best_.isAbsent() || value.compare(best_) == wanted) best_ = value;
  }
  [[nodiscard]] Value result() const { return best_.isAbsent() ? Value(Decimal()) : best_; }

 private:
  Value best_;
};
using Greatest = Extreme<NSOrderedDescending>;
using Least = Extreme<NSOrderedAscending>;

/// The running result of an accumulator, which may become absent after any call.
template <class Accumulator>
class Running {
 public:
  explicit Running(Accumulator& accumulator) noexcept : accumulator_(accumulator) {}
  /// The running result with the next value; `add` stores it.
  [[nodiscard]] Value with(const Value& value) const {
    return isFirst_ ? value : valueFrom(accumulator_, value, running_);
  }
  void add(Value&& result) {
    running_ = std::move(result);
    isFirst_ = false;
  }
  [[nodiscard]] Value result() && { return std::move(running_); }

 private:
  Accumulator& accumulator_;
  Value running_;
  bool isFirst_ = true;
};

inline const Value& valueIn(const Value& element) noexcept { return element; }
inline const Value& valueIn(const NSDictionary::Entry& entry) noexcept { return entry.value; }

/// Adds the values of a collection, an array's elements or a dictionary's values, to an aggregate of one of the classes
/// above.
template <class Collection, class Aggregate>
Aggregate aggregated(const Collection& collection, Aggregate aggregate) {
  for (const auto& each : collection) aggregate.add(valueIn(each));
  return aggregate;
}
template <class Collection, class Accumulator>
Value accumulated(const Collection& collection, Accumulator& accumulator) {
  if (collection.count() == 0) return {};
  if (isAbsent(accumulator)) return ref(const_cast<Collection&>(collection));
  if constexpr (!isNullptr<Accumulator>) {
    Running running(accumulator);
    walk(
        collection, [&](const auto& each) { return running.with(valueIn(each)); },
        [&](const auto&, Value&& result) {
          running.add(std::move(result));
          return true;
        });
    return std::move(running).result();
  }
  __builtin_unreachable();
}

}  // namespace norvik::detail
