#include "NorvikCore/platform/object/Class.h"

#include "NorvikCore/platform/object/NSObject.h"
#include "NorvikCore/platform/values/NSException.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include <vector>

using namespace norvik;

namespace pay {

class Row : public NSObject {
  NK_OBJECT(Row, NSObject)
  NK_PROPERTY(Decimal, gross, setGross)
};

class Cell : public NSObject {
  NK_OBJECT(Cell, NSObject)
  NK_PROPERTY(int, width, setWidth)
  NK_CLASS_NAME("pay.Cell")
};

class WideCell : public Cell {
  NK_OBJECT(WideCell, Cell)
};

template <class T>
class Box : public NSObject {
  NK_OBJECT(Box, NSObject)
  NK_PROPERTY(T, content, setContent)
};

Ref<NSObject> neverCalled();
Ref<NSObject> neverCalled() { return make<Box<double>>(); }

}  // namespace pay

namespace hr {

class Row : public NSObject {
  NK_OBJECT(Row, NSObject)
  NK_PROPERTY(int, grade, setGrade)
};

class Cell : public NSObject {
  NK_OBJECT(Cell, NSObject)
};

class Outside : public NSObject {
  NK_OBJECT(Outside, NSObject)
};

}  // namespace hr

class Outside : public NSObject {
  NK_OBJECT(Outside, NSObject)
};

/// Defined in Class_other_file.cpp.
const Class& localOfTheOtherFile();

namespace {

class Local : public NSObject {
  NK_OBJECT(Local, NSObject)
  NK_PROPERTY(int, here, setHere)
};

class Employee : public NSObject {
  NK_OBJECT(Employee, NSObject)
  NK_PROPERTY(NSString, name, setName)
  NK_PROPERTY(Decimal, salary, setSalary)
  NK_COMPUTED_PROPERTY(bool, isPaid)
  NK_AFFECTED_BY(isPaid, salary)
  bool isPaid() const { return salary() > 0; }
  void raise() {}
  NK_METHOD(raise)
  void add(int, int) {}
  NK_METHOD(add)
  static int ddLogLevel() { return level_; }
  NK_CLASS_METHOD(ddLogLevel)
  static void ddSetLogLevel(int level) { level_ = level; }
  NK_CLASS_METHOD(ddSetLogLevel)

 private:
  static inline int level_ = 3;
};

class Manager : public Employee {
  NK_OBJECT(Manager, Employee)
};

class PerformedPayslip : public NSObject {
  NK_OBJECT(PerformedPayslip, NSObject)
  NK_PROPERTY(Decimal, grossPay, setGrossPay)
};

class NeverUsed : public NSObject {
  NK_OBJECT(NeverUsed, NSObject)
};

class Abstract : public NSObject {
  NK_OBJECT(Abstract, NSObject)
  virtual void work() = 0;
};

}  // namespace

TEST(Class, HeaderExample) {
  const Class& c = Manager::staticClass();
  EXPECT_EQ(c.name(), "Manager");
  EXPECT_EQ(c.superclass(), &Employee::staticClass());
  EXPECT_EQ(Class::named("Manager"), &c);
}

TEST(Class, KnowsItsNameAndSuperclass) {
  EXPECT_EQ(Manager::staticClass().name(), "Manager");
  EXPECT_EQ(Manager::staticClass().superclass(), &Employee::staticClass());
  EXPECT_EQ(NSObject::staticClass().superclass(), nullptr);
  EXPECT_TRUE(Manager::staticClass().isSubclassOf(NSObject::staticClass()));
  EXPECT_FALSE(Employee::staticClass().isSubclassOf(Manager::staticClass()));
  EXPECT_EQ(&make<Manager>()->classObject(), &Manager::staticClass());
}

TEST(Class, ClassesOfOneNameStandSideBySide) {
  const Class& pay = pay::Row::staticClass();
  const Class& hr = hr::Row::staticClass();
  EXPECT_NE(&pay, &hr);
  for (const Class* c : {&pay, &hr}) {
    EXPECT_EQ(c->name(), "Row");
    EXPECT_TRUE(c->sharesName());
  }
  EXPECT_EQ(pay.qualifiedName(), "pay::Row");
  EXPECT_EQ(hr.qualifiedName(), "hr::Row");
  EXPECT_NE(pay.property("gross"), nullptr);
  EXPECT_EQ(pay.property("grade"), nullptr);
  EXPECT_NE(hr.property("grade"), nullptr);
  EXPECT_EQ(&make<hr::Row>()->classObject(), &hr);
  EXPECT_FALSE(Employee::staticClass().sharesName());
}

TEST(Class, ASharedNameFindsNoneOfItsClassesAndTheCppNameFindsEach) {
  EXPECT_EQ(Class::named("Row"), nullptr);
  EXPECT_EQ(Class::named("pay::Row"), &pay::Row::staticClass());
  EXPECT_EQ(Class::named("::hr::Row"), &hr::Row::staticClass());
  EXPECT_EQ(Class::named("norvik::Row"), nullptr);
  EXPECT_EQ(Class::named("::Row"), nullptr);
  EXPECT_EQ(Class::named("::"), nullptr);
  EXPECT_EQ(Class::named(""), nullptr);
  const auto rows = Class::allNamed("Row");
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_TRUE(std::ranges::count(rows, &pay::Row::staticClass()) && std::ranges::count(rows, &hr::Row::staticClass()));
  EXPECT_EQ(Class::allNamed("hr::Row"), std::vector<const Class*>{&hr::Row::staticClass()});
  EXPECT_TRUE(Class::allNamed("Nobody").empty());
}

TEST(Class, ADistinctNameIsTheNameUnlessSeveralClassesShareIt) {
  EXPECT_EQ(Employee::staticClass().distinctName(), "Employee");
  EXPECT_EQ(pay::Row::staticClass().distinctName(), "pay::Row");
  EXPECT_EQ(Outside::staticClass().distinctName(), "::Outside");
  EXPECT_EQ(Class::named("::Outside"), &Outside::staticClass());
  EXPECT_EQ(Class::named("Outside"), nullptr);
}

TEST(Class, AStatedNameStandsInForThatOfTheCppClassAndIsNotInherited) {
  const Class& c = pay::Cell::staticClass();
  EXPECT_EQ(c.name(), "pay.Cell");
  EXPECT_EQ(Class::named("pay.Cell"), &c);
  EXPECT_EQ(Class::named("pay::Cell"), &c);
  EXPECT_EQ(Class::named("Cell"), &hr::Cell::staticClass()) << "the only one of that name";
  EXPECT_FALSE(c.sharesName());
  EXPECT_EQ(pay::WideCell::staticClass().name(), "WideCell");
}

TEST(Class, EachInstanceOfAClassTemplateIsAClassOfItsOwn) {
  const Class& numbers = pay::Box<int>::staticClass();
  const Class& texts = pay::Box<NSString>::staticClass();
  EXPECT_NE(&numbers, &texts);
  EXPECT_EQ(numbers.name(), "Box");
  EXPECT_EQ(numbers.qualifiedName(), "pay::Box<int>");
  const auto box = make<pay::Box<NSString>>();
  box->setValue_forKey("Z", "content");
  EXPECT_EQ(box->content(), "Z");
  EXPECT_EQ(Class::named("Box"), nullptr);
  EXPECT_EQ(Class::named("pay::Box<int>"), &numbers);
}

TEST(Class, AnInstanceOfAClassTemplateIsKnownBeforeItIsUsed) { EXPECT_NE(Class::named("pay::Box<double>"), nullptr); }

TEST(Class, ClassesOfAnonymousNamespacesAreOneInEachFile) {
  const Class& here = Local::staticClass();
  const Class& there = localOfTheOtherFile();
  EXPECT_NE(&here, &there);
  EXPECT_EQ(there.qualifiedName(), "(anonymous namespace)::Local");
  EXPECT_NE(here.property("here"), nullptr);
  EXPECT_NE(there.property("there"), nullptr);
  EXPECT_EQ(Class::named("Local"), nullptr);
  EXPECT_EQ(Class::named("(anonymous namespace)::Local"), nullptr);
  EXPECT_EQ(Class::allNamed("Local").size(), 2u);
}

TEST(Class, ADefinitionOfTheSameTypeSizeAndStatementsIsTheSameClass) {
  static constexpr detail::Statement statements[] = {{.name = "count", .text = "int"}};
  static constexpr detail::Statement others[] = {{.name = "amount", .text = "int"}};
  const detail::ClassDefinition definition{.name = "Versioned",
                                           .type = &typeid(int),
                                           .objectSize = 8,
                                           .superclass = &NSObject::staticClass(),
                                           .statements = statements};
  const Class& first = detail::defineClass(definition);
  EXPECT_EQ(&detail::defineClass(definition), &first);
  auto other = definition;
  other.objectSize = 16;
  EXPECT_NE(&detail::defineClass(other), &first) << "another version of the class, which has another size";
  other = definition;
  other.statements = others;
  EXPECT_NE(&detail::defineClass(other), &first) << "another version of the class, which has another property";
  EXPECT_EQ(Class::allNamed("Versioned").size(), 3u);
}

TEST(Class, ListsPropertiesAndOperationsInDeclaredOrder) {
  const auto properties = Employee::staticClass().properties();
  ASSERT_EQ(properties.size(), 3u);
  EXPECT_EQ(properties[0].name, "name");
  EXPECT_EQ(properties[0].typeName, "NSString");
  EXPECT_EQ(properties[0].setterName, "setName");
  EXPECT_EQ(properties[1].name, "salary");
  EXPECT_EQ(properties[2].name, "isPaid");
  EXPECT_TRUE(properties[2].isReadOnly);
  EXPECT_TRUE(properties[2].isComputed);
  const auto methods = Employee::staticClass().methods();
  ASSERT_EQ(methods.size(), 2u);
  EXPECT_EQ(methods[0].selector, SEL("raise"));
  EXPECT_EQ(methods[1].selector, SEL("add::"));
}

TEST(Class, ListsAccessorsAndOperationsTogether) {
  const auto selectors = Employee::staticClass().selectors();
  const std::vector<SEL> expected{"name", "setName:", "salary", "setSalary:", "isPaid", "raise", "add::"};
  EXPECT_TRUE(std::ranges::equal(selectors, expected));
  EXPECT_TRUE(Manager::staticClass().selectors().empty());
}

TEST(Class, FindsPropertiesByTheirAccessors) {
  const Class& c = Manager::staticClass();
  EXPECT_EQ(c.propertyWithAccessor("salary"), c.property("salary"));
  EXPECT_EQ(c.propertyWithAccessor("setSalary:"), c.property("salary"));
  for (const char* none : {"setSalary", "salary:", "setIsPaid:", ":", "", "raise", "SetSalary:"}) {
    EXPECT_EQ(c.propertyWithAccessor(none), nullptr) << none;
  }
}

TEST(Class, FindsInheritedPropertiesAndOperations) {
  const Class& c = Manager::staticClass();
  ASSERT_NE(c.property("salary"), nullptr);
  EXPECT_EQ(c.property("salary")->owner, &Employee::staticClass());
  EXPECT_NE(c.instanceMethod("raise"), nullptr);
  EXPECT_NE(c.classMethod("ddLogLevel"), nullptr);
  EXPECT_NE(c.classMethod("ddSetLogLevel:"), nullptr);
  c.performClassOperation("ddSetLogLevel:", std::array{Value(15)});
  EXPECT_EQ(Employee::ddLogLevel(), 15);
  EXPECT_EQ(c.property("salry"), nullptr);
}

TEST(Class, IsFoundByNameAndInTheListOfAllEvenWhenNeverUsed) {
  EXPECT_EQ(Class::named("Employee"), &Employee::staticClass());
  EXPECT_EQ(Class::named("Nobody"), nullptr);
  const Class* unused = Class::named("NeverUsed");
  ASSERT_NE(unused, nullptr);
  const auto all = Class::all();
  EXPECT_EQ(std::ranges::count(all, unused), 1);
  for (const char* name : {"NSObject", "NSNull", "NSNumber", "NSDecimalNumber", "NSDate", "NSString"}) {
    EXPECT_EQ(std::ranges::count(all, Class::named(name)), 1) << name;
  }
}

TEST(Class, MakesObjectsWhereItCan) {
  const Ref<NSObject> made = Class::named("Manager")->makeObject();
  ASSERT_TRUE(made);
  EXPECT_TRUE(made->isKindOfClass(Employee::staticClass()));
  EXPECT_FALSE(Class::named("Abstract")->makeObject());
}

TEST(Class, KnowsWhichKeysAffectAKey) {
  EXPECT_EQ(Manager::staticClass().keysAffecting("isPaid"), std::vector<NSString>{"salary"});
  EXPECT_TRUE(Manager::staticClass().keysAffecting("name").empty());
}

TEST(SEL, HeaderExample) {
  const auto slip = make<PerformedPayslip>();
  slip->performSelector("setGrossPay:", Value(12.50_dec));
  EXPECT_EQ(slip->grossPay(), 12.50_dec);
  EXPECT_EQ(SEL("setLogLevel:forClass:").argumentCount(), 2u);
}

TEST(SEL, IsEqualByNameAndCountsItsColons) {
  EXPECT_EQ(SEL("ddSetLogLevel:"), SEL(NSString("ddSetLogLevel:")));
  EXPECT_NE(SEL("ddSetLogLevel:"), SEL("ddLogLevel"));
  EXPECT_EQ(SEL("setLogLevel:forClass:").argumentCount(), 2u);
  EXPECT_EQ(SEL("ddLogLevel").name(), "ddLogLevel");
  EXPECT_FALSE(SEL());
}
