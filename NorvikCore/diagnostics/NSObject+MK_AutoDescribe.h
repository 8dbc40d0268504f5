// NorvikCore/diagnostics/NSObject+MK_AutoDescribe.h - shows any object's properties with their values, and its methods.
//
//   mk_printObject(*slip);                     // on the system console:
//                                              //   - - - > Payslip attributes:
//                                              //     grossPay : 1234.50
//                                              //     netPay : 987.65
//                                              //   < - - -
//   mk_methodList<Payslip>();                  // "grossPay", "setGrossPay:", "netPay", "recalculate"
//   mk_methodListOnly<Payslip>();              // "recalculate"
//
// A debugging aid for every class that declares itself to the runtime. Lists are in the order of the declarations:
// NK_PROPERTY and similar macros declare a property with its accessors, NK_METHOD and NK_METHOD_AS a method. Nothing is
// changed, unless an accessor that is called changes something. Threads: those that the described object allows.
#pragma once

#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/object/Class.h"
#include "NorvikCore/platform/object/NSObject.h"

namespace norvik {

/// The names of the properties of the class, then of its superclass, and so on up to the root. A class's own properties
/// come before those that categories add to it. Properties without a name are left out; a name that occurs twice is
/// listed twice.
[[nodiscard]] NK_EXPORT Ref<NSArray> mk_propertyList(const Class& theClass);
/// The selectors of the methods that the class itself declares, including accessors. Class operations are not included,
/// because they are not methods of its objects.
[[nodiscard]] NK_EXPORT Ref<NSArray> mk_methodList(const Class& theClass);
/// The same without accessors: getters and setters of properties of the class and its superclasses. Their names are
/// compared without case. ".cxx_destruct" is left out too.
[[nodiscard]] NK_EXPORT Ref<NSArray> mk_methodListOnly(const Class& theClass);

template <class T>
[[nodiscard]] Ref<NSArray> mk_propertyList() {
  return mk_propertyList(T::staticClass());
}
template <class T>
[[nodiscard]] Ref<NSArray> mk_methodList() {
  return mk_methodList(T::staticClass());
}
template <class T>
[[nodiscard]] Ref<NSArray> mk_methodListOnly() {
  return mk_methodListOnly(T::staticClass());
}

/// The name of the object's class.
[[nodiscard]] NK_EXPORT NSString mk_className(const NSObject& object);

// Each function returns a block of text: "- - - > " with the class's name and a heading, the lines, and "< - - -".

/// Every property of mk_propertyList with its value. If the process has a class named "NSManagedObject", an object of
/// that class gives its own description instead.
[[nodiscard]] NK_EXPORT NSString mk_describeObject(const NSObject& object);
/// The keys with their values, read by key-value coding. If reading raises an NSException, for example because the
/// object does not have the key, the value is "Can't get value via KVC"; exceptions of other kinds pass. An absent
/// value is "(null)".
[[nodiscard]] NK_EXPORT NSString mk_describeObjectKeys(const NSObject& object, const NSArray& keys);
[[nodiscard]] NK_EXPORT NSString mk_describeObjectMethods(const NSObject& object);
[[nodiscard]] NK_EXPORT NSString mk_describeObjectMethodsOnly(const NSObject& object);

// The same four, on the system console.
NK_EXPORT void mk_printObject(const NSObject& object);
NK_EXPORT void mk_printObjectKeys(const NSObject& object, const NSArray& keys);
NK_EXPORT void mk_printObjectMethods(const NSObject& object);
NK_EXPORT void mk_printObjectMethodsOnly(const NSObject& object);

/// mk_printObject for use in a debugger. The debugger finds it by its name, without debug information of the library;
/// it works for a `Ref` too:
///   (gdb) call (void)mk_printObjectAt(payment.object_)
/// `object` is the address of an NSObject, or of any object whose first base class is NSObject. For a null pointer it
/// prints "(null)".
extern "C" NK_EXPORT void mk_printObjectAt(const void* object);

}  // namespace norvik
