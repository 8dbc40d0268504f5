// NorvikCore/linq/ChainGroups.h - the step of a chain that groups elements, also elements that are not convertible to
// Values. Users need not read it.
#pragma once

#include "NorvikCore/linq/ChainElements.h"
#include "NorvikCore/linq/ChainSink.h"
#include "NorvikCore/platform/collections/OrderedTable.h"

#include <vector>

namespace norvik::detail {

/// The elements with one key, if they are not convertible to Values.
template <class E>
struct Group {
  Value key;
  std::vector<E> elements;
  friend const Value& keyOf(const Group& group) noexcept { return group.key; }
};
template <class E, class Key>
struct GroupSink {
  Key& key;
  OrderedTable<Group<E>> groups{};

  template <class Guard>
  void put(const E& element, const Guard&) {
    const Value found = valueOf(callWith<false>(key, element));
    checkPresent(found, "linq_groupBy:, key");
    Group<E>* group = groups.find(found);
    if (!group) group = groups.insert({found, {}}).first;
    group->elements.push_back(element);
  }
  auto finish() { return groups.takeAll(); }
};

template <class Key>
struct GroupByStep : AnyStepOfAChain {
  Key key;

  template <class Collection>
  auto apply(const Collection& collection) {
    return linq_groupBy(collection, key);
  }
  template <class E>
  auto sink() {
    checkClosure(key, "linq_groupBy");
    return GroupSink<E, Key>{key};
  }
};

}  // namespace norvik::detail
