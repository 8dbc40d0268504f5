// Each mistake in the statements of a class gives one error, which contains the sentence after its number.
#include "NorvikCore/platform/object/NSObject.h"

#include <tuple>

using namespace norvik;

struct Money {
  int pence;
};

class Employee : public NSObject {
  NK_OBJECT(Employee, NSObject)
  NK_PROPERTY(NSString, name, setName)
  int work() { return 1; }
  NK_METHOD(work)
};

struct Trainee : Employee {};

int age(const Employee&);
void setAge(Employee&, int);
void setTitle(Employee&, const NSString&);

// clang-format off
#define ONE(n) NK_METHOD_AS(work, #n)
#define FIVE(n) ONE(n##0) ONE(n##1) ONE(n##2) ONE(n##3) ONE(n##4)
#define TWENTY_FIVE(n) FIVE(n##0) FIVE(n##1) FIVE(n##2) FIVE(n##3) FIVE(n##4)
#define ALL(n) \
  TWENTY_FIVE(n##0) TWENTY_FIVE(n##1) TWENTY_FIVE(n##2) TWENTY_FIVE(n##3) TWENTY_FIVE(n##4) TWENTY_FIVE(n##5)

#ifndef SHOULD_NOT_COMPILE
class Manager : public Trainee {
  NK_OBJECT(Manager, Employee)
  NK_CLASS_NAME("pay.Manager")
  NK_COMPUTED_PROPERTY_WITH_SETTER(int, size, setSize)
  const int& size() const noexcept { return size_; }
  void setSize(const int& size) noexcept { size_ = size; }
  NK_AFFECTED_BY(size, name)
  NK_AFFECTED_BY(size, work)
  NK_METHOD(pay)
  void pay(int) {}
  NK_METHOD_AS(pay, "pay:now")
  NK_CLASS_METHOD(count)
  static int count() { return 1; }
  ALL(0)
  int size_ = 0;
};
NK_CATEGORY_PROPERTY(Employee, int, age, setAge)
#elif SHOULD_NOT_COMPILE == 1  // NK_OBJECT names another class than its own
class Manager : public NSObject {
  NK_OBJECT(Employee, NSObject)
};
#elif SHOULD_NOT_COMPILE == 2  // NK_OBJECT names a class that is not the superclass
class Manager : public Employee {
  NK_OBJECT(Manager, NSObject)
};
#elif SHOULD_NOT_COMPILE == 3  // NK_OBJECT names a class that is not the superclass
class Manager : public NSObject {
  NK_OBJECT(Manager, Employee)
};
#elif SHOULD_NOT_COMPILE == 4  // NK_OBJECT names a class that is not the superclass
template <class T>
class Manager : public Employee {
  NK_OBJECT(Manager, NSObject)
};
template class Manager<int>;
#elif SHOULD_NOT_COMPILE == 5  // a class states a property twice
class Manager : public Employee {
  NK_OBJECT(Manager, Employee)
  NK_COMPUTED_PROPERTY(int, size)
  NK_COMPUTED_PROPERTY(int, size)
  int size() const { return 1; }
};
#elif SHOULD_NOT_COMPILE == 6  // cannot be overloaded | class member cannot be redeclared
class Manager : public Employee {
  NK_OBJECT(Manager, Employee)
  NK_PROPERTY(int, size, setSize)
  NK_PROPERTY(int, width, setSize)
};
#elif SHOULD_NOT_COMPILE == 7  // a class states an operation twice
class Manager : public Employee {
  NK_OBJECT(Manager, Employee)
  NK_METHOD(work)
  NK_METHOD(work)
};
#elif SHOULD_NOT_COMPILE == 8  // a class states an operation twice
class Manager : public Employee {
  NK_OBJECT(Manager, Employee)
  NK_METHOD(toil)
  NK_METHOD_AS(work, "toil:")
  void toil(int) {}
};
#elif SHOULD_NOT_COMPILE == 9  // a class states a class operation twice
class Manager : public Employee {
  NK_OBJECT(Manager, Employee)
  NK_CLASS_METHOD(count)
  NK_CLASS_METHOD(count)
  static int count() { return 1; }
};
#elif SHOULD_NOT_COMPILE == 10  // a class states NK_AFFECTED_BY twice
class Manager : public Employee {
  NK_OBJECT(Manager, Employee)
  NK_AFFECTED_BY(name, work)
  NK_AFFECTED_BY(name, work)
};
#elif SHOULD_NOT_COMPILE == 11  // NK_AFFECTED_BY names a key that neither the class nor a class above it states
class Manager : public Employee {
  NK_OBJECT(Manager, Employee)
  NK_AFFECTED_BY(name, wrok)
};
#elif SHOULD_NOT_COMPILE == 12  // NK_AFFECTED_BY names a key that neither the class nor a class above it states
class Manager : public Employee {
  NK_OBJECT(Manager, Employee)
  NK_AFFECTED_BY(nmae, work)
};
#elif SHOULD_NOT_COMPILE == 13  // a class states NK_CLASS_NAME twice
class Manager : public Employee {
  NK_OBJECT(Manager, Employee)
  NK_CLASS_NAME("a")
  NK_CLASS_NAME("b")
};
#elif SHOULD_NOT_COMPILE == 14  // NK_CLASS_NAME needs a name that is not empty
class Manager : public Employee {
  NK_OBJECT(Manager, Employee)
  NK_CLASS_NAME("")
};
#elif SHOULD_NOT_COMPILE == 15  // an operation or accessor that a class states is missing, or is overloaded
class Manager : public Employee {
  NK_OBJECT(Manager, Employee)
  NK_COMPUTED_PROPERTY(int, size)
};
#elif SHOULD_NOT_COMPILE == 16  // an operation or accessor that a class states is missing, or is overloaded
class Manager : public Employee {
  NK_OBJECT(Manager, Employee)
  NK_METHOD(pay)
};
#elif SHOULD_NOT_COMPILE == 17  // an operation or accessor that a class states is missing, or is overloaded
class Manager : public Employee {
  NK_OBJECT(Manager, Employee)
  NK_METHOD(pay)
  void pay() {}
  void pay(int) {}
};
#elif SHOULD_NOT_COMPILE == 18  // an operation or accessor that a class states is missing, or is overloaded
class Manager : public Employee {
  NK_OBJECT(Manager, Employee)
  NK_COMPUTED_PROPERTY_WITH_SETTER(int, size, setSzie)
  int size() const { return 1; }
  void setSize(int) {}
};
#elif SHOULD_NOT_COMPILE == 19  // the accessor of a computed property is not
class Manager : public Employee {
  NK_OBJECT(Manager, Employee)
  NK_COMPUTED_PROPERTY(NSString, size)
  int size() const { return 1; }
};
#elif SHOULD_NOT_COMPILE == 20  // the accessor of a computed property is not
class Manager : public Employee {
  NK_OBJECT(Manager, Employee)
  NK_COMPUTED_PROPERTY(int, size)
  int size() { return 1; }
};
#elif SHOULD_NOT_COMPILE == 21  // the setter of a computed property is not
class Manager : public Employee {
  NK_OBJECT(Manager, Employee)
  NK_COMPUTED_PROPERTY_WITH_SETTER(int, size, setName)
  int size() const { return 1; }
  void setName(NSString) {}
};
#elif SHOULD_NOT_COMPILE == 22  // a property is stated with its type, its name and, unless it is read-only, its setter
class Manager : public Employee {
  NK_OBJECT(Manager, Employee)
  NK_PROPERTY(int, size)
};
#elif SHOULD_NOT_COMPILE == 23  // a property is stated with its type, its name and, unless it is read-only, its setter
class Manager : public Employee {
  NK_OBJECT(Manager, Employee)
  NK_READONLY_PROPERTY(size)
};
#elif SHOULD_NOT_COMPILE == 24  // NK_METHOD names something that is not an operation of the object
class Manager : public Employee {
  NK_OBJECT(Manager, Employee)
  NK_METHOD(pay)
  static void pay() {}
};
#elif SHOULD_NOT_COMPILE == 25  // NK_CLASS_METHOD names something that is not a static member function
class Manager : public Employee {
  NK_OBJECT(Manager, Employee)
  NK_CLASS_METHOD(pay)
  void pay() {}
};
#elif SHOULD_NOT_COMPILE == 26  // an operation that a class states takes or gives a type without ValueConversion
class Manager : public Employee {
  NK_OBJECT(Manager, Employee)
  NK_METHOD(pay)
  void pay(Money) {}
};
#elif SHOULD_NOT_COMPILE == 27  // a category's property has no accessor
NK_CATEGORY_READONLY_PROPERTY(Employee, int, szie)
#elif SHOULD_NOT_COMPILE == 28  // a category's property has no setter
NK_CATEGORY_PROPERTY(Employee, int, age, setAeg)
#elif SHOULD_NOT_COMPILE == 29  // a category's property has no setter
NK_CATEGORY_PROPERTY(Employee, int, age, setTitle)
#elif SHOULD_NOT_COMPILE == 30  // the accessor of a category's property gives another type than is stated
NK_CATEGORY_READONLY_PROPERTY(Employee, double, age)
#elif SHOULD_NOT_COMPILE == 31  // a category's property is of a class without NK_OBJECT
NK_CATEGORY_READONLY_PROPERTY(Trainee, int, age)
#elif SHOULD_NOT_COMPILE == 32  // a category's property has the name of a property that its class states
int name(const Employee&);
NK_CATEGORY_READONLY_PROPERTY(Employee, int, name)
#elif SHOULD_NOT_COMPILE == 33  // a class can have 575 statements at most
class Full : public NSObject {
  NK_OBJECT(Full, NSObject)
  void work() {}
  ALL(0) ALL(1) ALL(2) ONE(x)
  TWENTY_FIVE(a) TWENTY_FIVE(b) TWENTY_FIVE(c) TWENTY_FIVE(d) TWENTY_FIVE(e)
};
#elif SHOULD_NOT_COMPILE == 34  // NK_OBJECT names a class that is not the superclass
class Manager : public NSObject {
  NK_OBJECT(Manager, Manager)
};
#elif SHOULD_NOT_COMPILE == 35  // is not a member of | no member named
class Manager : public Employee {
  NK_OBJECT(Manager, Employee)
  NK_METHOD_AS(pay, "pay:now")
};
#elif SHOULD_NOT_COMPILE == 36  // a statement is in a class without NK_OBJECT, or above it
class Manager : public Employee {
  NK_METHOD(pay)
  NK_OBJECT(Manager, Employee)
  void pay() {}
};
#elif SHOULD_NOT_COMPILE == 37  // a statement is in a class without NK_OBJECT
class Manager : public NSObject {
 public:
  NK_PROPERTY(int, size, setSize)
  NK_READONLY_PROPERTY(int, width)
  NK_ATOMIC_PROPERTY(int, depth, setDepth)
  NK_WEAK_PROPERTY(Employee, deputy, setDeputy)
};
int sizeOf(const Manager& manager) { return manager.size(); }
#elif SHOULD_NOT_COMPILE == 38  // a statement is in a class without NK_OBJECT
class Manager : public NSObject {
  NK_METHOD(pay)
  NK_CLASS_METHOD(count)
  NK_AFFECTED_BY(size, width)
  NK_COMPUTED_PROPERTY(int, size)
  void pay() {}
  static int count() { return 1; }
  int size() const { return 1; }
};
#elif SHOULD_NOT_COMPILE == 39  // a statement is in a class without NK_OBJECT
class Manager : public Employee {
  NK_PROPERTY(int, size, setSize)
  NK_READONLY_PROPERTY(int, width)
  NK_ATOMIC_PROPERTY(int, depth, setDepth)
  NK_WEAK_PROPERTY(Employee, deputy, setDeputy)
};
#elif SHOULD_NOT_COMPILE == 40  // a statement is in a class without NK_OBJECT
class Manager : public Employee {
  NK_METHOD(pay)
  NK_CLASS_METHOD(count)
  NK_AFFECTED_BY(size, width)
  NK_COMPUTED_PROPERTY(int, size)
  void pay() {}
  static int count() { return 1; }
  int size() const { return 1; }
};
#elif SHOULD_NOT_COMPILE == 41  // a statement is in a class without NK_OBJECT | AStatementIsInAClassWithoutNK_OBJECT
class Manager {
  NK_PROPERTY(int, size, setSize)
};
#elif SHOULD_NOT_COMPILE == 42  // a statement is in a class without NK_OBJECT
class Manager {
  NK_METHOD(pay)
  void pay() {}
};
#elif SHOULD_NOT_COMPILE == 43  // a statement is in a class without NK_OBJECT | AStatementIsInAClassWithoutNK_OBJECT
NK_PROPERTY(int, size, setSize)
#elif SHOULD_NOT_COMPILE == 44  // a statement is in a class without NK_OBJECT
NK_METHOD(pay)
NK_CLASS_METHOD(count)
NK_AFFECTED_BY(size, width)
NK_COMPUTED_PROPERTY(int, size)
#elif SHOULD_NOT_COMPILE == 45  // Unknown
class Manager : public Employee {
  NK_OBJECT(Manager, Employee)
  NK_PROPERTY(Unknown, size, setSize)
};
#elif SHOULD_NOT_COMPILE == 46  // Unknown
class Manager : public Employee {
  NK_OBJECT(Manager, Employee)
  NK_READONLY_PROPERTY(Unknown, size)
};
#elif SHOULD_NOT_COMPILE == 47  // Unknown
class Manager : public Employee {
  NK_OBJECT(Manager, Employee)
  NK_ATOMIC_PROPERTY(Unknown, size, setSize)
};
#elif SHOULD_NOT_COMPILE == 48  // Unknown
class Manager : public Employee {
  NK_OBJECT(Manager, Employee)
  NK_WEAK_PROPERTY(Unknown, deputy, setDeputy)
};
#elif SHOULD_NOT_COMPILE == 49  // Unknown
class Manager : public Employee {
  NK_OBJECT(Manager, Employee)
  NK_COMPUTED_PROPERTY(Unknown, size)
  NSString size() const { return "big"; }
};
#elif SHOULD_NOT_COMPILE == 50  // [g++: 2, clang++: 1] Unknown
class Manager : public Employee {
  NK_OBJECT(Manager, Employee)
  NK_PROPERTY(Ref<Unknown>, deputy, setDeputy)
};
#elif SHOULD_NOT_COMPILE == 51  // Unknown
NK_CATEGORY_PROPERTY(Employee, Unknown, age, setAge)
#elif SHOULD_NOT_COMPILE == 52  // Unknown
NK_CATEGORY_PROPERTY(Unknown, int, age, setAge)
#elif SHOULD_NOT_COMPILE == 53  // NK_OBJECT names another class than its own
class Manager : public NSObject {
  NK_OBJECT(Employee, NSObject)
  NK_PROPERTY(int, size, setSize)
  NK_READONLY_PROPERTY(int, width)
  NK_ATOMIC_PROPERTY(int, depth, setDepth)
  NK_WEAK_PROPERTY(Employee, deputy, setDeputy)
};
#elif SHOULD_NOT_COMPILE == 54  // NK_OBJECT names another class than its own
class Manager : public NSObject {
  NK_OBJECT(Employee, NSObject)
  NK_METHOD(pay)
  NK_COMPUTED_PROPERTY(int, size)
  void pay() {}
  int size() const { return 1; }
};
#elif SHOULD_NOT_COMPILE == 55  // [g++: 3, clang++: 1] redeclaration of | class member cannot be redeclared
class Manager : public Employee {
  NK_OBJECT(Manager, Employee)
  NK_PROPERTY(int, size, setSize)
  NK_PROPERTY(int, size, setSize)
};
#elif SHOULD_NOT_COMPILE == 56  // a property is stated with its type, its name and, unless it is read-only, its setter | APropertyIsStatedWithItsTypeItsNameAndUnlessItIsReadOnlyItsSetter
class Manager : public Employee {
  NK_OBJECT(Manager, Employee)
  NK_READONLY_PROPERTY(int, size, setSize)
};
#elif SHOULD_NOT_COMPILE == 57  // a property is stated with its type, its name and, unless it is read-only, its setter | APropertyIsStatedWithItsTypeItsNameAndUnlessItIsReadOnlyItsSetter
class Manager : public Employee {
  NK_OBJECT(Manager, Employee)
  NK_PROPERTY(int, size, setSize, width)
};
#elif SHOULD_NOT_COMPILE == 58  // a category's property is of a class without NK_OBJECT
NK_CATEGORY_PROPERTY(Money, int, age, setAge)
#elif SHOULD_NOT_COMPILE == 59  // a category's property is of a class without NK_OBJECT
NK_CATEGORY_PROPERTY(Trainee, int, age, setAge)
#elif SHOULD_NOT_COMPILE == 60  // the type of a property has more than six commas
class Manager : public Employee {
  NK_OBJECT(Manager, Employee)
  NK_PROPERTY(std::tuple<int, int, int, int, int, int, int, int>, size, setSize)
};
#elif SHOULD_NOT_COMPILE == 61  // the type of a property has more than six commas
class Manager : public Employee {
  NK_OBJECT(Manager, Employee)
  NK_READONLY_PROPERTY(std::tuple<int, int, int, int, int, int, int, int>, size)
};
#elif SHOULD_NOT_COMPILE == 62  // Mangaer
class Manager : public Employee {
  NK_OBJECT(Mangaer, Employee)
  NK_PROPERTY(int, size, setSize)
  NK_METHOD(pay)
  void pay() {}
};
#elif SHOULD_NOT_COMPILE == 63  // Emplyoee
class Manager : public Employee {
  NK_OBJECT(Manager, Emplyoee)
  NK_PROPERTY(int, size, setSize)
  NK_METHOD(pay)
  void pay() {}
};
#elif SHOULD_NOT_COMPILE == 64  // a statement is in a class without NK_OBJECT, or above it
class Manager : public NSObject {
  NK_PROPERTY(int, size, setSize)
  NK_PROPERTY(int, width, setWidth)
  NK_OBJECT(Manager, NSObject)
  NK_PROPERTY(int, depth, setDepth)
};
#elif SHOULD_NOT_COMPILE == 65  // a statement is in a class without NK_OBJECT
template <class T>
class Manager : public T {
  NK_METHOD(pay)
  void pay() {}
};
template class Manager<Employee>;
#elif SHOULD_NOT_COMPILE == 66  // a class states a property twice
class Manager : public Employee {
  NK_OBJECT(Manager, Employee)
  NK_READONLY_PROPERTY(int, size)
  NK_COMPUTED_PROPERTY(int, size)
};
#elif SHOULD_NOT_COMPILE == 67  // a property is stated with its type, its name and, unless it is read-only, its setter | APropertyIsStatedWithItsTypeItsNameAndUnlessItIsReadOnlyItsSetter
NK_CATEGORY_READONLY_PROPERTY(Employee, int, age, setAge)
#elif SHOULD_NOT_COMPILE == 68  // Unknown
class Manager : public Employee {
  NK_OBJECT(Manager, Employee)
  NK_COMPUTED_PROPERTY_WITH_SETTER(Unknown, size, setSize)
  NSString size() const { return "big"; }
  void setSize(const NSString&) {}
};
#elif SHOULD_NOT_COMPILE == 69  // [g++: 2, clang++: 1] redeclaration of | class member cannot be redeclared
class Manager : public Employee {
  NK_OBJECT(Manager, Employee)
  NK_READONLY_PROPERTY(int, size)
  NK_READONLY_PROPERTY(int, size)
};
#endif
// clang-format on
