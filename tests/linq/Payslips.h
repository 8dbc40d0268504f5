// tests/linq/Payslips.h - the objects that the tests of queries use.
#pragma once

#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "NorvikCore/platform/object/Block.h"
#include "NorvikCore/platform/object/NSObject.h"
#include "NorvikCore/platform/values/Decimal_literal.h"
#include "NorvikCore/platform/values/NSException.h"

#include <gtest/gtest.h>

#include <string>

namespace norvik {

class LinqPayslip : public NSObject {
  NK_OBJECT(LinqPayslip, NSObject)
  NK_PROPERTY(NSString, name, setName)
  NK_PROPERTY(Value, department, setDepartment)
  NK_PROPERTY(std::optional<Decimal>, netPay, setNetPay)
  NK_PROPERTY(Ref<NSArray>, lines, setLines)
};

/// A subclass, for tests that distinguish objects by their class.
class LinqFinalPayslip : public LinqPayslip {
  NK_OBJECT(LinqFinalPayslip, LinqPayslip)
};

inline Ref<LinqPayslip> linqPayslip(const char* name, Value department, std::optional<Decimal> netPay) {
  auto slip = make<LinqPayslip>();
  slip->setName(name);
  slip->setDepartment(department);
  slip->setNetPay(netPay);
  return slip;
}

/// Objects that are equal if their numbers are equal. The mark distinguishes equal objects.
class LinqCode : public NSObject {
  NK_OBJECT(LinqCode, NSObject)
  NK_PROPERTY(std::int64_t, number, setNumber)
  NK_PROPERTY(NSString, mark, setMark)

  [[nodiscard]] bool isEqual(const NSObject& other) const override {
    const auto* code = dynamic_cast<const LinqCode*>(&other);
    return code && code->number() == number();
  }
  [[nodiscard]] std::size_t hash() const override { return static_cast<std::size_t>(number()); }
  [[nodiscard]] NSComparisonResult compare(const Value& other) const {
    const std::int64_t itsNumber = other.as<Ref<LinqCode>>()->number();
    return number() < itsNumber ? NSOrderedAscending : number() > itsNumber ? NSOrderedDescending : NSOrderedSame;
  }
  NK_METHOD_AS(compare, "compare:")
};

inline Ref<LinqCode> linqCode(std::int64_t number, const char* mark = "") {
  auto code = make<LinqCode>();
  code->setNumber(number);
  code->setMark(mark);
  return code;
}

/// The content of a collection in one line.
inline std::string text(const Value& value);
inline std::string text(const NSArray& array) {
  std::string all = "[";
  for (const Value& each : array) all += (all.size() > 1 ? ", " : "") + text(each);
  return all + "]";
}
inline std::string text(const NSDictionary& dictionary) {
  std::string all = "{";
  for (const auto& [key, value] : dictionary) all += (all.size() > 1 ? ", " : "") + text(key) + ": " + text(value);
  return all + "}";
}
inline std::string text(const Value& value) {
  if (const auto* array = value.object<NSArray>()) return text(*array);
  if (const auto* dictionary = value.object<NSDictionary>()) return text(*dictionary);
  if (const auto* slip = value.object<LinqPayslip>()) return slip->name().str();
  if (const auto* code = value.object<LinqCode>()) return std::to_string(code->number()) + code->mark().str();
  return value.description().utf8();
}
template <class T>
std::string text(const Ref<T>& collection) {
  return collection ? text(*collection) : "nothing";
}

template <class Function>
std::string nameOfRaised(Function&& function) {
  try {
    function();
  } catch (const NSException& exception) {
    return exception.name().str();
  }
  return "nothing raised";
}

template <class T>
bool isMutable(const Ref<T>& collection) {
  const NSString name = collection->classObject().name();
  return name == "NSMutableArray" || name == "NSMutableDictionary";
}

}  // namespace norvik
