// NorvikCore/markup/internal/Combinations.h - the attributes that the tags of one text give together, by number.
//
//   Combinations all;
//   const auto base = all.of(options.baseAttributes()), bold = all.of(boldAttributes);
//   all.sum(base, bold);                // the same number whenever this sum is asked for
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

  /// `attributes` is one that does not change. One in which no reader finds a difference has the same number, where it
  /// was the last of those that are equal.
  Number of(const Ref<NSDictionary>& attributes);
  /// What `added` has replaces what is of the same name.
  Number sum(Number present, Number added) {
    const Sum& last = sums_[placeOf(present, added)];
    return last.present == present && last.added == added ? last.result : newSum(present, added);
  }
  Number sum(Number present, const Ref<NSDictionary>& added);

  [[nodiscard]] const Ref<NSDictionary>& operator[](Number number) const noexcept { return known_[number].attributes; }
  [[nodiscard]] bool areEqual(Number a, Number b) const noexcept {
    return a == b || known_[a].firstEqual == known_[b].firstEqual;
  }
  /// All of them by number. Nothing is left here.
  [[nodiscard]] std::vector<Ref<NSDictionary>> take();

 private:
  static constexpr Number none = UINT32_MAX;

  struct Known {
    Ref<NSDictionary> attributes;
    std::size_t hash;
    Number firstEqual;
    Number lastEqual;  ///< of the first of those that are equal
  };
  struct Sum {
    Number present, added, result;
  };

  static std::size_t placeOf(Number present, Number added) noexcept {
    return (present * 31 + added) % std::tuple_size_v<decltype(sums_)>;
  }
  Number newSum(Number present, Number added);
  /// Where in firsts_ the number of equal attributes is, or has to be.
  [[nodiscard]] std::size_t placeOf(const NSDictionary& attributes, std::size_t hash) const;
  void makeRoom();

  std::vector<Known> known_;
  std::vector<Number> firsts_;  ///< by hash, the next place being taken where one is; a power of two, never full
  std::size_t distinct_ = 0;    ///< numbers in firsts_
  std::array<Sum, 64> sums_;
};

}  // namespace norvik::detail
