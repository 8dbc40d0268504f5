// fuzz/KeyValueGraph.h - the small graph of objects that the fuzzer of key paths reads, sets and observes.
#pragma once

#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/collections/NSSet.h"
#include "NorvikCore/platform/keyvalue/KeyValueCoding.h"
#include "NorvikCore/platform/keyvalue/KeyValueObserving.h"
#include "NorvikCore/platform/object/Weak.h"

#include <algorithm>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace norvik::fuzz {

class FuzzedNode : public NSObject {
  NK_OBJECT(FuzzedNode, NSObject)
  NK_READONLY_PROPERTY(int, number)
  NK_PROPERTY(NSString, name, setName)
  NK_PROPERTY(Decimal, pay, setPay)
  NK_PROPERTY(std::optional<Decimal>, bonus, setBonus)
  NK_PROPERTY(int, count, setCount)
  NK_PROPERTY(double, rate, setRate)
  NK_PROPERTY(bool, flag, setFlag)
  NK_PROPERTY(Date, day, setDay)
  NK_PROPERTY(Ref<FuzzedNode>, next, setNext)
  NK_WEAK_PROPERTY(FuzzedNode, boss, setBoss)
  NK_PROPERTY(Ref<NSArray>, list, setList)
  NK_PROPERTY(Ref<NSSet>, group, setGroup)
  NK_PROPERTY(Ref<NSMutableDictionary>, map, setMap)
  NK_PROPERTY(Value, any, setAny)
  NK_COMPUTED_PROPERTY(Decimal, total)
  NK_AFFECTED_BY(total, pay)
  NK_AFFECTED_BY(total, bonus)
  NK_COMPUTED_PROPERTY(NSString, title)
  NK_AFFECTED_BY(title, name)
  NK_AFFECTED_BY(title, total)
  NK_COMPUTED_PROPERTY(Ref<FuzzedNode>, lead)
  NK_AFFECTED_BY(lead, next)
  explicit FuzzedNode(int itsNumber) { number_ = itsNumber; }
  Decimal total() const { return pay() + bonus().value_or(0); }
  NSString title() const { return name() + " " + Value(total()).description(); }
  Ref<FuzzedNode> lead() const { return next() ? next() : ref(const_cast<FuzzedNode&>(*this)); }
  Value grade() const { return grade_; }
  void setGrade(Value grade) { grade_ = std::move(grade); }  // notifies no observer
  NK_METHOD(grade)
  NK_METHOD(setGrade)
  NSString description() const override { return "node " + NSString(std::to_string(number())); }

 private:
  Value grade_ = 1;
};

class FuzzedSpecial : public FuzzedNode {
  NK_OBJECT(FuzzedSpecial, FuzzedNode)
  NK_PROPERTY(Value, special, setSpecial)
  explicit FuzzedSpecial(int itsNumber) : FuzzedNode(itsNumber) {}
};

class FuzzedLeaf : public NSObject {
  NK_OBJECT(FuzzedLeaf, NSObject)
  NK_PROPERTY(NSString, name, setName)
  NSString description() const override { return "leaf"; }
};

struct World {
  std::vector<Ref<FuzzedNode>> nodes;
  std::vector<Weak<FuzzedNode>> all;  ///< every node that was ever created, by its number
  Ref<FuzzedLeaf> leaf = make<FuzzedLeaf>();
  std::vector<Ref<NSMutableDictionary>> maps = {NSMutableDictionary::dictionary(), NSMutableDictionary::dictionary()};

  World() {
    for (int i = 0; i < 4; ++i) nodes.push_back(newNode());
    leaf->setName("leaf");
  }
  Ref<FuzzedNode> newNode() {
    const int number = static_cast<int>(all.size());
    Ref<FuzzedNode> node = number % 4 == 3 ? Ref<FuzzedNode>(make<FuzzedSpecial>(number)) : make<FuzzedNode>(number);
    node->setName(NSString("n" + std::to_string(number)));
    node->setPay(Decimal(number) + Decimal::parse("0.50").value());
    all.emplace_back(node);
    return node;
  }
};

inline bool same(const Value& a, const Value& b);

inline bool sameElements(std::span<const Value> a, std::span<const Value> b) {
  return std::ranges::equal(a, b, [](const Value& x, const Value& y) { return same(x, y); });
}

/// True if the kind and the content are the same. Objects of the two worlds are the same if they have the same number.
inline bool same(const Value& a, const Value& b) {
  if (a.kind() != b.kind()) return false;
  if (const NSString* string = a.string()) return *string == *b.string();
  if (!a.isObject()) return a.isIdenticalTo(b);
  if (a.object()->classObject().name() != b.object()->classObject().name()) return false;
  if (const auto* node = a.object<FuzzedNode>()) return node->number() == b.object<FuzzedNode>()->number();
  if (const auto* array = a.object<NSArray>()) return sameElements(array->elements(), b.object<NSArray>()->elements());
  if (const auto* set = a.object<NSSet>()) {
    return sameElements(set->allObjects()->elements(), b.object<NSSet>()->allObjects()->elements());
  }
  if (const auto* dictionary = a.object<NSDictionary>()) {
    const auto* other = b.object<NSDictionary>();
    return sameElements(dictionary->allKeys()->elements(), other->allKeys()->elements()) &&
           sameElements(dictionary->allValues()->elements(), other->allValues()->elements());
  }
  return a.object<FuzzedLeaf>() != nullptr;
}

}  // namespace norvik::fuzz
