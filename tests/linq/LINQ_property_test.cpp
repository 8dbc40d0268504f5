// Compares every query with its model on random arrays and dictionaries, a million in total.
#include "NorvikCore/linq/LINQ.h"
#include "NorvikCore/platform/keyvalue/KeyValueCoding.h"
#include "NorvikCore/platform/values/Decimal_literal.h"

#include "LINQModel.h"
#include "tests/support/Sanitizers.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace norvik {
namespace {

constexpr int rounds = test::isSanitized ? 2'000 : 20'000;  // for 52 properties: 1,040,000

class Inputs {
 public:
  explicit Inputs(std::uint64_t seed) : random_(seed) {}

  std::size_t below(std::size_t bound) { return static_cast<std::size_t>(random_() % bound); }
  /// Numbers of different kinds that are equal, texts with lone surrogate halves, null markers, dates, collections.
  Value value() {
    switch (below(12)) {
      case 0:
        return static_cast<int>(below(4)) - 1;
      case 1:
        return Decimal(static_cast<int>(below(4))) * 1.0_dec;
      case 2:
        return static_cast<double>(below(4)) * 0.5;
      case 3:
        return 1.50_dec;
      case 4:
        return below(2) == 0;
      case 5:
        return Value::null();
      case 6:
        return NSString::fromUtf16(below(2) ? u"\xD83D" : u"\xDE00");
      case 7:
        return std::string(below(3), 'a');
      case 8:
        return below(2) ? "\U0001F600" : "\u00E9";
      case 9:
        return Date::dateWithTimeIntervalSinceReferenceDate(static_cast<double>(below(3)));
      case 10:
        return NSArray::arrayWithObjects(static_cast<int>(below(2)), "in");
      default:
        return static_cast<int>(below(30));
    }
  }
  /// A number, so that sums and sorts complete without an exception.
  Value number() {
    switch (below(5)) {
      case 0:
        return static_cast<double>(below(40)) * 0.25;
      case 1:
        return Decimal(static_cast<int>(below(20))) * 0.10_dec;
      case 2:
        return below(2) == 0;
      case 3:
        return 12345678901234567890123456789.01_dec;
      default:
        return static_cast<int>(below(20)) - 10;
    }
  }
  Value element() { return below(4) == 0 ? value() : number(); }
  Ref<NSArray> array() { return make<NSArray>(values()); }
  Ref<NSArray> numbers() {
    std::vector<Value> all(size());
    for (Value& each : all) each = number();
    return make<NSArray>(std::move(all));
  }
  Ref<NSDictionary> dictionary() {
    auto entries = NSMutableDictionary::dictionary();
    for (std::size_t left = size(); left > 0; --left)
      entries->setObject(element(), below(3) ? Value(below(12)) : value());
    if (entries->count() > 2 && below(3) == 0) entries->removeObjectForKey(entries->allKeys()->objectAtIndex(1));
    return entries;
  }

 private:
  std::size_t size() { return below(20) == 0 ? 30 : below(7); }
  std::vector<Value> values() {
    std::vector<Value> all(size());
    for (Value& each : all) each = element();
    return all;
  }

  std::mt19937_64 random_;
};

/// True if the values are equal to the last digit. Collections are compared by content and order.
bool same(const Value& a, const Value& b) {
  const auto *arrayA = a.object<NSArray>(), *arrayB = b.object<NSArray>();
  if (arrayA && arrayB) {
    if (arrayA->count() != arrayB->count()) return false;
    for (std::size_t i = 0; i < arrayA->count(); ++i) {
      if (!same(arrayA->objectAtIndex(i), arrayB->objectAtIndex(i))) return false;
    }
    return true;
  }
  const auto *dictionaryA = a.object<NSDictionary>(), *dictionaryB = b.object<NSDictionary>();
  if (dictionaryA && dictionaryB)
    return same(dictionaryA->allKeys(), dictionaryB->allKeys()) &&
           same(dictionaryA->allValues(), dictionaryB->allValues());
  if (a.isString() && b.isString()) return a == b;
  return a.isIdenticalTo(b);
}

template <class Function>
Value outcome(Function&& function) {
  try {
    return function();
  } catch (const NSException& exception) {
    return "raised " + exception.name();
  }
}

/// Calls real(inputs) and plain(inputs) with the same random inputs and compares the results.
template <class Real, class Plain>
void compare(Real&& real, Plain&& plain) {
  for (std::uint64_t seed = 1; seed <= rounds; ++seed) {
    Inputs first(seed), second(seed);
    const Value expected = outcome([&]() -> Value { return plain(second); });
    const Value actual = outcome([&]() -> Value { return real(first); });
    ASSERT_TRUE(same(actual, expected)) << "seed " << seed << ": " << actual << " instead of " << expected;
  }
}
/// The same for queries over one array or dictionary.
template <class Real, class Plain>
void compareArrays(Real&& real, Plain&& plain) {
  compare([&](Inputs& in) -> Value { return real(*in.array()); },
          [&](Inputs& in) -> Value { return plain(model::valuesOf(*in.array())); });
}
Ref<NSArray> mostlyNumbers(Inputs& in) { return in.below(8) ? in.numbers() : in.array(); }
template <class Real, class Plain>
void compareNumbers(Real&& real, Plain&& plain) {
  compare([&](Inputs& in) -> Value { return real(*mostlyNumbers(in)); },
          [&](Inputs& in) -> Value { return plain(model::valuesOf(*mostlyNumbers(in))); });
}
template <class Real, class Plain>
void compareDictionaries(Real&& real, Plain&& plain) {
  compare([&](Inputs& in) -> Value { return real(*in.dictionary()); },
          [&](Inputs& in) -> Value { return plain(model::entriesOf(*in.dictionary())); });
}

using model::Entries;
using model::Values;

const auto isOdd = [](const Value& each) { return each.isNumber() && each.number().longLongValue() % 2 != 0; };
const auto isSmallEntry = [](const Value& key, const Value& value) { return key.isNumber() != isOdd(value); };
const auto kindOrNothing = [](const Value& each) -> Value {
  if (each.isNull()) return {};
  return each.isNumber() ? Value(each.number().longLongValue() % 3) : Value(static_cast<int>(each.kind()));
};
const auto kind = [](const Value& each) -> Value {
  return each.isNumber() ? Value(each.number().decimalValue() * 1.0_dec) : each;
};
const auto manyOrNothing = [](const Value& each) -> Value {
  if (each.isNull()) return each;
  return isOdd(each) ? Value(NSArray::arrayWithObjects(each, "x")) : Value();
};
const auto accumulate = [](const Value& next, const Value& running) -> Value {
  if (next.isNull()) return {};
  return running.isAbsent() ? next : Value(running.description() + next.description());
};

TEST(NSArrayLINQ_model, Where) {
  compareArrays([](const NSArray& a) { return linq_where(a, isOdd); },
                [](const Values& v) { return model::array(model::where(v, isOdd)); });
}
TEST(NSArrayLINQ_model, OfType) {
  for (const char* name : {"NSNumber", "NSDecimalNumber"}) {
    const Class& wanted = *Class::named(name);
    compareArrays([&](const NSArray& a) { return linq_ofType(a, wanted); },
                  [&](const Values& v) { return model::array(model::ofType(v, wanted)); });
  }
}
TEST(NSArrayLINQ_model, FirstOrNil) {
  compareArrays([](const NSArray& a) { return linq_firstOrNil(a, isOdd); },
                [](const Values& v) { return model::firstOrNil(v, isOdd); });
}
TEST(NSArrayLINQ_model, Select) {
  compareArrays([](const NSArray& a) { return linq_select(a, kindOrNothing); },
                [](const Values& v) { return model::array(model::select(v, kindOrNothing)); });
}
TEST(NSArrayLINQ_model, SelectMany) {
  compareArrays([](const NSArray& a) { return linq_selectMany(a, manyOrNothing); },
                [](const Values& v) { return model::array(model::selectMany(v, manyOrNothing)); });
}
TEST(NSArrayLINQ_model, SkipAndTake) {
  compare(
      [](Inputs& in) -> Value {
        const Ref<NSArray> array = in.array();
        return linq_skip(*array, in.below(8));
      },
      [](Inputs& in) -> Value {
        const Values values = model::valuesOf(*in.array());
        return model::array(model::skip(values, in.below(8)));
      });
  compare(
      [](Inputs& in) -> Value {
        const Ref<NSArray> array = in.array();
        return linq_take(*array, in.below(8));
      },
      [](Inputs& in) -> Value {
        const Values values = model::valuesOf(*in.array());
        return model::array(model::take(values, in.below(8)));
      });
}
TEST(NSArrayLINQ_model, AllAnyCount) {
  compareArrays([](const NSArray& a) { return linq_all(a, isOdd); },
                [](const Values& v) { return model::where(v, isOdd).size() == v.size(); });
  compareArrays([](const NSArray& a) { return linq_any(a, isOdd); },
                [](const Values& v) { return !model::where(v, isOdd).empty(); });
  compareArrays([](const NSArray& a) { return linq_count(a, isOdd); },
                [](const Values& v) { return model::where(v, isOdd).size(); });
}
TEST(NSArrayLINQ_model, Distinct) {
  compareArrays([](const NSArray& a) { return linq_distinct(a); },
                [](const Values& v) { return model::array(model::distinct(v)); });
  compareArrays([](const NSArray& a) { return linq_distinctWithBlock(a, kindOrNothing); },
                [](const Values& v) { return model::array(model::distinctWithBlock(v, kindOrNothing)); });
}

/// For queries over two arrays. Some results must be the receiver itself or the other array itself.
template <class Real, class Plain>
void compareTwo(Real&& real, Plain&& plain) {
  compare(
      [&](Inputs& in) -> Value {
        const Ref<NSArray> a = in.array(), b = in.array();
        const Ref<NSArray> result = real(*a, b);
        return NSArray::arrayWithObjects(result, result == a, result == b);
      },
      [&](Inputs& in) -> Value {
        const Ref<NSArray> a = in.array(), b = in.array();
        const Value result = plain(a, b);
        return NSArray::arrayWithObjects(result, result.object() == a.get(), result.object() == b.get());
      });
}
TEST(NSArrayLINQ_model, Sets) {
  compareTwo([](const NSArray& a, const Ref<NSArray>& b) { return linq_except(a, b); },
             [](const Ref<NSArray>& a, const Ref<NSArray>& b) -> Value {
               if (a->count() == 0 || b->count() == 0) return a;
               return model::array(model::except(model::valuesOf(*a), model::valuesOf(*b)));
             });
  compareTwo([](const NSArray& a, const Ref<NSArray>& b) { return linq_intersect(a, b); },
             [](const Ref<NSArray>& a, const Ref<NSArray>& b) -> Value {
               if (a->count() == 0 || b->count() == 0) return a;
               return model::array(model::intersect(model::valuesOf(*a), model::valuesOf(*b)));
             });
  compareTwo([](const NSArray& a, const Ref<NSArray>& b) { return linq_union(a, b); },
             [](const Ref<NSArray>& a, const Ref<NSArray>& b) -> Value {
               if (a->count() == 0) return b;
               if (b->count() == 0) return a;
               return model::array(model::unite(model::valuesOf(*a), model::valuesOf(*b)));
             });
}
TEST(NSArrayLINQ_model, Generation) {
  const auto end = [](Inputs& in) { return static_cast<std::int64_t>(in.below(9)) - 4; };
  compare(
      [&](Inputs& in) -> Value {
        const std::int64_t from = end(in), to = end(in);
        return linq_from(from, to);
      },
      [&](Inputs& in) -> Value {
        const std::int64_t from = end(in), to = end(in);
        return model::array(model::fromTo(from, to));
      });
}
TEST(NSArrayLINQ_model, Sorting) {
  compareNumbers([](const NSArray& a) { return linq_orderByAscending(a); },
                 [](const Values& v) { return model::array(model::ascending(v)); });
  compareNumbers([](const NSArray& a) { return linq_orderByDescending(a); },
                 [](const Values& v) { return model::array(model::reverse(model::ascending(v))); });
  compareArrays([](const NSArray& a) { return linq_reverse(a); },
                [](const Values& v) { return model::array(model::reverse(v)); });
}
TEST(NSArrayLINQ_model, OrderByKey) {
  for (const bool isAscending : {true, false}) {
    for (const char* key : {"k", "self.k"}) {
      // Dictionaries with a key that may be missing. The values are of one kind, or of kinds that cannot be compared.
      const auto rows = [](Inputs& in) {
        std::vector<Value> all;
        const std::size_t style = in.below(5);
        for (std::size_t left = in.below(8); left > 0; --left) {
          auto row = NSMutableDictionary::dictionaryWith({{"n", left}});
          const Value found =
              style == 0   ? Value(std::string(in.below(3), 'b'))
              : style == 1 ? Value(Decimal(static_cast<int>(in.below(4))) * 0.5_dec)
              : style == 2 ? Value(Date::dateWithTimeIntervalSinceReferenceDate(static_cast<double>(in.below(3))))
              : style == 3 ? in.number()
                           : in.element();
          if (in.below(6)) row->setObject(found, "k");
          row->setObject(row->copy(), "self");
          all.push_back(row);
        }
        return make<NSArray>(std::move(all));
      };
      compare([&](Inputs& in) -> Value { return linq_orderByKey(*rows(in), key, isAscending); },
              [&](Inputs& in) -> Value {
                return model::array(model::byKey(
                    model::valuesOf(*rows(in)), [&](const Value& each) { return valueForKeyPath(each, key); },
                    isAscending));
              });
    }
  }
}
TEST(NSArrayLINQ_model, Grouping) {
  compareArrays([](const NSArray& a) { return linq_groupBy(a, kind); },
                [](const Values& v) { return model::dictionary(model::groupBy(v, kind)); });
  compareArrays([](const NSArray& a) { return linq_groupBy(a, kindOrNothing); },
                [](const Values& v) { return model::dictionary(model::groupBy(v, kindOrNothing)); });
  compareArrays([](const NSArray& a) { return linq_toLookup(a, kindOrNothing); },
                [](const Values& v) { return model::array(model::toLookup(v, kindOrNothing)); });
  compareArrays([](const NSArray& a) { return linq_lookup(*linq_toLookup(a, kind), 1); },
                [](const Values& v) {
                  return model::array(
                      model::toLookup(model::where(v, [](const Value& each) { return kind(each) == Value(1); }), kind));
                });
}
TEST(NSArrayLINQ_model, Converting) {
  compareArrays([](const NSArray& a) { return linq_toDictionary(a); },
                [](const Values& v) { return model::dictionary(model::toDictionary(v, nullptr, nullptr)); });
  compareArrays([](const NSArray& a) { return linq_toDictionaryWithKeyBlock(a, kind); },
                [](const Values& v) { return model::dictionary(model::toDictionary(v, kind, nullptr)); });
  compareArrays([](const NSArray& a) { return linq_toDictionaryWithKeyBlock(a, kind, kindOrNothing); },
                [](const Values& v) { return model::dictionary(model::toDictionary(v, kind, kindOrNothing)); });
}
TEST(NSArrayLINQ_model, Aggregation) {
  compareArrays([](const NSArray& a) { return linq_aggregate(a, accumulate); },
                [](const Values& v) { return model::aggregate(v, accumulate); });
  compareNumbers([](const NSArray& a) { return linq_sum(a); }, [](const Values& v) { return model::sum(v); });
  compareNumbers([](const NSArray& a) { return linq_avg(a); }, [](const Values& v) { return model::average(v); });
  compareNumbers([](const NSArray& a) { return linq_max(a); },
                 [](const Values& v) { return model::extreme(v, NSOrderedDescending); });
  compareNumbers([](const NSArray& a) { return linq_min(a); },
                 [](const Values& v) { return model::extreme(v, NSOrderedAscending); });
}

TEST(NSDictionaryLINQ_model, Filtering) {
  compareDictionaries([](const NSDictionary& d) { return linq_where(d, isSmallEntry); },
                      [](const Entries& e) { return model::dictionary(model::where(e, isSmallEntry)); });
  compareDictionaries([](const NSDictionary& d) { return linq_toArrayWhereKeyValue(d, isSmallEntry); },
                      [](const Entries& e) { return model::array(model::valuesOf(model::where(e, isSmallEntry))); });
}
TEST(NSDictionaryLINQ_model, ValuesAreMappedBackToTheFirstKey) {
  compareDictionaries(
      [](const NSDictionary& d) { return linq_distinct(d); },
      [](const Entries& e) { return model::dictionary(model::mappedBack(e, model::distinct(model::valuesOf(e)))); });
  const auto two = [](auto&& query) {
    return [query](Inputs& in) -> Value {
      const Ref<NSDictionary> a = in.dictionary(), b = in.dictionary();
      return query(a, b);
    };
  };
  compare(two([](const auto& a, const auto& b) { return linq_except(*a, b); }),
          two([](const auto& a, const auto& b) -> Value {
            if (a->count() == 0 || b->count() == 0) return a;
            const Entries entries = model::entriesOf(*a);
            return model::dictionary(model::mappedBack(
                entries, model::except(model::valuesOf(entries), model::valuesOf(model::entriesOf(*b)))));
          }));
  compare(two([](const auto& a, const auto& b) { return linq_intersect(*a, b); }),
          two([](const auto& a, const auto& b) -> Value {
            if (a->count() == 0 || b->count() == 0) return a;
            const Entries entries = model::entriesOf(*a);
            return model::dictionary(model::mappedBack(
                entries, model::intersect(model::valuesOf(entries), model::valuesOf(model::entriesOf(*b)))));
          }));
  compare(two([](const auto& a, const auto& b) { return linq_merge(*a, b); }),
          two([](const auto& a, const auto& b) -> Value {
            return model::dictionary(model::merge(model::entriesOf(*a), model::entriesOf(*b)));
          }));
}
TEST(NSDictionaryLINQ_model, Partitioning) {
  const auto part = [](auto&& query) {
    return [query](Inputs& in) -> Value {
      const Ref<NSDictionary> dictionary = in.dictionary();
      return query(dictionary, in.below(8));
    };
  };
  compare(part([](const auto& d, std::size_t count) { return linq_skip(*d, count); }),
          part([](const auto& d, std::size_t count) {
            return model::dictionary(model::skip(model::entriesOf(*d), count));
          }));
  compare(part([](const auto& d, std::size_t count) { return linq_take(*d, count); }),
          part([](const auto& d, std::size_t count) {
            return model::dictionary(model::take(model::entriesOf(*d), count));
          }));
}
TEST(NSDictionaryLINQ_model, Aggregation) {
  compareDictionaries([](const NSDictionary& d) { return linq_sum(d); },
                      [](const Entries& e) { return model::sum(model::valuesOf(e)); });
  compareDictionaries([](const NSDictionary& d) { return linq_max(d); },
                      [](const Entries& e) { return model::extreme(model::valuesOf(e), NSOrderedDescending); });
  compareDictionaries([](const NSDictionary& d) { return linq_aggregate(d, accumulate); },
                      [](const Entries& e) { return model::aggregate(model::valuesOf(e), accumulate); });
}

TEST(Chain_model, GivesWhatTheQueriesGiveOneAfterTheOther) {
  const auto doubled = [](const Value& each) -> Value {
    return each.isNumber() ? Value(each.as<Decimal>() * 2_dec) : Value();
  };
  const auto decimals = [](const Value& each) { return each.as<Decimal>() + 1_dec; };
  compareNumbers([&](const NSArray& a) { return a | linq_where(isOdd) | linq_select(doubled) | linq_sum(); },
                 [&](const Values& v) { return model::sum(model::select(model::where(v, isOdd), doubled)); });
  compareNumbers([&](const NSArray& a) { return a | linq_select(decimals) | linq_skip(1) | linq_sum(); },
                 [&](const Values& v) { return model::sum(model::skip(model::select(v, decimals), 1)); });
  compareNumbers([&](const NSArray& a) { return a | linq_select(decimals) | linq_where(isOdd) | linq_min(); },
                 [&](const Values& v) {
                   return model::extreme(model::where(model::select(v, decimals), isOdd), NSOrderedAscending);
                 });
  compareArrays(
      [&](const NSArray& a) {
        return a | linq_selectMany(manyOrNothing) | linq_take(3) | linq_select(kindOrNothing) | linq_distinct();
      },
      [&](const Values& v) {
        return model::array(
            model::distinct(model::select(model::take(model::selectMany(v, manyOrNothing), 3), kindOrNothing)));
      });
  compareArrays(
      [&](const NSArray& a) {
        return model::valuesOf(a) | linq_where(isOdd) | linq_take(2) | linq_select(doubled) | linq_toArray();
      },
      [&](const Values& v) { return model::array(model::select(model::take(model::where(v, isOdd), 2), doubled)); });
}

}  // namespace
}  // namespace norvik
