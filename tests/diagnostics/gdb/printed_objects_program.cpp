// A program with objects and collections that gdb/norvikcore.py shows. printers.sh stops it in pay(). With
// WITH_INTERNALS its debug information has the internal classes too, as that of a library that was built with -g does.
#include "NorvikCore/dispatch/TSKDispatchQueue.h"
#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/collections/NSMutableSet.h"
#include "NorvikCore/platform/collections/NSSet.h"
#include "NorvikCore/platform/dispatch/Group.h"
#include "NorvikCore/platform/dispatch/Queue.h"
#include "NorvikCore/platform/keyvalue/KeyPath.h"
#include "NorvikCore/platform/object/Block.h"
#include "NorvikCore/platform/object/NSObject.h"
#include "NorvikCore/platform/object/Weak.h"
#include "NorvikCore/platform/values/Date_literals.h"
#include "NorvikCore/platform/values/Decimal_literal.h"
#ifdef WITH_INTERNALS
#include "NorvikCore/platform/dispatch/internal/SerialQueue.h"
#include "NorvikCore/platform/object/internal/SideRecord.h"

norvik::detail::SerialQueue* aQueue = nullptr;
norvik::detail::SideRecord* aRecord = nullptr;
#endif

#include <cstring>
#include <optional>
#include <vector>

using namespace norvik;

namespace company {

class Employee;

class Employer : public NSObject {
  NK_OBJECT(Employer, NSObject)
  NK_PROPERTY(NSString, name, setName)
  NK_WEAK_PROPERTY(Employee, director, setDirector)
};

class Employee : public NSObject {
  NK_OBJECT(Employee, NSObject)
  NK_PROPERTY(NSString, name, setName)
  NK_PROPERTY(Decimal, salary, setSalary)
  NK_ATOMIC_PROPERTY(Date, start, setStart)
  NK_PROPERTY(bool, isPaidWeekly, setIsPaidWeekly)
  NK_PROPERTY(Ref<Employer>, employer, setEmployer)
  NK_PROPERTY(Ref<NSArray>, hours, setHours)
  NK_PROPERTY(Value, note, setNote)

 public:
  int days_ = 5;
};

class Director : public Employee {
  NK_OBJECT(Director, Employee)
  NK_PROPERTY(std::optional<Decimal>, bonus, setBonus)
};

class Ring : public NSObject {
  NK_OBJECT(Ring, NSObject)

 public:
  std::vector<Weak<Ring>> next_;
};

struct Stamp {
  virtual ~Stamp() = default;
  int stamp_ = 3;
};

class StampedList : public Stamp, public NSMutableArray {
  NK_OBJECT(StampedList, NSMutableArray)
};

class StampedNote : public Stamp, public Employer {
  NK_OBJECT(StampedNote, Employer)
};

}  // namespace company

using company::Director;
using company::Employee;
using company::Employer;

namespace {

struct Objects {
  Value absent, null = Value::null(), yes = true, whole = -40, real = 0.1, amount = 1234.50_dec;
  Value day = "2021-05-10"_date, text = "Zo\u00EB", list = NSArray::arrayWithObjects(1, "two", 3.00_dec), object;
  Value damaged;

  Ref<Employee> employee = make<Employee>(), nobody, lost;
  Ref<NSObject> anyone = make<Director>(), anything = NSMutableArray::arrayWithObjects("a");
  Ref<Employer> employer = make<Employer>();
  const Employee& self = *employee;
  Weak<Employee> watched = employee, gone = make<Employee>(), unset;
  std::vector<Ref<Employee>> staff{employee, nullptr};

  Ref<company::Ring> ring = make<company::Ring>();  // refers to itself

  Block<bool(const Value&)> test = [](const Value&each) { return each == Value(1); }, noTest;

  Ref<NSArray> none = NSArray::array(), pay = NSArray::arrayWithObjects(1200_dec, "unpaid", Value::null());
  Ref<NSArray> nested = NSArray::arrayWithObjects(NSArray::arrayWithObjects(1, 2), employee);
  Ref<NSMutableArray> shifted = NSMutableArray::arrayWithObjects(1, 2, 3), circle = NSMutableArray::array();
  Ref<company::StampedList> stampedList = make<company::StampedList>();
  Ref<NSObject> anyStampedList = stampedList, anyStampedNote = make<company::StampedNote>();
  Ref<NSDictionary> rates = NSDictionary::dictionaryWith({{"basic", 0.20_dec}, {2, "two"}});
  Ref<NSDictionary> noRates = NSDictionary::dictionary();
  Ref<NSMutableDictionary> totals = NSMutableDictionary::dictionary();
  Ref<NSSet> codes = NSSet::setWithObjects("1257L", "BR", "BR");
  Ref<NSMutableSet> seen = NSMutableSet::setWithObjects(1, 2, 3);

  const NSObject* arrayPointer = pay.get();
  const Employee *pointer = employee.get(), *noPointer = nullptr;

  const Class& employeeClass = Employee::staticClass();
  const Class& arrayClass = NSArray::staticClass();
  KeyPath<Employee, NSString> path = keyPath<&Employee::name>();
  SEL selector = "setSalary:", noSelector;

  dispatch_queue_t queue = dispatch_queue_create("payroll.\"import\""), unlabelled = dispatch_queue_create(nullptr);
  dispatch_queue_t noQueue, many = dispatch_queue_create("many", DISPATCH_QUEUE_CONCURRENT);
  dispatch_queue_t busy = dispatch_queue_create("busy one"), late = dispatch_queue_create("late");
  Ref<TSKDispatchQueue> wrapper = TSKDispatchQueue::dispatchQueueWithLabel("wrapped"), noWrapper;
  dispatch_group_t noGroup;
};

[[gnu::noinline]] void pay(const Objects& objects, const Ref<Employer>& paid) {
  asm volatile("" : : "r"(&objects), "r"(&paid) : "memory");
}

}  // namespace

int main() {
  Objects objects;
  objects.employee->setName("Zo\u00EB");
  objects.employee->setSalary(1234.50_dec);
  objects.employee->setStart("2021-05-10"_date);
  objects.employee->setEmployer(objects.employer);
  objects.employee->setHours(NSArray::arrayWithObjects(8, 7.5));
  objects.employee->setNote(objects.anyone);
  objects.object = objects.employee;
  objects.employer->setName("Pond & Co");
  objects.employer->setDirector(objects.employee);
  static_cast<Director&>(*objects.anyone).setBonus(100_dec);
  objects.shifted->removeObjectAtIndex(0);
  objects.circle->addObject(NSArray::arrayWithObjects(1));
  objects.circle->addObject(objects.circle);
  objects.stampedList->addObject(7);
  objects.totals->setObject(1, "a");
  objects.totals->setObject(2, "b");
  objects.totals->removeObjectForKey("a");
  objects.seen->removeObject(2);
  objects.ring->next_.push_back(objects.ring);
  std::memset(static_cast<void*>(&objects.damaged), 0x5A, sizeof objects.damaged);
  std::memset(static_cast<void*>(&objects.lost), 0x5A, sizeof objects.lost);
  dispatch_suspend(objects.late);
  dispatch_async(objects.late, [] {});
  dispatch_async(objects.late, [] {});
  dispatch_sync(objects.busy, [&] {
    dispatch_async(objects.busy, [] {});
    pay(objects, objects.employer);
  });
  static_cast<void>(objects.lost.take());
  std::memset(static_cast<void*>(&objects.damaged), 0, sizeof objects.damaged);  // an absent Value
  objects.circle->removeAllObjects();
  objects.employer->setDirector(nullptr);
}
