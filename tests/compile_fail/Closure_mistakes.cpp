// Each mistake in the closures of observations and bindings is refused, and the compiler says the sentence after its
// number.
#include "NorvikCore/Categories/NSObject+Norvik_Binding.h"
#include "NorvikCore/observation/NSObject+FBKVOController.h"

using namespace norvik;

class Employee : public NSObject {
  NK_OBJECT(Employee, NSObject)
  NK_PROPERTY(NSString, name, setName)
};

class Payslip : public NSObject {
  NK_OBJECT(Payslip, NSObject)
  NK_PROPERTY(Decimal, netPay, setNetPay)
  NK_PROPERTY(Ref<Employee>, employee, setEmployee)
};

class Window : public NSObject {
  NK_OBJECT(Window, NSObject)
};

void mistake(FBKVOController& controller, Window& window, const Ref<Payslip>& slip, const Ref<Employee>& employee) {
  const auto netPay = keyPath<&Payslip::netPay>();
  const auto name = keyPath<&Payslip::employee, &Employee::name>();
  // clang-format off
#ifndef SHOULD_NOT_COMPILE
  controller.observe(slip, netPay, [](Window&, const Payslip&, const Decimal&) {});
  controller.observe(slip, name, [](const std::optional<NSString>&) {});
  nk_observe(window, employee, "name", [](NSObject&, const NSString&) {});
  nk_bind_toObject_withKeyPath_block(window, "title", *slip, netPay, [](const Decimal& net) { return net / 12; });
  nk_bind_toObject_withKeyPath_block_reverseBlock(window, "title", *slip, netPay, nullptr, [](int net) { return net; });
#elif SHOULD_NOT_COMPILE == 1  // the closure takes the value as another type than the key path leads to
  controller.observe(slip, netPay, [](Window&, const NSString&) {});
#elif SHOULD_NOT_COMPILE == 2  // the closure takes the value as another type than the key path leads to
  controller.observe(slip, netPay, [](const Decimal&, double) {});
#elif SHOULD_NOT_COMPILE == 3  // the value may be absent: the closure takes it as a std::optional
  controller.observe(slip, name, [](Window&, const NSString&) {});
#elif SHOULD_NOT_COMPILE == 4  // the closure takes the observed object as a class that it is not
  controller.observe(slip, netPay, [](Window&, Employee&, const Decimal&) {});
#elif SHOULD_NOT_COMPILE == 5  // the object does not have the key path's first property: the path starts from another class
  controller.observe(employee, netPay, [](const Decimal&) {});
#elif SHOULD_NOT_COMPILE == 6  // name the types of the closure's parameters: `auto` and overloads do not tell what it observes
  controller.observe(slip, netPay, [](const auto&) {});
#elif SHOULD_NOT_COMPILE == 7  // a closure takes the observer, the object, the new value and the old value, in this order
  controller.observe(slip, netPay, [](NSObject&, NSObject&, const NSDictionary&) {});
#elif SHOULD_NOT_COMPILE == 8  // a closure takes the observer, the object, the new value and the old value, in this order
  controller.observe(slip, netPay, [](const Decimal&, const Decimal&, const Decimal&) {});
#elif SHOULD_NOT_COMPILE == 9  // the closure takes the value as another type than the key path leads to
  controller.observe(slip, netPay, [](Decimal&) {});
#elif SHOULD_NOT_COMPILE == 10  // what is observed is an object or a Ref to it
  controller.observe(nullptr, "netPay", [](const Decimal&) {});
#elif SHOULD_NOT_COMPILE == 11  // the closure takes the observer as a class that it is not
  nk_observe(window, slip, netPay, [](Employee&, const Decimal&) {});
#elif SHOULD_NOT_COMPILE == 12  // the closure takes the value as another type than the key path leads to
  nk_bind_toObject_withKeyPath_block(window, "title", *slip, netPay, [](const NSString& net) { return net; });
#elif SHOULD_NOT_COMPILE == 13  // the value may be absent: the closure takes it as a std::optional
  nk_bind_toObject_withKeyPath_block(window, "title", *slip, name, [](const NSString& text) { return text; });
#elif SHOULD_NOT_COMPILE == 14  // the closure of the reverse direction returns another type than the key path leads to
  nk_bind_toObject_withKeyPath_block_reverseBlock(window, "title", *slip, netPay, nullptr, [](int) { return "none"_ns; });
#elif SHOULD_NOT_COMPILE == 15  // the closure of a binding returns what becomes a Value: an object does by its Ref
  nk_bind_toObject_withKeyPath_block(window, "title", *slip, "employee", [](Employee& each) -> Employee& { return each; });
#elif SHOULD_NOT_COMPILE == 16  // the closure of a binding takes one value, of a type that it names
  nk_bind_toObject_withKeyPath_block(window, "title", *slip, "netPay", [](const Decimal&, const Decimal&) { return 0; });
#elif SHOULD_NOT_COMPILE == 17  // the object does not have the key path's first property: the path starts from another class
  nk_bind_toObject_withKeyPath_block(window, "title", *employee, netPay, [](const Decimal& net) { return net; });
#endif
}
