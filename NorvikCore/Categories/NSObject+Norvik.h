// NorvikCore/Categories/NSObject+Norvik.h - small helpers of every object: closures, performing by name, delegates,
// casts, archives. Binding and observing have headers of their own, which this one includes.
//
//   nk_as<Payslip>(*object);                                       // the object as a Payslip, or empty
//   nk_valueForKeyPath(*slip, "employee.name", [](const Value& name) { return name.description() + "!"; });
//   nk_tryToPerformDelegateAction(*view, "closePayRun:", view);    // the view, its delegate, the delegate's delegate
//   Ref<Payslip> copy = nk_cloneCodingObject(*slip);
//
// An operation that asks nothing of an identity also takes any Value. Threads: those of the object.
#pragma once

#include "NorvikCore/Categories/NKBlockValueTransformer.h"
#include "NorvikCore/Categories/NSObject+Norvik_Binding.h"
#include "NorvikCore/Categories/NSObject+Norvik_Observing.h"
#include "NorvikCore/platform/collections/NSData.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/object/SEL.h"

#include <concepts>

namespace norvik {

/// True for a closure, of whatever parameters. A Block converts to a Value: `nk_isBlock(block)`.
[[nodiscard]] NK_EXPORT bool nk_isBlock(const NSObject& receiver);
[[nodiscard]] NK_EXPORT bool nk_isBlock(const Value& receiver);

// What the operation chosen at run time gives back, as NSObject::performSelector performs it and raises.
NK_EXPORT Value nk_performNonLeakySelector(NSObject& receiver, SEL selector);
NK_EXPORT Value nk_performNonLeakySelector(NSObject& receiver, SEL selector, const Value& object);

/// Has the application send the action, with the argument as its sender, to the receiver where that responds, otherwise
/// to the first that does along the chain of delegates. False where nobody does; a chain that comes back to where it
/// was ends there. A delegate is what the key "delegate" gives, where it is stated as a property or operation.
NK_EXPORT bool nk_tryToPerformDelegateAction(NSObject& receiver, SEL action, const Value& argument);

/// The value at the end of the path, through the closure where one is given, which an absent value goes through too.
[[nodiscard]] NK_EXPORT Value nk_valueForKeyPath(const NSObject& receiver, const NSString& keyPath,
                                                 const NKTransformBlock& block);

/// The receiver where it is of that class or a subclass, otherwise empty or absent.
template <std::derived_from<NSObject> T>
[[nodiscard]] Ref<T> nk_as(NSObject& receiver) {
  return Ref<T>(dynamic_cast<T*>(&receiver));
}
[[nodiscard]] NK_EXPORT Ref<NSObject> nk_as(NSObject& receiver, const Class& wanted);
[[nodiscard]] NK_EXPORT Value nk_as(const Value& receiver, const Class& wanted);

/// "0x55d0c8a2f2b0".
[[nodiscard]] NK_EXPORT NSString nk_objAddress(const NSObject& receiver);

/// For NSUnarchiver. What cannot be encoded raises NSInvalidArchiveOperationException.
[[nodiscard]] NK_EXPORT Ref<NSData> nk_archivedData(const NSObject& receiver);
[[nodiscard]] NK_EXPORT Ref<NSData> nk_archivedData(const Value& receiver);

/// A copy of the receiver and of all it holds, by way of a keyed archive, which raises as nk_archivedData does. Mutable
/// collections come back mutable. Of an empty Ref the copy is empty.
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
