// fuzz/KeyValueModel.h - a slow model of reading, setting and observing by key paths.
//
// It follows the rules of KeyValueCoding.h and KeyValueObserving.h: it splits each path at its full stops, and calls
// the accessors of the graph's objects itself.
#pragma once

#include "fuzz/KeyValueGraph.h"

#include "NorvikCore/platform/values/NSException.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <iterator>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace norvik::fuzz {

using Keys = std::span<const NSString>;

inline std::vector<NSString> splitByModel(const NSString& path) {
  std::vector<NSString> keys;
  std::u16string key;
  for (const char16_t unit : path.toUtf16()) {
    if (unit == u'.') {
      keys.push_back(NSString::fromUtf16(key));
      key.clear();
    } else {
      key += unit;
    }
  }
  keys.push_back(NSString::fromUtf16(key));
  return keys;
}

inline bool isOperator(const NSString& key) { return !key.empty() && key.toUtf16()[0] == u'@'; }

struct NodeKey {
  std::string_view name;
  Value (*get)(const FuzzedNode& node);
  void (*set)(FuzzedNode& node, const Value& value);  ///< null for a read-only key
  bool isNeverAbsent = false;
  bool announces = true;
  std::string_view leadsTo = {};  ///< the stated class of its value
};

inline const NodeKey nodeKeys[] = {
    {"number", [](const FuzzedNode& n) -> Value { return n.number(); }, nullptr},
    {"name", [](const FuzzedNode& n) -> Value { return n.name(); },
     [](FuzzedNode& n, const Value& v) { n.setName(v.as<NSString>()); }, true},
    {"pay", [](const FuzzedNode& n) -> Value { return n.pay(); },
     [](FuzzedNode& n, const Value& v) { n.setPay(v.as<Decimal>()); }, true},
    {"bonus", [](const FuzzedNode& n) -> Value { return n.bonus(); },
     [](FuzzedNode& n, const Value& v) { n.setBonus(v.as<std::optional<Decimal>>()); }},
    {"count", [](const FuzzedNode& n) -> Value { return n.count(); },
     [](FuzzedNode& n, const Value& v) { n.setCount(v.as<int>()); }, true},
    {"rate", [](const FuzzedNode& n) -> Value { return n.rate(); },
     [](FuzzedNode& n, const Value& v) { n.setRate(v.as<double>()); }, true},
    {"flag", [](const FuzzedNode& n) -> Value { return n.flag(); },
     [](FuzzedNode& n, const Value& v) { n.setFlag(v.as<bool>()); }, true},
    {"day", [](const FuzzedNode& n) -> Value { return n.day(); },
     [](FuzzedNode& n, const Value& v) { n.setDay(v.as<Date>()); }, true},
    {"next", [](const FuzzedNode& n) -> Value { return n.next(); },
     [](FuzzedNode& n, const Value& v) { n.setNext(v.as<Ref<FuzzedNode>>()); }, false, true, "FuzzedNode"},
    {"boss", [](const FuzzedNode& n) -> Value { return n.boss(); },
     [](FuzzedNode& n, const Value& v) { n.setBoss(v.as<Ref<FuzzedNode>>()); }, false, true, "FuzzedNode"},
    {"list", [](const FuzzedNode& n) -> Value { return n.list(); },
     [](FuzzedNode& n, const Value& v) { n.setList(v.as<Ref<NSArray>>()); }, false, true, "NSArray"},
    {"group", [](const FuzzedNode& n) -> Value { return n.group(); },
     [](FuzzedNode& n, const Value& v) { n.setGroup(v.as<Ref<NSSet>>()); }, false, true, "NSSet"},
    {"map", [](const FuzzedNode& n) -> Value { return n.map(); },
     [](FuzzedNode& n, const Value& v) { n.setMap(v.as<Ref<NSMutableDictionary>>()); }, false, true, "NSDictionary"},
    {"any", [](const FuzzedNode& n) -> Value { return n.any(); }, [](FuzzedNode& n, const Value& v) { n.setAny(v); }},
    {"total", [](const FuzzedNode& n) -> Value { return n.total(); }, nullptr},
    {"title", [](const FuzzedNode& n) -> Value { return n.title(); }, nullptr},
    {"lead", [](const FuzzedNode& n) -> Value { return n.lead(); }, nullptr, false, true, "FuzzedNode"},
    {"grade", [](const FuzzedNode& n) -> Value { return n.grade(); },
     [](FuzzedNode& n, const Value& v) { n.setGrade(v); }, false, false},
    {"self", [](const FuzzedNode& n) -> Value { return ref(const_cast<FuzzedNode&>(n)); }, nullptr},
    {"description", [](const FuzzedNode& n) -> Value { return n.description(); }, nullptr},
};
inline const NodeKey specialKey = {
    "special", [](const FuzzedNode& n) -> Value { return static_cast<const FuzzedSpecial&>(n).special(); },
    [](FuzzedNode& n, const Value& v) { static_cast<FuzzedSpecial&>(n).setSpecial(v); }};

inline const NodeKey* nodeKey(const NSString& key, bool isSpecial) {
  for (const NodeKey& known : nodeKeys) {
    if (key.view() == known.name) return &known;
  }
  return isSpecial && key == "special" ? &specialKey : nullptr;
}

inline bool affects(std::string_view changed, const NSString& key) {
  const auto isOneOf = [&](std::initializer_list<std::string_view> keys) {
    return std::ranges::find(keys, changed) != keys.end();
  };
  if (key == "total") return isOneOf({"pay", "bonus"});
  if (key == "title") return isOneOf({"name", "total", "pay", "bonus"});
  return key == "lead" && changed == "next";
}

[[noreturn]] inline void raiseUndefined() { NSException::raise(NSUndefinedKeyException, "by the model"); }
[[noreturn]] inline void raiseInvalid() { NSException::raise(NSInvalidArgumentException, "by the model"); }

/// The elements of a collection or the values of a dictionary; absent for anything else.
inline std::optional<std::vector<Value>> elementsOf(const Value& value) {
  std::vector<Value> elements;
  if (const auto* array = value.object<NSArray>()) {
    for (const Value& each : *array) elements.push_back(each);
  } else if (const auto* set = value.object<NSSet>()) {
    for (const Value& each : *set) elements.push_back(each);
  } else if (const auto* dictionary = value.object<NSDictionary>()) {
    for (const auto& entry : *dictionary) elements.push_back(entry.value);
  } else {
    return std::nullopt;
  }
  return elements;
}

inline Value valueByModel(const Value& target, const NSString& key);
inline Value valueByModel(const Value& target, Keys keys);

inline Value operatorByModel(const std::vector<Value>& given, const NSString& name, Keys rest) {
  if (name == "@count") return given.size();
  const bool hasPath = !rest.empty() && !(rest.size() == 1 && rest[0].empty());
  const bool isOfArrays = name == "@unionOfArrays" || name == "@distinctUnionOfArrays";
  const bool isUnion = isOfArrays || name == "@unionOfObjects" || name == "@distinctUnionOfObjects";
  if (!hasPath || !(isUnion || name == "@sum" || name == "@avg" || name == "@max" || name == "@min")) raiseInvalid();
  std::vector<Value> elements = given;
  if (isOfArrays) {
    elements.clear();
    for (const Value& each : given) {
      if (each.isNull()) continue;
      if (!each.object<NSArray>() && !each.object<NSSet>()) raiseInvalid();
      const std::vector<Value> held = elementsOf(each).value();
      elements.insert(elements.end(), held.begin(), held.end());
    }
  }
  Decimal sum = 0;
  std::vector<Value> values;
  for (const Value& each : elements) {
    const Value value = valueByModel(each, rest);
    if (value.isAbsent() || value.isNull()) continue;
    if (name == "@sum" || name == "@avg") sum = sum + value.as<Decimal>();
    if ((name == "@max" || name == "@min") && !values.empty()) (void)value.compare(values.front());
    values.push_back(value);
  }
  if (name == "@sum") return sum;
  if (name == "@avg") return elements.empty() ? Decimal(0) : sum / Decimal(elements.size());
  if (isUnion) {
    std::vector<Value> united;
    for (const Value& value : values) {
      const bool isKnown = std::ranges::any_of(united, [&](const Value& earlier) { return earlier == value; });
      if (!name.hasPrefix("@distinct") || !isKnown) united.push_back(value);
    }
    return make<NSArray>(std::move(united));
  }
  // The first value that no other exceeds.
  const NSComparisonResult exceeds = name == "@max" ? NSOrderedDescending : NSOrderedAscending;
  for (const Value& value : values) {
    const auto isExceededBy = [&](const Value& other) { return &other != &value && other.compare(value) == exceeds; };
    if (std::ranges::none_of(values, isExceededBy)) return value;
  }
  return {};
}

inline Value valueByModel(const Value& target, const NSString& key) {
  if (target.isAbsent() || target.isNull()) return {};
  if (const auto* node = target.object<FuzzedNode>()) {
    const NodeKey* known = nodeKey(key, target.object<FuzzedSpecial>() != nullptr);
    if (!known) raiseUndefined();
    return known->get(*node);
  }
  if (const auto* leaf = target.object<FuzzedLeaf>()) {
    if (key == "name") return leaf->name();
    if (key == "self") return target;
    if (key == "description") return leaf->description();
    raiseUndefined();
  }
  if (const auto elements = elementsOf(target)) {
    if (isOperator(key)) return operatorByModel(*elements, key, {});
    if (const auto* dictionary = target.object<NSDictionary>()) {
      for (const auto& entry : *dictionary) {
        if (entry.key.isString() && *entry.key.string() == key) return entry.value;
      }
      return {};
    }
    std::vector<Value> values;
    for (const Value& each : *elements) {
      const Value value = valueByModel(each, key);
      values.push_back(value.isAbsent() ? Value::null() : value);
    }
    return make<NSArray>(std::move(values));
  }
  if (key == "self") return target;
  if (key == "description") return target.description();
  if (const NSString* string = target.string()) {
    if (key == "length") return string->toUtf16().size();
    if (key == "intValue") return string->intValue();
    if (key == "integerValue" || key == "longLongValue") return string->longLongValue();
    if (key == "doubleValue") return string->doubleValue();
    if (key == "boolValue") return string->boolValue();
    if (key == "lastPathComponent") return string->lastPathComponent();
    if (key == "pathExtension") return string->pathExtension();
  } else if (const Date* date = target.date()) {
    if (key == "timeIntervalSinceReferenceDate") return date->timeIntervalSinceReferenceDate();
    if (key == "timeIntervalSince1970") return date->timeIntervalSince1970();
  } else {
    const NSNumber number = target.number();
    if (key == "intValue") return number.intValue();
    if (key == "integerValue" || key == "longLongValue") return number.longLongValue();
    if (key == "doubleValue") return number.doubleValue();
    if (key == "boolValue") return number.boolValue();
    if (key == "decimalValue") return number.decimalValue();
    if (key == "stringValue") return number.stringValue();
  }
  raiseUndefined();
}

inline Value valueByModel(const Value& target, Keys keys) {
  const auto elements = elementsOf(target);
  if (elements && isOperator(keys[0])) return operatorByModel(*elements, keys[0], keys.subspan(1));
  const Value next = valueByModel(target, keys[0]);
  return keys.size() == 1 ? next : valueByModel(next, keys.subspan(1));
}

inline constexpr std::size_t greatestKeyCount = 1000;

inline Value valueByModel(const Value& target, const std::vector<NSString>& keys) {
  if (keys.size() > greatestKeyCount) raiseInvalid();
  return valueByModel(target, Keys(keys));
}

struct Call {
  int watcher, context;
  NSString path;
  Value root, before, after;
  bool isPrior;
};

inline std::vector<Call> heard;  ///< the watchers' notifications since the operation began

class FuzzedWatcher : public NSObject {
  NK_OBJECT(FuzzedWatcher, NSObject)
  explicit FuzzedWatcher(int itsNumber) : number(itsNumber) {}
  void observeValueForKeyPath(const NSString& path, NSObject& object, const KeyValueChange& change,
                              void* context) override {
    heard.push_back(
        {number, context ? 1 : 0, path, ref(object), change.oldValue(), change.newValue(), change.isPrior()});
  }
  const int number;
};

inline int contextTag = 0;
inline void* contextOf(int context) { return context == 0 ? nullptr : &contextTag; }

struct Watch {
  NSString path;
  std::vector<NSString> keys;
  Weak<NSObject> used, root;  ///< the observed object, and its counterpart in the model's graph
  int watcher, context;
  NSKeyValueObservingOptions options;

  [[nodiscard]] bool wants(NSKeyValueObservingOptions option) const { return (options & option) != 0; }
};

inline bool isObservable(const Value& value) {
  return value.isObject() && !value.object<NSArray>() && !value.object<NSSet>();
}

/// The objects along the path, each with the key that follows it, as far as the path can be read; and the name of the
/// exception, if reading raises one.
struct Chain {
  std::vector<std::pair<const NSObject*, NSString>> places;
  std::optional<NSString> raised;
};

inline Chain chainOf(const Value& root, const std::vector<NSString>& keys) {
  Chain chain;
  Value current = root;
  for (std::size_t depth = 0; depth < keys.size(); ++depth) {
    chain.places.emplace_back(current.object(), keys[depth]);
    if (depth + 1 == keys.size() || isOperator(keys[depth + 1])) break;
    try {
      current = valueByModel(current, keys[depth]);
    } catch (const NSException& e) {
      chain.raised = e.name();
      break;
    }
    if (!isObservable(current)) break;
  }
  return chain;
}

/// Observers get the null marker for an absent value.
inline Value shown(const Value& value) { return value.isAbsent() ? Value::null() : value; }

struct Model {
  World world;
  std::vector<Watch> watches;
  std::array<int, 3> watchers{0, 1, 2};  ///< the numbers of the existing watchers
  std::vector<Call> expected;

  [[nodiscard]] bool isAlive(int watcher) const { return std::ranges::find(watchers, watcher) != watchers.end(); }

  /// The names of all exceptions that a change may raise: the library raises one of them.
  struct Raised {
    std::vector<NSString> names;
  };

  /// Changes one key of one object, and records the calls that its observers must get.
  template <class Change>
  void announce(const Value& target, const NSString& key, Change&& change) {
    struct Affected {
      const Watch* watch;
      Value root, before;
    };
    std::vector<Affected> affected;
    Raised raised;
    const std::string changed = key.str();
    const bool isNode = target.object<FuzzedNode>() != nullptr;
    for (const Watch& watch : watches) {
      const Ref<NSObject> root = watch.root.lock();
      if (!root || !isAlive(watch.watcher)) continue;
      const Chain chain = chainOf(root, watch.keys);
      const bool isOnPath = std::ranges::any_of(chain.places, [&](const auto& place) {
        return place.first == target.object() && (place.second == key || (isNode && affects(changed, place.second)));
      });
      if (!isOnPath) continue;
      affected.push_back({&watch, root, {}});
      if (!watch.wants(NSKeyValueObservingOptionOld)) continue;
      try {
        affected.back().before = shown(valueByModel(root, Keys(watch.keys)));
      } catch (const NSException&) {
        affected.back().before = Value::null();
      }
    }
    for (const Affected& each : affected) {
      if (each.watch->wants(NSKeyValueObservingOptionPrior)) expect(*each.watch, each.root, each.before, {}, true);
    }
    change();
    for (const Affected& each : affected) {
      if (const Chain chain = chainOf(each.root, each.watch->keys); chain.raised) {
        raised.names.push_back(*chain.raised);
      }
      try {
        const bool wantsNew = each.watch->wants(NSKeyValueObservingOptionNew);
        const Value after = wantsNew ? shown(valueByModel(each.root, Keys(each.watch->keys))) : Value();
        expect(*each.watch, each.root, each.before, after, false);
      } catch (const NSException& e) {
        raised.names.push_back(e.name());
      }
    }
    if (!raised.names.empty()) throw raised;
  }

  void expect(const Watch& watch, const Value& root, const Value& before, const Value& after, bool isPrior) {
    expected.push_back({watch.watcher, watch.context, watch.path, root, before, after, isPrior});
  }

  void set(const Value& target, const NSString& key, const Value& value) {
    if (auto* node = target.object<FuzzedNode>()) {
      const NodeKey* known = nodeKey(key == "Grade" ? "grade" : key, target.object<FuzzedSpecial>() != nullptr);
      if (!known || !known->set) raiseUndefined();
      if (known->isNeverAbsent && (value.isAbsent() || value.isNull())) raiseInvalid();
      if (!known->announces) return known->set(*node, value);
      auto trial = make<FuzzedSpecial>(-1);  // a value of the wrong kind is refused before observers are notified
      known->set(*trial, value);
      announce(target, key, [&] { known->set(*node, value); });
    } else if (auto* leaf = target.object<FuzzedLeaf>()) {
      if (key != "name") raiseUndefined();
      if (value.isAbsent() || value.isNull()) raiseInvalid();
      const NSString name = value.as<NSString>();
      announce(target, key, [&] { leaf->setName(name); });
    } else if (auto* map = target.object<NSMutableDictionary>()) {
      announce(target, key, [&] {
        if (value.isAbsent()) {
          map->removeObjectForKey(key);
        } else {
          map->setObject(value, key);
        }
      });
    } else if (target.object<NSDictionary>()) {
      raiseUndefined();
    } else {
      const std::vector<Value> elements = elementsOf(target).value();
      for (const Value& each : elements) {
        if (each.isNull()) continue;
        if (!each.isObject()) raiseInvalid();
        set(each, key, value);
      }
    }
  }

  void set(const Value& target, Keys keys, const Value& value) {
    if (keys.size() == 1) return set(target, keys[0], value);
    const Value next = valueByModel(target, keys[0]);
    if (next.isAbsent() || next.isNull()) return;
    if (!next.isObject()) raiseUndefined();
    set(next, keys.subspan(1), value);
  }

  /// Raises for a key that no object of the stated class or of its subclasses has.
  static void checkStated(std::string_view className, Keys keys) {
    for (const NSString& key : keys) {
      if (className.empty() || isOperator(key)) return;
      if (className.starts_with("NS")) return;  // the collections accept any key
      if (className == "FuzzedLeaf") {
        if (key != "name" && key != "self" && key != "description") raiseUndefined();
        return;
      }
      const NodeKey* known = nodeKey(key, true);
      if (!known) raiseUndefined();
      className = known->leadsTo;
    }
  }

  void checkPath(const Value& root, const std::vector<NSString>& keys) {
    if (keys.size() > greatestKeyCount) raiseInvalid();
    if (root.object<NSDictionary>() && isOperator(keys[0])) raiseInvalid();
    (void)valueByModel(root, Keys(keys));
    Value holder = root;
    for (std::size_t depth = 0; depth + 1 < keys.size(); ++depth) {
      const Value next = valueByModel(holder, keys[depth]);
      if (next.isAbsent() || next.isNull()) {
        const NSString className =
            holder.object<NSDictionary>() ? NSString("NSDictionary") : holder.classObject().name();
        return checkStated(className.str(), Keys(keys).subspan(depth));
      }
      if (!isObservable(next) || isOperator(keys[depth + 1])) return;
      holder = next;
    }
  }
};

inline bool sameCall(const Call& a, const Call& b) {
  return a.watcher == b.watcher && a.context == b.context && a.path == b.path && a.isPrior == b.isPrior &&
         same(a.root, b.root) && same(a.before, b.before) && same(a.after, b.after);
}

inline bool alike(const World& a, const World& b) {
  if (a.all.size() != b.all.size() || a.leaf->name() != b.leaf->name()) return false;
  for (std::size_t i = 0; i < a.maps.size(); ++i) {
    if (!same(a.maps[i], b.maps[i])) return false;
  }
  for (std::size_t i = 0; i < a.all.size(); ++i) {
    const Ref<FuzzedNode> one = a.all[i].lock(), other = b.all[i].lock();
    if (!one != !other) return false;
    if (!one) continue;
    for (const NodeKey& key : nodeKeys) {
      if (key.set && !same(key.get(*one), key.get(*other))) return false;
    }
    if (dynamic_cast<FuzzedSpecial*>(one.get()) && !same(specialKey.get(*one), specialKey.get(*other))) return false;
  }
  return true;
}

/// Opens the circles of nodes that hold one another.
inline void open(World& world) {
  for (const Weak<FuzzedNode>& weak : world.all) {
    const Ref<FuzzedNode> node = weak.lock();
    if (!node) continue;
    for (const char* key : {"next", "list", "group", "map", "any", "grade"}) nodeKey(key, false)->set(*node, {});
    if (auto* special = dynamic_cast<FuzzedSpecial*>(node.get())) special->setSpecial({});
  }
  for (const auto& map : world.maps) map->removeAllObjects();
}

inline bool isEmpty(const World& world) {
  return std::ranges::all_of(world.all, [](const Weak<FuzzedNode>& weak) { return !weak.lock(); });
}

}  // namespace norvik::fuzz
