// NorvikCore/markup/internal/Combinations.h - numbers for the combined attributes of the tags of one text.
//
//   Combinations all;
//   const auto base = all.of(options.baseAttributes()), bold = all.of(boldAttributes);
//   all.sum(base, bold);                // the same number on every call
//   all.areEqual(base, bold);
//
// Confined.
#pragma once

#include "NorvikCore/platform/collections/NSDictionary.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace norvik::detail {

class Combinations {
 public:
  using Number = std::uint32_t;

  Combinations();

  /// `attributes` must not change. Returns the number of the last known equal dictionary if no reader can tell the two
  /// apart, otherwise a new number.
  Number of(const Ref<NSDictionary>& attributes);
  /// Entries of `added` replace entries of the same name.
  Number sum(Number present, Number added) {
    const Sum& last = sums_[placeOf(present, added)];
    return last.present == present && last.added == added ? last.result : newSum(present, added);
  }
  Number sum(Number present, const Ref<NSDictionary>& added);

  [[nodiscard]] const Ref<NSDictionary>& operator[](Number number) const noexcept { return known_[number].attributes; }
  [[nodiscard]] bool areEqual(Number a, Number b) const noexcept {
    return a == b || known_[a].firstEqual == known_[b].firstEqual;
  }
  /// All dictionaries, in the order of their numbers. Leaves this object empty.
  [[nodiscard]] std::vector<Ref<NSDictionary>> take();

 private:
  static constexpr Number none = UINT32_MAX;

  struct Known {
    Ref<NSDictionary> attributes;
    std::size_t hash;
    Number firstEqual;
    Number lastEqual;  ///< valid in the first of the equal dictionaries
  };
  struct Sum {
    Number present, added, result;
  };

  static std::size_t placeOf(Number present, Number added) noexcept {
    return (present * 31 + added) % std::tuple_size_v<decltype(sums_)>;
  }
  Number newSum(Number present, Number added);
  /// The position in firsts_ of the number of an equal dictionary, or the free position for it.
  [[nodiscard]] std::size_t placeOf(const NSDictionary& attributes, std::size_t hash) const;
  void makeRoom();

  std::vector<Known> known_;
  std::vector<Number> firsts_;  ///< hash table with linear probing; its size is a power of two, never full
  std::size_t distinct_ = 0;    ///< count of numbers in firsts_
  std::array<Sum, 64> sums_;
};

}  // namespace norvik::detail
