// tests/linq/LINQModel.h - every query written as simply as possible: loops over all elements, without hashing, sorting
// algorithms or early ends. The results of the queries are compared with these results.
#pragma once

#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/object/Class.h"
#include "NorvikCore/platform/values/NSException.h"

#include <functional>
#include <utility>
#include <vector>

namespace norvik::model {

using Values = std::vector<Value>;
using Entries = std::vector<NSDictionary::Entry>;
using Predicate = std::function<bool(const Value&)>;
using EntryPredicate = std::function<bool(const Value&, const Value&)>;
using Selector = std::function<Value(const Value&)>;
using Accumulator = std::function<Value(const Value&, const Value&)>;

inline Values valuesOf(const NSArray& array) {
  Values values;
  for (std::size_t i = 0; i < array.count(); ++i) values.push_back(array.objectAtIndex(i));
  return values;
}
inline Entries entriesOf(const NSDictionary& dictionary) {
  Entries entries;
  for (const auto& entry : dictionary) entries.push_back(entry);
  return entries;
}
inline Value array(Values values) { return make<NSArray>(std::move(values)); }
inline Value dictionary(const Entries& entries) {
  auto result = NSMutableDictionary::dictionary();
  for (const auto& entry : entries) result->setObject(entry.value, entry.key);
  return result;
}
inline bool contains(const Values& values, const Value& value) {
  bool found = false;
  for (const Value& each : values) found = found || each == value;
  return found;
}
inline Value orNull(const Value& value) { return value.isAbsent() ? Value::null() : value; }
inline void requireKey(const Value& key) {
  if (key.isAbsent()) NSException::raise(NSInvalidArgumentException, "no key");
}

inline Values where(const Values& values, const Predicate& passes) {
  Values result;
  for (const Value& each : values) {
    if (passes(each)) result.push_back(each);
  }
  return result;
}
inline Values select(const Values& values, const Selector& selector) {
  Values result;
  for (const Value& each : values) result.push_back(orNull(selector(each)));
  return result;
}
inline Values selectMany(const Values& values, const Selector& selector) {
  Values result;
  for (const Value& each : values) {
    const Value many = selector(each);
    if (const auto* elements = many.object<NSArray>()) {
      for (const Value& inner : valuesOf(*elements)) result.push_back(inner);
    }
  }
  return result;
}
inline Values ofType(const Values& values, const Class& wanted) {
  return where(values, [&](const Value& each) {
    for (const Class* c = &each.classObject(); c; c = c->superclass()) {
      if (c == &wanted) return true;
    }
    return false;
  });
}
inline Value firstOrNil(const Values& values, const Predicate& passes) {
  const Values passed = where(values, passes);
  return passed.empty() ? Value() : passed[0];
}
inline Values skip(const Values& values, std::size_t count) {
  Values result;
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (i >= count) result.push_back(values[i]);
  }
  return result;
}
inline Values take(const Values& values, std::size_t count) {
  Values result;
  if (count >= values.size()) return result;
  for (std::size_t i = 0; i < count; ++i) result.push_back(values[i]);
  return result;
}
inline Values distinct(const Values& values) {
  Values result;
  for (const Value& each : values) {
    if (!contains(result, each)) result.push_back(each);
  }
  return result;
}
inline Values distinctWithBlock(const Values& values, const Selector& key) {
  Values result, seen;
  for (const Value& each : values) {
    const Value found = key(each);
    if (found.isAbsent() || contains(seen, found)) continue;
    seen.push_back(found);
    result.push_back(each);
  }
  return result;
}
inline Values except(const Values& values, const Values& other) {
  return where(values, [&](const Value& each) { return !contains(other, each); });
}
inline Values intersect(const Values& values, const Values& other) {
  return distinct(where(values, [&](const Value& each) { return contains(other, each); }));
}
inline Values unite(const Values& values, const Values& other) {
  Values all = values;
  all.insert(all.end(), other.begin(), other.end());
  return distinct(all);
}
inline Values fromTo(std::int64_t from, std::int64_t to) {
  Values result;
  if (from == to) return result;
  for (std::int64_t i = from; from < to ? i <= to : i >= to; i += from < to ? 1 : -1) result.emplace_back(i);
  return result;
}
inline Values reverse(const Values& values) {
  Values result;
  for (const Value& each : values) result.insert(result.begin(), each);
  return result;
}
/// Inserts each element after all elements that are not greater.
inline Values ordered(const Values& values, const Accumulator& compare) {
  Values result;
  for (const Value& each : values) {
    std::size_t at = result.size();
    while (at > 0 && compare(each, result[at - 1]).as<int>() < 0) --at;
    result.insert(result.begin() + static_cast<std::ptrdiff_t>(at), each);
  }
  return result;
}
inline Values ascending(const Values& values) {
  return ordered(values, [](const Value& a, const Value& b) { return static_cast<int>(a.compare(b)); });
}
inline Values byKey(const Values& values, const Selector& key, bool isAscending) {
  return ordered(values, [&](const Value& a, const Value& b) -> Value {
    const Value keyA = key(a), keyB = key(b);
    const bool hasA = !keyA.isAbsent() && !keyA.isNull(), hasB = !keyB.isAbsent() && !keyB.isNull();
    const int order = hasA && hasB ? static_cast<int>(keyA.compare(keyB)) : hasA - hasB;
    return isAscending ? order : -order;
  });
}
inline Entries groupBy(const Values& values, const Selector& key) {
  Values keys;
  for (const Value& each : values) {
    const Value found = key(each);
    requireKey(found);
    keys.push_back(found);
  }
  Entries result;
  for (const Value& eachKey : distinct(keys)) {
    Values group;
    for (std::size_t i = 0; i < values.size(); ++i) {
      if (keys[i] == eachKey) group.push_back(values[i]);
    }
    result.push_back({eachKey, array(group)});
  }
  return result;
}
inline Values toLookup(const Values& values, const Selector& key) {
  Values result;
  for (const Value& each : values) {
    requireKey(key(each));
    result.push_back(dictionary({{key(each), each}}));
  }
  return result;
}
/// If keys are equal, keeps the first key with the last one's value.
inline Entries keyed(const Entries& entries) {
  Entries result;
  for (const auto& entry : entries) {
    bool found = false;
    for (auto& before : result) {
      if (before.key == entry.key) {
        before.value = entry.value;
        found = true;
      }
    }
    if (!found) result.push_back(entry);
  }
  return result;
}
inline Entries toDictionary(const Values& values, const Selector& key, const Selector& value) {
  Entries entries;
  for (const Value& each : values) {
    const Value itsKey = key ? key(each) : Value(entries.size());
    requireKey(itsKey);
    entries.push_back({itsKey, value ? orNull(value(each)) : each});
  }
  return keyed(entries);
}
inline Value aggregate(const Values& values, const Accumulator& accumulator) {
  if (values.empty()) return {};
  Value running = values[0];
  for (std::size_t i = 1; i < values.size(); ++i) running = accumulator(values[i], running);
  return running;
}
inline Value sum(const Values& values) {
  if (values.empty()) return Decimal(0);
  return aggregate(values, [](const Value& next, const Value& running) -> Value {
    return next.as<Decimal>() + running.as<Decimal>();
  });
}
inline Value average(const Values& values) {
  if (values.empty()) return Decimal(0);
  return sum(values).as<Decimal>() / Decimal(values.size());
}
inline Value extreme(const Values& values, NSComparisonResult wanted) {
  if (values.empty()) return Decimal(0);
  return aggregate(values, [wanted](const Value& next, const Value& running) {
    return next.compare(running) == wanted ? next : running;
  });
}

inline Values valuesOf(const Entries& entries) {
  Values values;
  for (const auto& entry : entries) values.push_back(entry.value);
  return values;
}
/// Searches the keys in order for the first one with an equal value, for each value.
inline Entries mappedBack(const Entries& entries, const Values& values) {
  Entries result;
  for (const Value& value : values) {
    for (const auto& entry : entries) {
      if (!(entry.value == value)) continue;
      result.push_back(entry);
      break;
    }
  }
  return keyed(result);
}
inline Entries where(const Entries& entries, const EntryPredicate& passes) {
  Entries result;
  for (const auto& entry : entries) {
    if (passes(entry.key, entry.value)) result.push_back(entry);
  }
  return result;
}
inline Entries merge(const Entries& entries, const Entries& other) {
  Entries result = entries;
  for (const auto& entry : other) {
    bool found = false;
    for (const auto& present : entries) found = found || present.key == entry.key;
    if (!found) result.push_back(entry);
  }
  return result;
}
inline Entries skip(const Entries& entries, std::size_t count) {
  Entries result;
  for (std::size_t i = count; i < entries.size(); ++i) result.push_back(entries[i]);
  return result;
}
inline Entries take(const Entries& entries, std::size_t count) {
  Entries result;
  for (std::size_t i = 0; entries.size() > count && i < count; ++i) result.push_back(entries[i]);
  return result;
}

}  // namespace norvik::model
