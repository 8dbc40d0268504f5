#include "NorvikCore/platform/keyvalue/KeyValueCoding.h"

#include "NorvikCore/platform/collections/NSError.h"
#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/collections/NSMutableSet.h"
#include "NorvikCore/platform/keyvalue/KeyValueObserving.h"
#include "tests/support/ExpectRaises.h"

#include <gtest/gtest.h>

namespace norvik {
namespace {

class KeyedEmployee : public NSObject {
  NK_OBJECT(KeyedEmployee, NSObject)
  NK_PROPERTY(NSString, name, setName)
  NK_PROPERTY(Ref<NSArray>, slips, setSlips)
};

class KeyedSlip : public NSObject {
  NK_OBJECT(KeyedSlip, NSObject)
  NK_PROPERTY(Decimal, grossPay, setGrossPay)
  NK_PROPERTY(std::optional<Decimal>, bonus, setBonus)
  NK_PROPERTY(Ref<KeyedEmployee>, employee, setEmployee)
  NK_READONLY_PROPERTY(int, version)
  int month() const { return month_; }
  void setMonth(int month) { month_ = month; }
  NK_METHOD(month)
  NK_METHOD_AS(setMonth, "setMonth:")
  bool validateGrossPay(Value* value, Ref<NSError>* error) {
    if (value->isNumber() && value->as<Decimal>() >= 0) {
      *value = value->as<Decimal>().decimalNumberByMultiplyingBy(1);
      return true;
    }
    if (error) *error = NSError::errorWithDomain("Payroll", 1);
    if (value->isString()) *value = 0;
    return value->isNumber() && *value == Value(0);
  }
  NK_METHOD_AS(validateGrossPay, "validateGrossPay:error:")

 private:
  int month_ = 4;
};

Ref<KeyedSlip> slip(const Decimal& pay, const std::optional<Decimal>& bonus = std::nullopt) {
  auto made = make<KeyedSlip>();
  made->setGrossPay(pay);
  made->setBonus(bonus);
  return made;
}

Ref<NSArray> slips() { return NSArray::arrayWithObjects(slip(100.10_dec, 5), slip(200.20_dec), slip(100.10_dec, 7)); }

TEST(KeyValueCoding, HeaderExample) {
  auto one = slip(1000);
  EXPECT_EQ(one->valueForKey("grossPay"), Value(1000));
  one->setValue_forKey(1250_dec, "grossPay");
  EXPECT_EQ(one->grossPay(), 1250);
  EXPECT_TRUE(one->valueForKeyPath("employee.name").isAbsent());
  one->setEmployee(make<KeyedEmployee>());
  one->employee()->setName("Ann");
  EXPECT_EQ(one->valueForKeyPath("employee.name"), Value("Ann"));
  EXPECT_EQ(slips()->valueForKeyPath("@sum.grossPay"), Value(400.40_dec));
}

TEST(KeyValueCoding, ReadsAndWritesThroughStatedOperations) {
  auto one = slip(1);
  EXPECT_EQ(one->valueForKey("month"), Value(4));
  one->setValue_forKey(5, "month");
  EXPECT_EQ(one->month(), 5);
}

TEST(KeyValueCoding, EveryObjectHasItselfAndItsDescription) {
  auto one = slip(1);
  EXPECT_EQ(one->valueForKey("self"), Value(one));
  EXPECT_EQ(one->valueForKey("description"), Value(one->description()));
}

TEST(KeyValueCoding, AnUnknownKeyRaisesWithClassAndKey) {
  auto one = slip(1);
  EXPECT_RAISES(one->setValue_forKey(1, "nonsense"), "NSUnknownKeyException");
  EXPECT_RAISES(one->setValue_forKey(1, "version"), "NSUnknownKeyException");
  EXPECT_RAISES((void)one->valueForKey(""), "NSUnknownKeyException");
  try {
    (void)one->valueForKey("nonsense");
    FAIL();
  } catch (const NSException& e) {
    EXPECT_EQ(e.name(), NSUndefinedKeyException);
    EXPECT_EQ(e.reason(), "the class KeyedSlip has no key \"nonsense\" that can be read");
  }
}

TEST(KeyValueCoding, ADotTooManyIsAnUnknownKey) {
  auto one = slip(1);
  one->setEmployee(make<KeyedEmployee>());
  one->employee()->setName("Ann");
  for (const char* path : {"", ".", ".employee", "employee.", "employee..name", "employee.name.", "grossPay."}) {
    EXPECT_RAISES((void)one->valueForKeyPath(path), "NSUnknownKeyException") << path;
  }
  EXPECT_RAISES(one->setValue_forKeyPath("Bob", "employee.name."), "NSUnknownKeyException");
  EXPECT_EQ(one->employee()->name(), "Ann");
  EXPECT_RAISES((void)valueForKeyPath("text", "length."), "NSUnknownKeyException");
}

TEST(KeyValueCoding, APathIsCutAtItsFullStopsWhateverStandsBetweenThem) {
  const NSString high = NSString::fromCodePoint(0xD83D), low = NSString::fromCodePoint(0xDCB7);
  const NSString byte = NSString::fromBytes("\xFF"), pound = "\u00A3";
  for (const NSString& key : {high, low, byte, high + "x" + high, pound + low, NSString("\U0001F4B7")}) {
    const auto inner = NSMutableDictionary::dictionaryWith({{key, 7}});
    const auto outer = NSMutableDictionary::dictionaryWith({{key, inner}});
    EXPECT_EQ(outer->valueForKeyPath(key + "." + key), Value(7)) << key;
    EXPECT_EQ(valueForKeyPath(outer, key + "." + key), Value(7)) << key;
    EXPECT_EQ(NSArray::arrayWithObjects(inner)->valueForKeyPath("@max." + key), Value(7)) << key;
    outer->setValue_forKeyPath(8, key + "." + key);
    EXPECT_EQ(inner->objectForKey(key), Value(8)) << key;
  }
  // Surrogate halves on both sides of a full stop are two keys and do not form one character.
  const auto parted = NSMutableDictionary::dictionaryWith({{high, NSDictionary::dictionaryWith({{low, 9}})}});
  EXPECT_EQ(parted->valueForKeyPath(high + "." + low), Value(9));
}

TEST(KeyValueCoding, APathOfMoreThanAThousandKeysRaises) {
  auto one = slip(5);
  const auto selves = [](int count) {
    std::string path;
    for (int i = 0; i < count; ++i) path += "self.";
    return path;
  };
  EXPECT_EQ(one->valueForKeyPath(selves(999) + "grossPay"), Value(5));
  one->setValue_forKeyPath(6, selves(999) + "grossPay");
  EXPECT_EQ(one->grossPay(), 6);
  Value value = 1;
  for (const std::string& path : {selves(1000) + "grossPay", selves(1000) + "", std::string(1'000'000, '.')}) {
    EXPECT_RAISES((void)one->valueForKeyPath(path), "NSInvalidArgumentException");
    EXPECT_RAISES((void)valueForKeyPath("text", path), "NSInvalidArgumentException");
    EXPECT_RAISES(one->setValue_forKeyPath(7, path), "NSInvalidArgumentException");
    EXPECT_RAISES(one->validateValue_forKeyPath_error(value, path, nullptr), "NSInvalidArgumentException");
    EXPECT_RAISES((void)NSArray::array()->valueForKeyPath("@sum." + path), "NSInvalidArgumentException");
  }
  EXPECT_EQ(one->grossPay(), 6);
  const std::string longKey(5000, 'k');
  EXPECT_EQ(NSDictionary::dictionaryWith({{longKey, one}})->valueForKeyPath(longKey + ".grossPay"), Value(6));
}

class LenientKeyed : public NSObject {
  NK_OBJECT(LenientKeyed, NSObject)
  NK_PROPERTY(int, number, setNumber)
  Value valueForUndefinedKey(const NSString& key) const override { return "no " + key; }
  void setValue_forUndefinedKey(const Value& value, const NSString& key) override {
    last = key + "=" + value.description();
  }
  void setNilValueForKey(const NSString& key) override { setValue_forKey(-1, key); }
  NSString last;
};

TEST(KeyValueCoding, AClassMayAnswerForUnknownKeysAndAbsentNumbers) {
  auto lenient = make<LenientKeyed>();
  EXPECT_EQ(lenient->valueForKey("x"), Value("no x"));
  lenient->setValue_forKey(1, "y");
  EXPECT_EQ(lenient->last, "y=1");
  lenient->setValue_forKey({}, "number");
  EXPECT_EQ(lenient->number(), -1);
}

TEST(KeyValueCoding, AnAbsentValueForWhatCannotBeAbsentRaises) {
  auto one = slip(10, 1);
  EXPECT_RAISES(one->setValue_forKey({}, "grossPay"), "NSInvalidArgumentException");
  EXPECT_RAISES(one->setValue_forKey(Value::null(), "grossPay"), "NSInvalidArgumentException");
  EXPECT_EQ(one->grossPay(), 10);
  one->setValue_forKey({}, "bonus");
  one->setValue_forKey({}, "employee");
  EXPECT_EQ(one->bonus(), std::nullopt);
}

TEST(KeyValueCoding, AValueOfAnotherKindRaises) {
  auto one = slip(10);
  EXPECT_RAISES(one->setValue_forKey("ten", "grossPay"), "NSInvalidArgumentException");
  EXPECT_RAISES(one->setValue_forKey(slip(1), "employee"), "NSInvalidArgumentException");
}

TEST(KeyValueCoding, SettingAlongAPathThatBreaksOffSetsNothing) {
  auto one = slip(10);
  one->setValue_forKeyPath("Ann", "employee.name");
  one->setEmployee(make<KeyedEmployee>());
  one->setValue_forKeyPath("Ann", "employee.name");
  EXPECT_EQ(one->employee()->name(), "Ann");
  EXPECT_RAISES(one->setValue_forKeyPath(1, "grossPay.digits"), "NSUnknownKeyException");
}

TEST(KeyValueCoding, ValidationMayChangeTheValueOrRefuseIt) {
  auto one = slip(10);
  Ref<NSError> error;
  Value value = 5;
  EXPECT_TRUE(one->validateValue_forKey_error(value, "grossPay", &error));
  value = "text";
  EXPECT_TRUE(one->validateValue_forKey_error(value, "grossPay", &error));
  EXPECT_EQ(value, Value(0));
  value = -5;
  EXPECT_FALSE(one->validateValue_forKey_error(value, "grossPay", &error));
  EXPECT_EQ(error->domain(), "Payroll");
  EXPECT_FALSE(one->validateValue_forKey_error(value, "grossPay", nullptr));
  EXPECT_TRUE(one->validateValue_forKey_error(value, "bonus", &error));
}

TEST(KeyValueCoding, ValidationFollowsAPath) {
  auto holder = NSMutableDictionary::dictionaryWith({{"slip", slip(1)}});
  Value value = -5;
  EXPECT_FALSE(holder->validateValue_forKeyPath_error(value, "slip.grossPay", nullptr));
  EXPECT_TRUE(holder->validateValue_forKeyPath_error(value, "other.grossPay", nullptr));
}

TEST(KeyValueCoding, DictionariesOfValuesUseTheNullMarkerForAbsentOnes) {
  auto one = slip(10);
  const auto values = one->dictionaryWithValuesForKeys(*NSArray::arrayWith({"grossPay", "bonus"}));
  EXPECT_EQ(values->description(), "{\n    grossPay = 10;\n    bonus = <null>;\n}");
  auto other = slip(1, 2);
  other->setValuesForKeysWithDictionary(*values);
  EXPECT_EQ(other->grossPay(), 10);
  EXPECT_EQ(other->bonus(), std::nullopt);
}

TEST(KeyValueCoding, ADictionaryLooksItsKeysUp) {
  auto dictionary = NSMutableDictionary::dictionaryWith({{"count", "mine"}, {"a", slip(7)}});
  EXPECT_EQ(dictionary->valueForKey("count"), Value("mine"));
  EXPECT_TRUE(dictionary->valueForKey("b").isAbsent());
  EXPECT_EQ(dictionary->valueForKeyPath("a.grossPay"), Value(7));
  dictionary->setValue_forKey(1, "b");
  dictionary->setValue_forKey({}, "count");
  dictionary->setValue_forKeyPath(8, "a.grossPay");
  EXPECT_EQ(dictionary->allKeys()->componentsJoinedByString(","), "a,b");
  EXPECT_EQ(dictionary->valueForKeyPath("a.grossPay"), Value(8));
  EXPECT_RAISES(dictionary->copy()->setValue_forKey(1, "x"), "NSUnknownKeyException");
}

TEST(KeyValueCoding, OperatorsOfADictionaryWorkOnItsValues) {
  const auto dictionary = NSDictionary::dictionaryWith({{"a", slip(1.50_dec)}, {"b", slip(2)}});
  EXPECT_EQ(dictionary->valueForKeyPath("@sum.grossPay"), Value(3.50_dec));
  EXPECT_EQ(dictionary->valueForKey("@count"), Value(2));
}

TEST(KeyValueCoding, AnArrayAsksItsElementsAndMarksAbsentAnswers) {
  EXPECT_EQ(slips()->valueForKey("bonus").description(), "(\n    5,\n    <null>,\n    7\n)");
  const auto array = slips();
  array->setValue_forKey(1, "grossPay");
  EXPECT_EQ(array->valueForKeyPath("@sum.grossPay"), Value(3));
  EXPECT_EQ(NSArray::arrayWith({"a", "bcd"})->valueForKey("length").description(), "(\n    1,\n    3\n)");
  EXPECT_RAISES((void)array->valueForKey("nonsense"), "NSUnknownKeyException");
}

TEST(KeyValueCoding, APathGoesThroughArrays) {
  auto ann = make<KeyedEmployee>();
  ann->setSlips(slips());
  EXPECT_EQ(ann->valueForKeyPath("slips.@sum.bonus"), Value(12));
  EXPECT_EQ(ann->valueForKeyPath("slips.employee.name").description(), "(\n    <null>,\n    <null>,\n    <null>\n)");
  ann->setValue_forKeyPath(2, "slips.grossPay");
  EXPECT_EQ(ann->valueForKeyPath("slips.@max.grossPay"), Value(2));
}

TEST(KeyValueCoding, ASetAnswersWithAnArrayInWhichEqualValuesCount) {
  const auto set = NSSet::setWithArray(*slips());
  EXPECT_EQ(set->valueForKey("grossPay").description(), "(\n    100.10,\n    200.20,\n    100.10\n)");
  EXPECT_EQ(set->valueForKeyPath("@sum.grossPay"), Value(400.40_dec));
}

TEST(KeyValueCoding, CollectionOperators) {
  const auto array = slips();
  const struct {
    const char* path;
    Value expected;
  } rows[] = {
      {"@count", 3},
      {"@count.stringValue", 3},
      {"@sum.grossPay", 400.40_dec},
      {"@sum.bonus", 12},
      {"@avg.grossPay", Decimal::parse("133.46666666666666666666666666666666667").value()},  // 38 digits
      {"@avg.bonus", 4},
      {"@max.grossPay", 200.20_dec},
      {"@min.bonus", 5},
      {"@unionOfObjects.bonus", NSArray::arrayWith({5, 7})},
      {"@unionOfObjects.grossPay", NSArray::arrayWith({100.10_dec, 200.20_dec, 100.10_dec})},
      {"@distinctUnionOfObjects.grossPay", NSArray::arrayWith({100.10_dec, 200.20_dec})},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(array->valueForKeyPath(row.path), row.expected) << row.path;
  }
  EXPECT_EQ(array->valueForKeyPath("@sum.grossPay").kind(), Value::Kind::Decimal);
}

TEST(KeyValueCoding, OperatorsOnNothing) {
  const auto empty = NSArray::array();
  EXPECT_EQ(empty->valueForKeyPath("@count"), Value(0));
  EXPECT_EQ(empty->valueForKeyPath("@sum.x"), Value(0));
  EXPECT_EQ(empty->valueForKeyPath("@avg.x"), Value(0));
  EXPECT_TRUE(empty->valueForKeyPath("@max.x").isAbsent());
  EXPECT_TRUE(empty->valueForKeyPath("@min.x").isAbsent());
  EXPECT_EQ(empty->valueForKeyPath("@unionOfObjects.x"), Value(NSArray::array()));
}

TEST(KeyValueCoding, OfEqualExtremesTheFirstIsGiven) {
  const auto array = NSArray::arrayWith({5.00_dec, 5, 1.0_dec, 1});
  EXPECT_EQ(array->valueForKeyPath("@max.self").description(), "5.00");
  EXPECT_EQ(array->valueForKeyPath("@min.self").description(), "1.0");
}

TEST(KeyValueCoding, OperatorsOverElementsOfElements) {
  const auto nested = NSArray::arrayWithObjects(NSArray::arrayWith({1, 2}), NSSet::setWith({2, 3}));
  EXPECT_EQ(nested->valueForKeyPath("@unionOfArrays.self"), Value(NSArray::arrayWith({1, 2, 2, 3})));
  EXPECT_EQ(nested->valueForKeyPath("@distinctUnionOfArrays.self"), Value(NSArray::arrayWith({1, 2, 3})));
  try {
    (void)NSArray::arrayWith({1})->valueForKeyPath("@unionOfArrays.self");
    FAIL();
  } catch (const NSException& e) {
    EXPECT_EQ(e.name(), NSInvalidArgumentException);
    EXPECT_EQ(e.reason(), "\"@unionOfArrays.self\" unites collections, and an element is a NSNumber");
  }
}

TEST(KeyValueCoding, AnUnknownOperatorAndOneWithoutAPathRaise) {
  EXPECT_RAISES((void)slips()->valueForKeyPath("@median.grossPay"), "NSInvalidArgumentException");
  EXPECT_RAISES((void)slips()->valueForKeyPath("@sum"), "NSInvalidArgumentException");
  EXPECT_RAISES((void)slips()->valueForKeyPath("@sum.employee.self"), "");
  EXPECT_RAISES((void)NSArray::arrayWith({"text"})->valueForKeyPath("@sum.self"), "NSInvalidArgumentException");
}

TEST(KeyValueCoding, ValuesHaveAFewKeysOfTheirOwn) {
  const struct {
    Value target;
    const char* key;
    Value expected;
  } rows[] = {
      {"Zo\u00EB", "length", 3},
      {"12.5", "doubleValue", 12.5},
      {"12", "self", "12"},
      {2.50_dec, "stringValue", "2.50"},
      {2.50_dec, "integerValue", 2},
      {true, "boolValue", true},
      {5'000'000'000, "intValue", 2'147'483'647},
      {-5e9, "intValue", -2'147'483'648},
      {"5000000000", "intValue", 2'147'483'647},
      {1.5, "decimalValue", 1.5_dec},
      {7, "description", "7"},
      {Date::fromReferenceSeconds(60), "timeIntervalSinceReferenceDate", 60.0},
      {Value::null(), "anything", Value()},
      {Value(), "anything", Value()},
  };
  for (const auto& row : rows) EXPECT_EQ(valueForKey(row.target, row.key), row.expected) << row.key;
  EXPECT_RAISES((void)valueForKey("text", "nonsense"), "NSUnknownKeyException");
  EXPECT_RAISES((void)valueForKey(1, "length"), "NSUnknownKeyException");
  EXPECT_EQ(valueForKeyPath("/tmp/pay.csv", "lastPathComponent.length"), Value(7));
}

class KeyWatcher : public NSObject {
  NK_OBJECT(KeyWatcher, NSObject)
  void observeValueForKeyPath(const NSString& keyPath, NSObject&, const KeyValueChange& change, void*) override {
    seen = seen + keyPath + ":" + change.newValue().description() + ";";
  }
  NSString seen;
};

TEST(KeyValueCoding, SettingByKeyIsObserved) {
  auto watcher = make<KeyWatcher>();
  auto one = slip(1);
  one->addObserver(*watcher, "grossPay", NSKeyValueObservingOptionNew);
  one->setValue_forKey(2, "grossPay");
  auto dictionary = NSMutableDictionary::dictionary();
  dictionary->addObserver(*watcher, "total", NSKeyValueObservingOptionNew);
  dictionary->setValue_forKey(3, "total");
  EXPECT_EQ(watcher->seen, "grossPay:2;total:3;");
  one->removeObserver(*watcher, "grossPay");
  dictionary->removeObserver(*watcher, "total");
}

}  // namespace
}  // namespace norvik
