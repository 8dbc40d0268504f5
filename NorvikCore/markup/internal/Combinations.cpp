#include "NorvikCore/markup/internal/Combinations.h"

#include "NorvikCore/platform/collections/NSMutableDictionary.h"

#include <algorithm>
#include <new>
#include <utility>

namespace norvik::detail {
namespace {

bool readAlike(const Value& a, const Value& b) {
  return a.isIdenticalTo(b) || (a.isString() && b.isString() && a == b);
}

/// For equal dictionaries: true if the order of entries and the digits of numbers are the same too.
bool readAlike(const NSDictionary& a, const NSDictionary& b) {
  return &a == &b || std::equal(a.begin(), a.end(), b.begin(), [](const auto& x, const auto& y) {
    return readAlike(x.key, y.key) && readAlike(x.value, y.value);
  });
}

}  // namespace

Combinations::Combinations() : firsts_(16, none) {
  known_.reserve(8);
  sums_.fill({none, none, none});
}

std::size_t Combinations::placeOf(const NSDictionary& attributes, std::size_t hash) const {
  std::size_t place = (hash * 0x9E3779B97F4A7C15u >> 32) & (firsts_.size() - 1);
  while (firsts_[place] != none) {
    const Known& known = known_[firsts_[place]];
    if (known.hash == hash && known.attributes->isEqual(attributes)) break;
    place = (place + 1) & (firsts_.size() - 1);
  }
  return place;
}

void Combinations::makeRoom() {
  std::vector<Number> firsts(2 * firsts_.size(), none);
  std::swap(firsts_, firsts);
  for (const Number first : firsts) {
    if (first == none) continue;
    const Known& known = known_[first];
    firsts_[placeOf(*known.attributes, known.hash)] = first;
  }
}

Combinations::Number Combinations::of(const Ref<NSDictionary>& attributes) {
  if (known_.size() >= none) throw std::bad_alloc();
  if (2 * distinct_ >= firsts_.size()) makeRoom();
  const auto number = static_cast<Number>(known_.size());
  const std::size_t hash = attributes->hash();
  Number& first = firsts_[placeOf(*attributes, hash)];
  if (first != none) {
    const Number last = known_[first].lastEqual;
    if (readAlike(*known_[last].attributes, *attributes)) return last;
  }
  known_.push_back({attributes, hash, first == none ? number : first, number});
  if (first == none) {
    first = number;
    ++distinct_;
  }
  known_[first].lastEqual = number;
  return number;
}

Combinations::Number Combinations::sum(Number present, const Ref<NSDictionary>& added) {
  if (added->count() == 0) return present;
  if ((*this)[present]->count() == 0) return of(added);
  const auto both = (*this)[present]->mutableCopy();
  both->addEntriesFromDictionary(*added);
  return of(both->copy());
}

Combinations::Number Combinations::newSum(Number present, Number added) {
  const bool isFirst = (*this)[present]->count() == 0 && (*this)[added]->count() > 0;
  const Number result = isFirst ? added : sum(present, Ref<NSDictionary>((*this)[added]));
  sums_[placeOf(present, added)] = {present, added, result};
  return result;
}

std::vector<Ref<NSDictionary>> Combinations::take() {
  std::vector<Ref<NSDictionary>> all;
  all.reserve(known_.size());
  for (Known& known : known_) all.push_back(std::move(known.attributes));
  known_.clear();
  return all;
}

}  // namespace norvik::detail
