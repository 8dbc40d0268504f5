#include "NorvikCore/diagnostics/NSObject+MK_AutoDescribe.h"

#include "NorvikCore/platform/kernel/SystemLog.h"
#include "NorvikCore/platform/values/Date_literals.h"
#include "NorvikCore/platform/values/Decimal.h"
#include "NorvikCore/platform/values/Decimal_literal.h"
#include "NorvikCore/platform/values/NSException.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

using namespace norvik;
using testing::ElementsAre;

namespace {

class Payslip : public NSObject {
  NK_OBJECT(Payslip, NSObject)
  NK_PROPERTY(Decimal, grossPay, setGrossPay)
  NK_COMPUTED_PROPERTY(Decimal, netPay)
  void recalculate() {}
  NK_METHOD(recalculate)
  [[nodiscard]] Decimal netPay() const { return 987.65_dec; }
};

class Payment : public NSObject {
  NK_OBJECT(Payment, NSObject)
  NK_PROPERTY(Decimal, amount, setAmount)
  NK_PROPERTY(Date, date, setDate)
  NK_COMPUTED_PROPERTY(Decimal, fee)
  NK_PROPERTY(Ref<NSObject>, employee, setEmployee)
  [[nodiscard]] Decimal fee() const { NSException::raise(NSGenericException, "no bank"); }
};

class DescribedPerson : public NSObject {
  NK_OBJECT(DescribedPerson, NSObject)
  NK_PROPERTY(NSString, name, setName)
  NK_PROPERTY(int, age, setAge)
  void recalculate() {}
  NK_METHOD(recalculate)
  void destroyMembers() {}
  NK_METHOD_AS(destroyMembers, ".cxx_destruct")
  static int count() { return 0; }
  NK_CLASS_METHOD(count)
};

class DescribedEmployee : public DescribedPerson {
  NK_OBJECT(DescribedEmployee, DescribedPerson)
  void raise(const Decimal&, bool) {}
  NK_METHOD_AS(raise, "raise:really:")
  NK_PROPERTY(std::optional<Decimal>, bonus, setBonus)
  NK_READONLY_PROPERTY(bool, isPaid)
  NK_PROPERTY(int, age, setAge)  // hides the superclass's
  void prepare() {}
  NK_METHOD(prepare)
};

class DescribedOddly : public NSObject {
  NK_OBJECT(DescribedOddly, NSObject)
  NK_PROPERTY(NSString, url, setURLText)
  void nothing() {}
  NK_METHOD_AS(nothing, "URL")      // the property's name in another case
  NK_METHOD_AS(nothing, "SetUrl:")  // "set" with the property's name in another case
  NK_METHOD_AS(nothing, "url:")     // neither
  NK_METHOD_AS(nothing, "Zo\u00EB's \"pay\"\n:%@")
  NK_METHOD_AS(nothing, "")
  NK_METHOD_AS(nothing, ".CXX_destruct")
};

/// The properties that a category adds may have any names.
const detail::CategoryProperty streetProperty{
    DescribedOddly::staticClass(),
    {.name = "Stra\u00DFe", .text = "NSString", .get = [](const NSObject&) -> Value { return "Hauptstra\u00DFe 7"; }}};
const detail::CategoryProperty namelessProperty{
    DescribedOddly::staticClass(), {.name = "", .text = "NSString", .get = [](const NSObject&) -> Value { return 1; }}};

class DescribedFailing : public NSObject {
  NK_OBJECT(DescribedFailing, NSObject)
  NK_PROPERTY(int, before, setBefore)
  NK_COMPUTED_PROPERTY(int, broken)
  NK_PROPERTY(int, after, setAfter)
  NK_PROPERTY(std::vector<int>, hours, setHours)  // of a type that cannot convert to a Value
  int broken() const {
    if (throwsOther) throw std::runtime_error("disk");
    NSException::raise(NSGenericException, "no pay");
  }
  bool throwsOther = false;
};

std::vector<std::string> texts(const Ref<NSArray>& array) {
  std::vector<std::string> result;
  for (const Value& element : *array) result.push_back(element.as<NSString>().utf8());
  return result;
}

}  // namespace

TEST(NSObjectMKAutoDescribe, HeaderExample) {
  const auto slip = make<Payslip>();
  slip->setGrossPay(1234.50_dec);
  const kernel::SystemLogCapture console;
  mk_printObject(*slip);
  EXPECT_THAT(console.lines(),
              ElementsAre("\n- - - > Payslip attributes: \n\tgrossPay : 1234.50\n\tnetPay : 987.65\n< - - -"));
  EXPECT_THAT(texts(mk_methodList<Payslip>()), ElementsAre("grossPay", "setGrossPay:", "netPay", "recalculate"));
  EXPECT_THAT(texts(mk_methodListOnly<Payslip>()), ElementsAre("recalculate"));
}

TEST(NSObjectMKAutoDescribe, ThePageShowsWhatIsPrinted) {
  const auto payment = make<Payment>();
  payment->setAmount(1234.50_dec);
  payment->setDate("2021-05-28"_date);
  std::ifstream file(DIAGNOSTICS_PAGE);
  const std::string page{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  EXPECT_THAT(page, testing::HasSubstr("```text\n" + mk_describeObject(*payment).utf8() + "```\n"));
}

TEST(NSObjectMKAutoDescribe, IsPrintedByItsAddressForADebugger) {
  const auto slip = make<Payslip>();
  slip->setGrossPay(1234.50_dec);
  const kernel::SystemLogCapture console;
  mk_printObjectAt(slip.get());
  mk_printObjectAt(nullptr);
  EXPECT_THAT(
      console.lines(),
      ElementsAre("\n- - - > Payslip attributes: \n\tgrossPay : 1234.50\n\tnetPay : 987.65\n< - - -", "(null)"));
}

TEST(NSObjectMKAutoDescribe, MethodsOnlyAreThoseThatAreNoAccessors) {
  EXPECT_THAT(texts(mk_methodList<DescribedPerson>()),
              ElementsAre("name", "setName:", "age", "setAge:", "recalculate", ".cxx_destruct"));
  EXPECT_THAT(texts(mk_methodListOnly<DescribedPerson>()), ElementsAre("recalculate"));
}

TEST(NSObjectMKAutoDescribe, PropertiesOfTheClassComeBeforeThoseOfItsSuperclassesAndRepeat) {
  EXPECT_THAT(texts(mk_propertyList<DescribedEmployee>()), ElementsAre("bonus", "isPaid", "age", "name", "age"));
  EXPECT_THAT(texts(mk_propertyList(DescribedPerson::staticClass())), ElementsAre("name", "age"));
  EXPECT_THAT(texts(mk_propertyList<NSObject>()), ElementsAre());
}

TEST(NSObjectMKAutoDescribe, PropertiesOfCategoriesFollowAndThoseWithoutANameAreLeftOut) {
  EXPECT_THAT(texts(mk_propertyList<DescribedOddly>()), ElementsAre("url", "Stra\u00DFe"));
}

TEST(NSObjectMKAutoDescribe, MethodsAreTheClassesOwnInDeclaredOrder) {
  EXPECT_THAT(texts(mk_methodList<DescribedEmployee>()),
              ElementsAre("raise:really:", "bonus", "setBonus:", "isPaid", "age", "setAge:", "prepare"));
  EXPECT_THAT(texts(mk_methodList<NSObject>()), ElementsAre());
}

TEST(NSObjectMKAutoDescribe, MethodsHaveAnyNames) {
  EXPECT_THAT(
      texts(mk_methodList<DescribedOddly>()),
      ElementsAre("url", "setURLText:", "URL", "SetUrl:", "url:", "Zo\u00EB's \"pay\"\n:%@", "", ".CXX_destruct"));
}

TEST(NSObjectMKAutoDescribe, MethodsOnlyLeavesOutAccessorsOfSuperclassesToo) {
  EXPECT_THAT(texts(mk_methodListOnly<DescribedEmployee>()), ElementsAre("raise:really:", "prepare"));
}

TEST(NSObjectMKAutoDescribe, MethodsOnlyComparesNamesWithoutCaseAndKnowsSettersByTheirNameAlone) {
  EXPECT_THAT(texts(mk_methodListOnly<DescribedOddly>()),
              ElementsAre("setURLText:", "url:", "Zo\u00EB's \"pay\"\n:%@", ""));
}

TEST(NSObjectMKAutoDescribe, NamesTheClass) { EXPECT_EQ(mk_className(*make<DescribedPerson>()), "DescribedPerson"); }

TEST(NSObjectMKAutoDescribe, DescribesEveryPropertyWithItsValue) {
  const auto employee = make<DescribedEmployee>();
  employee->setName("Zo\u00EB");
  employee->setAge(41);
  EXPECT_EQ(mk_describeObject(*employee),
            "\n- - - > DescribedEmployee attributes: \n\tbonus : (null)\n\tisPaid : 0\n\tage : 41\n\tname : Zo\u00EB"
            "\n\tage : 41\n< - - -\n");
}

TEST(NSObjectMKAutoDescribe, DescribesPropertiesOfCategories) {
  EXPECT_EQ(mk_describeObject(*make<DescribedOddly>()),
            "\n- - - > DescribedOddly attributes: \n\turl : \n\tStra\u00DFe : Hauptstra\u00DFe 7\n< - - -\n");
}

TEST(NSObjectMKAutoDescribe, AKeyWhoseGetterRaisesDoesNotKeepTheOthersFromBeingShown) {
  EXPECT_EQ(mk_describeObject(*make<DescribedFailing>()),
            "\n- - - > DescribedFailing attributes: \n\tbefore : 0\n\tbroken : Can't get value via KVC\n\tafter : 0"
            "\n\thours : Can't get value via KVC\n< - - -\n");
}

TEST(NSObjectMKAutoDescribe, AnUnknownKeyAndOneThatIsNoTextHaveNoValueThatCanBeRead) {
  EXPECT_EQ(mk_describeObjectKeys(*make<DescribedPerson>(), *NSArray::arrayWith({"none", 5, Value::null(), "age"})),
            "\n- - - > DescribedPerson attributes: \n\tnone : Can't get value via KVC\n\t5 : Can't get value via KVC"
            "\n\t<null> : Can't get value via KVC\n\tage : 0\n< - - -\n");
}

TEST(NSObjectMKAutoDescribe, ExceptionsOfOtherKindsPass) {
  const auto failing = make<DescribedFailing>();
  failing->throwsOther = true;
  EXPECT_THROW((void)mk_describeObject(*failing), std::runtime_error);
}

TEST(NSObjectMKAutoDescribe, NoKeysGiveTheFirstLineFollowedByTheLast) {
  EXPECT_EQ(mk_describeObjectKeys(*make<DescribedPerson>(), *NSArray::array()),
            "\n- - - > DescribedPerson attributes: \n< - - -\n");
}

TEST(NSObjectMKAutoDescribe, DescribesMethods) {
  EXPECT_EQ(mk_describeObjectMethods(*make<DescribedPerson>()),
            "\n- - - > DescribedPerson methods: \n\tname\n\tsetName:\n\tage\n\tsetAge:\n\trecalculate\n\t.cxx_destruct"
            "\n< - - -\n");
  EXPECT_EQ(mk_describeObjectMethodsOnly(*make<DescribedPerson>()),
            "\n- - - > DescribedPerson methods only: \n\trecalculate\n< - - -\n");
}

TEST(NSObjectMKAutoDescribe, PrintsWhatItDescribes) {
  const kernel::SystemLogCapture console;
  const auto person = make<DescribedPerson>();
  person->setName("100%@");
  mk_printObject(*person);
  mk_printObjectKeys(*person, *NSArray::arrayWith({"age"}));
  mk_printObjectMethods(*person);
  mk_printObjectMethodsOnly(*person);
  EXPECT_THAT(console.lines(),
              ElementsAre("\n- - - > DescribedPerson attributes: \n\tname : 100%@\n\tage : 0\n< - - -",
                          "\n- - - > DescribedPerson attributes: \n\tage : 0\n< - - -",
                          "\n- - - > DescribedPerson methods: \n\tname\n\tsetName:\n\tage\n\tsetAge:\n\trecalculate"
                          "\n\t.cxx_destruct\n< - - -",
                          "\n- - - > DescribedPerson methods only: \n\trecalculate\n< - - -"));
}
