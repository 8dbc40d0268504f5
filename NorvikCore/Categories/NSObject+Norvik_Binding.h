// NorvikCore/Categories/NSObject+Norvik_Binding.h - binding with closures and short options, and writing an edited
// value back.
//
//   nk_bind_toObject_withKeyPath_options_block_reverseBlock(
//       *field, NSValueBinding, *payslip, keyPath<&Payslip::grossPay>(),
//       NSDictionary::dictionaryWith({{NKBind, "validate;update"}}),
//       [](const Decimal& pay) { return pay / 12; },      // from the model to the view
//       [](const Decimal& shown) { return shown * 12; });  // and back
//   Ref<NSError> error;
//   if (!nk_updateBoundValue(*field, 1300_dec, &error)) show(error);
//
// KeyValueBinding.h describes bindings, which objects they keep alive and which threads they run on. Under the key
// NKBind the options of a binding may hold a text of tokens, separated by ";":
//
//   "readOnly"   the binding does not set the properties "editable" and "enabled" of its receiver
//   "validate"   before a value is written to the observed object, that object's validation method checks it
//   "update"     the view writes back at each edit, not only when editing ends
//
// Tokens are compared exactly: " validate" with a leading space is not a token. An unknown token is ignored, and the
// system console receives a line that names it.
#pragma once

#include "NorvikCore/Categories/NKBlockValueTransformer.h"
#include "NorvikCore/constants/NKBind.h"
#include "NorvikCore/platform/appkit/KeyValueBinding.h"
#include "NorvikCore/platform/keyvalue/KeyPath.h"

#include <utility>

namespace norvik {

class NSArray;
class NSError;

/// The options with the tokens under NKBind replaced by the platform's options, which overwrite options already there.
/// Returns the options themselves if they have no such key, and an empty Ref for an empty Ref. A value under NKBind
/// that is not a text raises NSInvalidArgumentException.
[[nodiscard]] NK_EXPORT Ref<NSDictionary> nk_processBindOptions(const NSObject& receiver,
                                                                const Ref<NSDictionary>& options);

// These functions bind with processed options. A closure, if given, replaces a transformer in the options; the binding
// keeps it. TransformClosure.h describes the closures. A function with one closure binds one-way. In a function with
// two closures, one of them may be absent; then using its direction raises NSInvalidArgumentException. The forward
// direction is used at once.
NK_EXPORT void nk_bind_toObject_withKeyPath_options(NSObject& receiver, const NSString& binding, NSObject& object,
                                                    const NSString& keyPath, const Ref<NSDictionary>& options);
NK_EXPORT void nk_bind_toObject_withKeyPath_block(NSObject& receiver, const NSString& binding, NSObject& object,
                                                  const NSString& keyPath, const detail::TransformClosure& block);
NK_EXPORT void nk_bind_toObject_withKeyPath_options_block(NSObject& receiver, const NSString& binding, NSObject& object,
                                                          const NSString& keyPath, const Ref<NSDictionary>& options,
                                                          const detail::TransformClosure& block);
NK_EXPORT void nk_bind_toObject_withKeyPath_block_reverseBlock(NSObject& receiver, const NSString& binding,
                                                               NSObject& object, const NSString& keyPath,
                                                               const detail::TransformClosure& block,
                                                               const detail::TransformClosure& reverseBlock);
NK_EXPORT void nk_bind_toObject_withKeyPath_options_block_reverseBlock(NSObject& receiver, const NSString& binding,
                                                                       NSObject& object, const NSString& keyPath,
                                                                       const Ref<NSDictionary>& options,
                                                                       const detail::TransformClosure& block,
                                                                       const detail::TransformClosure& reverseBlock);

// The same for a path of accessors. The compiler checks that the object has the path, that the first closure takes the
// value that the path leads to, and that the second returns one that can be written there. Behind another object the
// value is a std::optional (a Ref or a Value stays as it is), because the path may end there.
template <class Object, class Root, class T, class F>
void nk_bind_toObject_withKeyPath_block(NSObject& receiver, const NSString& binding, Object& object,
                                        const KeyPath<Root, T>& keyPath, F&& block) {
  nk_bind_toObject_withKeyPath_options_block(receiver, binding, object, keyPath, nullptr, std::forward<F>(block));
}
template <class Object, class Root, class T, class F>
void nk_bind_toObject_withKeyPath_options_block(NSObject& receiver, const NSString& binding, Object& object,
                                                const KeyPath<Root, T>& keyPath, const Ref<NSDictionary>& options,
                                                F&& block) {
  if constexpr (detail::startsHere<Object, Root>() && detail::transformsTo<F, T>()) {
    const NSString& text = keyPath;
    nk_bind_toObject_withKeyPath_options_block(receiver, binding, object, text, options, std::forward<F>(block));
  }
}
template <class Object, class Root, class T, class F, class Reverse>
void nk_bind_toObject_withKeyPath_block_reverseBlock(NSObject& receiver, const NSString& binding, Object& object,
                                                     const KeyPath<Root, T>& keyPath, F&& block,
                                                     Reverse&& reverseBlock) {
  nk_bind_toObject_withKeyPath_options_block_reverseBlock(receiver, binding, object, keyPath, nullptr,
                                                          std::forward<F>(block), std::forward<Reverse>(reverseBlock));
}
template <class Object, class Root, class T, class F, class Reverse>
void nk_bind_toObject_withKeyPath_options_block_reverseBlock(NSObject& receiver, const NSString& binding,
                                                             Object& object, const KeyPath<Root, T>& keyPath,
                                                             const Ref<NSDictionary>& options, F&& block,
                                                             Reverse&& reverseBlock) {
  if constexpr (detail::startsHere<Object, Root>() && detail::transformsTo<F, T>() &&
                detail::transformsFrom<Reverse, T>()) {
    const NSString& text = keyPath;
    nk_bind_toObject_withKeyPath_options_block_reverseBlock(
        receiver, binding, object, text, options, std::forward<F>(block), std::forward<Reverse>(reverseBlock));
  }
}

/// Writes a value that was edited in the receiver to the key path that the receiver's binding "value" observes. The
/// value is first transformed in reverse. If the options ask for it, the value is then validated, which may change it.
/// It is set unless it equals the present value; an absent present value equals nothing. The receiver then shows the
/// value as the observed object now has it. Returns false, and writes nothing, if there is no such binding or if the
/// validation refuses the value; only a refusal gives an error. A one-way transformer raises
/// NSInvalidArgumentException.
NK_EXPORT bool nk_updateBoundValue(NSObject& receiver, const Value& value, Ref<NSError>* error = nullptr);

/// Binds the target as the receiver is bound under these names, then unbinds the receiver in reverse order of the
/// names. Names that are not bound are skipped. Options are copied without being processed again. If binding the target
/// raises, the receiver stays bound. If the receiver is its own target, it ends unbound.
NK_EXPORT void nk_transferBindingsTo(NSObject& receiver, NSObject& target, const NSArray& bindings);

/// The object that the binding observes; absent if there is no such binding. If that object is an NSTableCellView and
/// `extended` is true, the cell's object value is returned instead.
[[nodiscard]] NK_EXPORT Value nk_observedObjectForBinding(const NSObject& receiver, const NSString& binding,
                                                          bool extended);

}  // namespace norvik
