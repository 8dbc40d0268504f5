// NorvikCore/platform/appkit/KeyValueBinding.h - keeps a property of one object and a key path of another one equal.
//
//   bind_toObject_withKeyPath_options(*field, NSValueBinding, *payslip, "grossPay", nullptr);
//   payslip->setGrossPay(1250_dec);                        // the field's value is 1250
//   field->setValue(Value(1300_dec));                      // the payslip's gross pay is 1300
//   infoForBinding(*field, NSValueBinding)->objectForKey(NSObservedKeyPathKey);       // "grossPay"
//   unbind(*field, NSValueBinding);
//
// The receiver is the object that is bound by one of its keys; the observed object has the key path. Binding sets the
// receiver's key to the value at the end of the path. After that, each side follows the other:
//
// - A change along the path sets the receiver's key, unless that is already equal. If an object along the path is
//   absent, the receiver gets an absent value; a number, text, decimal or date that cannot be absent raises through
//   setNilValueForKey. There are no placeholders.
// - A change of the receiver's key, which its setter must announce, sets the end of the path, unless that is already
//   equal. Then the receiver gets the value that the observed object has after that. Nothing is set if an object along
//   the path is absent, if the last key is read-only, or if a transformer works in one direction only.
// - A value that a binding sets is not carried back. If callbacks change both sides meanwhile, the binding repeats
//   until they agree; a cycle of bindings that never agrees raises NSInternalInconsistencyException after sixteen
//   rounds.
//
// Equality is Value's equality: an equal collection is not set again.
//
// Ownership: neither side is retained. When the receiver is destroyed, its bindings end. A binding whose observed
//            object was destroyed does nothing, and infoForBinding() is empty. Options, including a transformer, are
//            retained until the binding ends.
// Threads:   a binding acts at once, on the thread that makes the change, and calls the accessors of the other side
//            there. Objects that are bound to a user interface must therefore be changed on the main thread. Binding,
//            unbinding and releasing either side are safe on any thread. If two threads change both sides at once, each
//            side may end up with the other's value.
// Callbacks: no lock is held. Transformers, setters, validation and observers may bind, unbind and release both sides;
//            a binding that is ended meanwhile sets nothing more on that thread.
#pragma once

#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/NSString.h"

namespace norvik {

/// Binds the receiver's key `binding`; an existing binding of this key is ended first. `options` may be empty. An
/// unknown key or path, the name of an unregistered transformer, and an object that is not a transformer raise and
/// change nothing. If setting the receiver for the first time raises, the key is left unbound.
NK_EXPORT void bind_toObject_withKeyPath_options(NSObject& receiver, const NSString& binding, NSObject& object,
                                                 const NSString& keyPath, const Ref<NSDictionary>& options);
/// The receiver keeps its present value. Does nothing if the key is not bound.
NK_EXPORT void unbind(NSObject& receiver, const NSString& binding);
/// The observed object, the key path, and the options (never empty, but possibly without entries), under the keys
/// below. Empty if the key is not bound or the observed object was destroyed.
[[nodiscard]] NK_EXPORT Ref<NSDictionary> infoForBinding(const NSObject& receiver, const NSString& binding);

NK_EXPORT extern const NSString NSObservedObjectKey;
NK_EXPORT extern const NSString NSObservedKeyPathKey;
NK_EXPORT extern const NSString NSOptionsKey;

/// "value": the value that a view shows.
NK_EXPORT extern const NSString NSValueBinding;
NK_EXPORT extern const NSString NSEditableBinding;
NK_EXPORT extern const NSString NSEnabledBinding;

// Options. An absent value and the null marker mean that the option is not set.

/// The name of a registered NSValueTransformer. It is looked up while binding.
NK_EXPORT extern const NSString NSValueTransformerNameBindingOption;
/// An NSValueTransformer; takes precedence over one by name.
NK_EXPORT extern const NSString NSValueTransformerBindingOption;
/// True: the value that the receiver would set is validated first. If the validation refuses it, nothing is set and the
/// receiver gets the observed object's value again.
NK_EXPORT extern const NSString NSValidatesImmediatelyBindingOption;
/// For the binding "value" of a receiver with a settable key "editable" that is not bound itself: unless the option is
/// false, that key is set to whether the receiver's changes can be written to the observed object.
NK_EXPORT extern const NSString NSConditionallySetsEditableBindingOption;
/// The same for "enabled", but only if the option is true.
NK_EXPORT extern const NSString NSConditionallySetsEnabledBindingOption;
/// Read by views only: true makes a view commit at each edit, not only at the end of editing.
NK_EXPORT extern const NSString NSContinuouslyUpdatesValueBindingOption;

}  // namespace norvik
