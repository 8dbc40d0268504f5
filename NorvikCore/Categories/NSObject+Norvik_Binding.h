// NorvikCore/Categories/NSObject+Norvik_Binding.h - binding with closures and short options, and pushing an edited
// value back.
//
//   nk_bind_toObject_withKeyPath_options_block_reverseBlock(
//       *field, NSValueBinding, *payslip, "grossPay", NSDictionary::dictionaryWith({{NKBind, "validate;update"}}),
//       [](const Value& pay) -> Value { return pay.as<Decimal>() / 12; },      // from the model to the view
//       [](const Value& shown) -> Value { return shown.as<Decimal>() * 12; });  // and back
//   Ref<NSError> error;
//   if (!nk_updateBoundValue(*field, 1300_dec, &error)) show(error);
//
// KeyValueBinding.h tells what a binding does, who is kept and which threads it runs on. Under the key NKBind the
// options of a binding may hold a text of tokens, separated by ";":
//
//   "readOnly"   the binding leaves the keys "editable" and "enabled" of its receiver alone
//   "validate"   what goes back to the observed object is validated before
//   "update"     asks the view to commit at each edit
//
// A token is taken as it is written: " validate" with a blank before it is none, and unknown ones are ignored.
#pragma once

#include "NorvikCore/Categories/NKBlockValueTransformer.h"
#include "NorvikCore/constants/NKBind.h"
#include "NorvikCore/platform/appkit/KeyValueBinding.h"

namespace norvik {

class NSArray;
class NSError;

/// Options in which the tokens under NKBind have become the platform's options, which they overwrite; the options
/// themselves where they have no such key. Empty for an empty Ref. Anything but a text under NKBind raises
/// NSInvalidArgumentException.
[[nodiscard]] NK_EXPORT Ref<NSDictionary> nk_processBindOptions(const NSObject& receiver,
                                                                const Ref<NSDictionary>& options);

// Binding with processed options. A closure, where given, takes the place of a transformer in the options; it is kept
// with the binding. With one closure the binding goes one way; with two, or with the reverse one alone, a direction
// whose closure is absent raises NSInvalidArgumentException when it is used, which is at once for the forward one.
NK_EXPORT void nk_bind_toObject_withKeyPath_options(NSObject& receiver, const NSString& binding, NSObject& object,
                                                    const NSString& keyPath, const Ref<NSDictionary>& options);
NK_EXPORT void nk_bind_toObject_withKeyPath_block(NSObject& receiver, const NSString& binding, NSObject& object,
                                                  const NSString& keyPath, const NKTransformBlock& block);
NK_EXPORT void nk_bind_toObject_withKeyPath_options_block(NSObject& receiver, const NSString& binding, NSObject& object,
                                                          const NSString& keyPath, const Ref<NSDictionary>& options,
                                                          const NKTransformBlock& block);
NK_EXPORT void nk_bind_toObject_withKeyPath_block_reverseBlock(NSObject& receiver, const NSString& binding,
                                                               NSObject& object, const NSString& keyPath,
                                                               const NKTransformBlock& block,
                                                               const NKTransformBlock& reverseBlock);
NK_EXPORT void nk_bind_toObject_withKeyPath_options_block_reverseBlock(NSObject& receiver, const NSString& binding,
                                                                       NSObject& object, const NSString& keyPath,
                                                                       const Ref<NSDictionary>& options,
                                                                       const NKTransformBlock& block,
                                                                       const NKTransformBlock& reverseBlock);

/// Writes a value that was edited in the receiver to what its binding "value" observes: through the transformer's way
/// back, then validated where the options ask for it, which may change the value, then set unless it equals the present
/// one; an absent present value equals nothing. False, and nothing written, where there is no such binding or the
/// validation refuses, which alone gives an error. The receiver then shows what the observed object made of the value.
/// A transformer that goes one way raises NSInvalidArgumentException.
NK_EXPORT bool nk_updateBoundValue(NSObject& receiver, const Value& value, Ref<NSError>* error = nullptr);

/// Binds the target as the receiver is bound under these names, then unbinds the receiver, last name first. Names that
/// are not bound are passed over. Options go over as they are, without being processed again. What binding the target
/// raises leaves the receiver bound; a receiver that is its own target ends unbound.
NK_EXPORT void nk_transferBindingsTo(NSObject& receiver, NSObject& target, const NSArray& bindings);

/// What the binding observes, absent where there is none. Where that is an NSTableCellView and `extended` is true, the
/// cell's object value instead.
[[nodiscard]] NK_EXPORT Value nk_observedObjectForBinding(const NSObject& receiver, const NSString& binding,
                                                          bool extended);

}  // namespace norvik
