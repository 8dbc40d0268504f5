// NorvikCore/Categories/NSObject+Norvik.h - small helpers for every object: closures, performing by name, delegates,
// casts, archives. Binding and observing have headers of their own, which this header includes.
//
//   nk_as<Payslip>(*object);                                       // the object as a Payslip, or empty
//   nk_valueForKeyPath(*slip, "employee.name", [](const Value& name) { return name.description() + "!"; });
//   nk_tryToPerformDelegateAction(*view, "closePayRun:", view);    // the view, its delegate, the delegate's delegate
//   Ref<Payslip> copy = nk_cloneCodingObject(*slip);
//
// An operation that does not need an object's identity also takes any Value. Threads: those that the object allows.
#pragma once

#include "NorvikCore/Categories/NKBlockValueTransformer.h"
#include "NorvikCore/Categories/NSObject+Norvik_Binding.h"
#include "NorvikCore/Categories/NSObject+Norvik_Observing.h"
#include "NorvikCore/platform/collections/NSData.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/object/SEL.h"

#include <concepts>

namespace norvik {

/// True for a closure, whatever its parameters. A Block converts to a Value: `nk_isBlock(block)`.
[[nodiscard]] NK_EXPORT bool nk_isBlock(const NSObject& receiver);
[[nodiscard]] NK_EXPORT bool nk_isBlock(const Value& receiver);

// Returns the result of the operation chosen at run time. Performs and raises as NSObject::performSelector does.
NK_EXPORT Value nk_performNonLeakySelector(NSObject& receiver, SEL selector);
NK_EXPORT Value nk_performNonLeakySelector(NSObject& receiver, SEL selector, const Value& object);

/// Has the application send the action, with the argument as its sender, to the receiver if it responds to the action,
/// otherwise to the first object along the chain of delegates that does. False if no object responds; a chain that
/// returns to an earlier object ends there. A delegate is the value of the key "delegate" if the class declares it as a
/// property or operation.
NK_EXPORT bool nk_tryToPerformDelegateAction(NSObject& receiver, SEL action, const Value& argument);

/// The value at the end of the path, passed through the closure if one is given. An absent value is passed through it
/// too.
[[nodiscard]] NK_EXPORT Value nk_valueForKeyPath(const NSObject& receiver, const NSString& keyPath,
                                                 const NKTransformBlock& block);

/// The receiver if it is of that class or a subclass, otherwise empty or absent.
template <std::derived_from<NSObject> T>
[[nodiscard]] Ref<T> nk_as(NSObject& receiver) {
  return Ref<T>(dynamic_cast<T*>(&receiver));
}
[[nodiscard]] NK_EXPORT Ref<NSObject> nk_as(NSObject& receiver, const Class& wanted);
[[nodiscard]] NK_EXPORT Value nk_as(const Value& receiver, const Class& wanted);

/// "0x55d0c8a2f2b0".
[[nodiscard]] NK_EXPORT NSString nk_objAddress(const NSObject& receiver);

/// Data for NSUnarchiver. A value that cannot be encoded raises NSInvalidArchiveOperationException.
[[nodiscard]] NK_EXPORT Ref<NSData> nk_archivedData(const NSObject& receiver);
[[nodiscard]] NK_EXPORT Ref<NSData> nk_archivedData(const Value& receiver);

/// A copy of the receiver and of all that it contains, made through a keyed archive. Raises as nk_archivedData does.
/// Mutable collections stay mutable. The copy of an empty Ref is empty.
[[nodiscard]] NK_EXPORT Value nk_cloneCodingObject(const Value& receiver);
template <std::derived_from<NSObject> T>
[[nodiscard]] Ref<T> nk_cloneCodingObject(const Ref<T>& receiver) {
  return nk_cloneCodingObject(Value(receiver)).template as<Ref<T>>();
}
template <std::derived_from<NSObject> T>
[[nodiscard]] Ref<T> nk_cloneCodingObject(const T& receiver) {
  return nk_cloneCodingObject(Ref<T>(const_cast<T*>(&receiver)));
}

}  // namespace norvik
