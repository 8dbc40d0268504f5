// NorvikCore/diagnostics/NSObject+MK_AutoDescribe.h - any object shows what it has: its properties with their values,
// and its methods.
//
//   mk_printObject(*slip);                     // on the system console:
//                                              //   - - - > Payslip attributes:
//                                              //     grossPay : 1234.50
//                                              //     netPay : 987.65
//                                              //   < - - -
//   mk_methodList<Payslip>();                  // "grossPay", "setGrossPay:", "netPay", "recalculate"
//   mk_methodListOnly<Payslip>();              // "recalculate"
//
// A debugging aid, for every class that states itself. Lists are in the order of the statements: NK_PROPERTY and its
// kind state a property with its accessors, NK_METHOD and NK_METHOD_AS a method. It reads and changes nothing, as far
// as the accessors it calls change nothing; its threads are those of the object described.
#pragma once

#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/object/Class.h"
#include "NorvikCore/platform/object/NSObject.h"

namespace norvik {

/// The names of the properties of the class, then of its superclass and so on up to the root. A class's own come before
/// those that categories add to it; properties without a name are left out, names that occur twice are not.
[[nodiscard]] NK_EXPORT Ref<NSArray> mk_propertyList(const Class& theClass);
/// The selectors of the methods that the class itself states, accessors among them. Operations of the class itself are
/// no methods of its objects.
[[nodiscard]] NK_EXPORT Ref<NSArray> mk_methodList(const Class& theClass);
/// The same without accessors: without any method that is named, but for case, as a property of the class or a
/// superclass, as "set" with such a name and a colon behind, or ".cxx_destruct".
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

// Each as a block of text, "- - - > " with the class's name and a heading before it and "< - - -" behind it.

/// Every property of mk_propertyList with its value. An object of the class "NSManagedObject", where the process has a
/// class of that name, gives its own description instead.
[[nodiscard]] NK_EXPORT NSString mk_describeObject(const NSObject& object);
/// The keys with their values, read by key-value coding. Where that raises an NSException, as for a key that the object
/// does not have, the value is "Can't get value via KVC"; exceptions of other kinds pass. An absent value is "(null)".
[[nodiscard]] NK_EXPORT NSString mk_describeObjectKeys(const NSObject& object, const NSArray& keys);
[[nodiscard]] NK_EXPORT NSString mk_describeObjectMethods(const NSObject& object);
[[nodiscard]] NK_EXPORT NSString mk_describeObjectMethodsOnly(const NSObject& object);

// The same four, on the system console.
NK_EXPORT void mk_printObject(const NSObject& object);
NK_EXPORT void mk_printObjectKeys(const NSObject& object, const NSArray& keys);
NK_EXPORT void mk_printObjectMethods(const NSObject& object);
NK_EXPORT void mk_printObjectMethodsOnly(const NSObject& object);

/// mk_printObject for a debugger, which finds it by its name, without debug information of the library and on a `Ref`
/// too:
///   (gdb) call (void)mk_printObjectAt(payment.object_)
/// `object` is the address of an NSObject, which is that of any object whose first base class is one. Without an object
/// it prints "(null)".
extern "C" NK_EXPORT void mk_printObjectAt(const void* object);

}  // namespace norvik
