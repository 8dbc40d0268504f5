// NorvikCore/Categories/NSAttributedString+Norvik.h - attributed text from a format and its arguments.
//
//   auto plain = NSDictionary::dictionaryWith({{NSForegroundColorAttributeName, grey}});
//   auto amount = NSDictionary::dictionaryWith({{NSFontAttributeName, bold}});
//   nk_stringWithFormat_attributes_argumentAttributes("Total: %@ (%%)", plain, amount, 12);
//   // "Total: 12 (%)": the 12 is bold and not grey, the rest is grey
//
// A format knows "%@", the next argument, and "%%", a percent sign. Any other "%" is left out and what follows it is
// text: "%d" is "d". That is deliberate, numbers are passed as values.
//
// An argument is any value:
// - attributed text stays as it is, whatever attributes are given;
// - an array is a pair of a value and the dictionary with its attributes, the null marker for none; what else it holds
//   is ignored, and one of fewer than two elements raises NSRangeException;
// - of anything else the description is shown, "(null)" of an absent value, with the attributes of arguments alone.
// A "%@" without an argument shows "(bad argument)"; arguments without a "%@" are ignored.
//
// An empty Ref is no attributes. Every form gives a new mutable text, in time linear in what is put together. Any
// thread.
#pragma once

#include "NorvikCore/platform/foundation/NSAttributedString.h"

#include <span>

namespace norvik {

[[nodiscard]] NK_EXPORT Ref<NSMutableAttributedString> nk_initWithFormat_attributes_argumentAttributes_arguments(
    const NSString& format, const Ref<NSDictionary>& attributes, const Ref<NSDictionary>& argumentAttributes,
    std::span<const Value> arguments);

template <class... Args>
[[nodiscard]] Ref<NSMutableAttributedString> nk_initWithFormat_attributes_argumentAttributes(
    const NSString& format, const Ref<NSDictionary>& attributes, const Ref<NSDictionary>& argumentAttributes,
    const Args&... arguments) {
  const Value list[] = {Value(arguments)..., Value()};
  return nk_initWithFormat_attributes_argumentAttributes_arguments(format, attributes, argumentAttributes,
                                                                   std::span(list, sizeof...(Args)));
}

[[nodiscard]] inline Ref<NSMutableAttributedString> nk_stringWithFormat_attributes_argumentAttributes_arguments(
    const NSString& format, const Ref<NSDictionary>& attributes, const Ref<NSDictionary>& argumentAttributes,
    std::span<const Value> arguments) {
  return nk_initWithFormat_attributes_argumentAttributes_arguments(format, attributes, argumentAttributes, arguments);
}

template <class... Args>
[[nodiscard]] Ref<NSMutableAttributedString> nk_stringWithFormat_attributes_argumentAttributes(
    const NSString& format, const Ref<NSDictionary>& attributes, const Ref<NSDictionary>& argumentAttributes,
    const Args&... arguments) {
  return nk_initWithFormat_attributes_argumentAttributes(format, attributes, argumentAttributes, arguments...);
}

/// The same attributes for the format and its arguments. Stands for the class operation of NSMutableAttributedString
/// too.
template <class... Args>
[[nodiscard]] Ref<NSMutableAttributedString> nk_stringWithFormat_attributes(const NSString& format,
                                                                            const Ref<NSDictionary>& attributes,
                                                                            const Args&... arguments) {
  return nk_initWithFormat_attributes_argumentAttributes(format, attributes, attributes, arguments...);
}

}  // namespace norvik
