// NorvikCore/Categories/NSAttributedString+Norvik.h - attributed text from a format and its arguments.
//
//   auto plain = NSDictionary::dictionaryWith({{NSForegroundColorAttributeName, grey}});
//   auto amount = NSDictionary::dictionaryWith({{NSFontAttributeName, bold}});
//   nk_stringWithFormat_attributes_argumentAttributes("Total: %@ (%%)", plain, amount, 12);
//   // "Total: 12 (%)": the 12 is bold and not grey, the rest is grey
//
// "%@" stands for the next argument and "%%" for a percent sign. Any other "%" is left out and the characters after it
// are text: "%d" gives "d". That is deliberate, because numbers are passed as values.
//
// An argument is any value:
// - attributed text keeps its own attributes and receives no others;
// - an array is a pair: a value and a dictionary with its attributes, or the null marker for no attributes. Further
//   elements are ignored. An array with fewer than two elements raises NSRangeException;
// - of any other value the description is shown, "(null)" for an absent value, with the attributes of arguments only.
// A "%@" without an argument shows "(bad argument)"; arguments without a "%@" are ignored.
//
// An empty Ref means no attributes. Every function returns a new mutable text, in time linear in the size of the
// result. Any thread.
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

/// Uses the same attributes for the format and its arguments. This is also the class operation of
/// NSMutableAttributedString.
template <class... Args>
[[nodiscard]] Ref<NSMutableAttributedString> nk_stringWithFormat_attributes(const NSString& format,
                                                                            const Ref<NSDictionary>& attributes,
                                                                            const Args&... arguments) {
  return nk_initWithFormat_attributes_argumentAttributes(format, attributes, attributes, arguments...);
}

}  // namespace norvik
