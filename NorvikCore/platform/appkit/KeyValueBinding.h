// NorvikCore/platform/appkit/KeyValueBinding.h - keeping a property of one object and a key path of another the same.
//
//   bind_toObject_withKeyPath_options(*field, NSValueBinding, *payslip, "grossPay", nullptr);
//   payslip->setGrossPay(1250_dec);                        // the field's value is 1250
//   field->setValue(Value(1300_dec));                      // the pay slip's gross pay is 1300
//   infoForBinding(*field, NSValueBinding)->objectForKey(NSObservedKeyPathKey);       // "grossPay"
//   unbind(*field, NSValueBinding);
//
// The receiver is the object that is bound, by one of its keys; the observed object has the key path. Binding gives the
// receiver what stands at the end of the path, then both follow each other:
//
// - A change along the path sets the receiver's key, unless it is equal to that already. Where the path breaks off, the
//   receiver gets an absent value; a number, text, decimal or date that cannot be absent raises through
//   setNilValueForKey. There are no placeholders.
// - A change of the receiver's key, which its setter must announce, sets the end of the path, unless that is equal
//   already; then the receiver gets what the observed object made of it. Nothing is set where the path breaks off,
//   where its last key is read-only, or where a transformer goes one way only.
// - What a binding sets does not come back to it. Where callbacks change both sides meanwhile, it goes on until they
//   agree; a circle of bindings that never agrees raises NSInternalInconsistencyException after sixteen rounds.
//
// Equal means Value's equality: an equal collection is not handed over anew.
//
// Ownership: neither side is kept. With the receiver its bindings go; a binding whose observed object is gone does
//            nothing and counts as absent. Options, and with them a transformer, are kept as long as the binding.
// Threads:   a binding acts at once, on the thread that makes the change, and calls the other side's accessors there;
//            so what is bound to a user interface is changed on the main thread. Binding, unbinding and letting go of
//            either side are safe on any thread. Changing both sides on two threads at once may leave them with each
//            other's value.
// Callbacks: no lock is held. Transformers, setters, validation and observers may bind, unbind and let go of both
//            sides; a binding that is ended meanwhile sets nothing more on that thread.
#pragma once

#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/NSString.h"

namespace norvik {

/// Binds the receiver's key `binding`; a binding that this key had is ended first. `options` may be empty. An unknown
/// key or path, a transformer name that nobody registered, and a transformer that is none, raise and change nothing;
/// what the first setting of the receiver raises leaves the key unbound.
NK_EXPORT void bind_toObject_withKeyPath_options(NSObject& receiver, const NSString& binding, NSObject& object,
                                                 const NSString& keyPath, const Ref<NSDictionary>& options);
/// The receiver keeps the value it has. Nothing happens where the key is not bound.
NK_EXPORT void unbind(NSObject& receiver, const NSString& binding);
/// Observed object, key path, and the options it was bound with (never empty, but possibly without entries), under the
/// keys below. Empty where the key is not bound, or the observed object is gone.
[[nodiscard]] NK_EXPORT Ref<NSDictionary> infoForBinding(const NSObject& receiver, const NSString& binding);

NK_EXPORT extern const NSString NSObservedObjectKey;
NK_EXPORT extern const NSString NSObservedKeyPathKey;
NK_EXPORT extern const NSString NSOptionsKey;

/// "value": what a view shows.
NK_EXPORT extern const NSString NSValueBinding;
NK_EXPORT extern const NSString NSEditableBinding;
NK_EXPORT extern const NSString NSEnabledBinding;

// Options. An absent value and the null marker are the same as leaving an option out.

/// The name of a registered NSValueTransformer, looked up while binding.
NK_EXPORT extern const NSString NSValueTransformerNameBindingOption;
/// An NSValueTransformer; goes before one by name.
NK_EXPORT extern const NSString NSValueTransformerBindingOption;
/// True: what the receiver would set is validated before. Where that refuses, nothing is set and the receiver gets back
/// what the observed object has.
NK_EXPORT extern const NSString NSValidatesImmediatelyBindingOption;
/// For the binding "value" of a receiver with a settable key "editable" that is not bound itself: unless false, that
/// key is set to whether the receiver's changes can be written to the observed object.
NK_EXPORT extern const NSString NSConditionallySetsEditableBindingOption;
/// The same for "enabled", only where true.
NK_EXPORT extern const NSString NSConditionallySetsEnabledBindingOption;
/// For a view to look at: true asks it to commit at each edit, not only at the end of editing.
NK_EXPORT extern const NSString NSContinuouslyUpdatesValueBindingOption;

}  // namespace norvik
