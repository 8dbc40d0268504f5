#include "NorvikCore/platform/object/Class.h"

#include "NorvikCore/platform/object/NSObject.h"
#include "NorvikCore/platform/values/NSException.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

using namespace norvik;

namespace {

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

TEST(Class, OneNameIsNotForTwoCppClasses) {
  // What a second class named Employee would do as its statements are registered.
  try {
    detail::defineClass({"Employee", &typeid(Manager), &NSObject::staticClass(), nullptr, nullptr});
    FAIL() << "the name is taken";
  } catch (const NSException& refusal) {
    EXPECT_EQ(refusal.name(), "NSInternalInconsistencyException");
    EXPECT_EQ(refusal.reason(),
              "two C++ classes state the class name \"Employee\": (anonymous namespace)::Employee and (anonymous "
              "namespace)::Manager");
  }
  EXPECT_EQ(Class::named("Employee"), &Employee::staticClass());
  EXPECT_EQ(&detail::defineClass({"Employee", &typeid(Employee), nullptr, nullptr, nullptr}), &Employee::staticClass())
      << "the same class is welcome any number of times";
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

TEST(SEL, IsEqualByNameAndCountsItsColons) {
  EXPECT_EQ(SEL("ddSetLogLevel:"), SEL(NSString("ddSetLogLevel:")));
  EXPECT_NE(SEL("ddSetLogLevel:"), SEL("ddLogLevel"));
  EXPECT_EQ(SEL("setLogLevel:forClass:").argumentCount(), 2u);
  EXPECT_EQ(SEL("ddLogLevel").name(), "ddLogLevel");
  EXPECT_FALSE(SEL());
}
