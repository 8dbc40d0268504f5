// NorvikCore/markup/MRKTaggedString.h - text with tags in it, convertible to plain text and to attributed text.
//
//   auto options = MRKTaggedStringOptions::options();
//   options->setAttributes(NSDictionary::dictionaryWithObject(boldFont, NSFontAttributeName), "b");
//   auto source = MRKTaggedString::stringWithFormat("Pay <b>%@</b> now", MRKEscapedStringForString(name));
//   source->string();                                   // "Pay Zoe now"
//   source->attributedStringWithOptions(*options);      // the same with a bold name
//
// A tag is opened by "<b>" and must be closed by "</b>", in upper or lower case. No tag closes itself. Tags may be
// nested but must not overlap. docs/markup.md describes the language.
//
// Invalid markup gives an absent text; the functions with an error parameter report the reason (MRKStringParser.h).
// Each call parses again, in one pass. Immutable; any thread.
#pragma once

#include "NorvikCore/markup/MRKTaggedStringOptions.h"
#include "NorvikCore/platform/collections/NSError.h"
#include "NorvikCore/platform/foundation/NSAttributedString.h"
#include "NorvikCore/platform/object/NSCoder.h"
#include "NorvikCore/platform/values/Format.h"

#include <optional>

namespace norvik {

class NK_EXPORT MRKTaggedString : public NSObject, public NSCoding {
  NK_OBJECT(MRKTaggedString, NSObject)
  NK_CODING
  NK_READONLY_PROPERTY(NSString, underlyingString)

  /// An absent string is the empty text.
  explicit MRKTaggedString(std::optional<NSString> string = std::nullopt);
  ~MRKTaggedString() override;

  [[nodiscard]] static Ref<MRKTaggedString> stringWithString(std::optional<NSString> string);
  /// The arguments become part of the markup, so escape text from elsewhere with MRKEscapedStringForString first.
  template <class... Args>
  [[nodiscard]] static Ref<MRKTaggedString> stringWithFormat(FormatStringFor<Args...> format,
                                                             const Args&... arguments) {
    return stringWithString(stringWithFormatArguments(format.view(), FormatArgumentList(arguments...)));
  }

  // The text without its tags. The attributes of tags are not read.
  [[nodiscard]] std::optional<NSString> string() const;
  [[nodiscard]] std::optional<NSString> stringWithError(Ref<NSError>* error) const;
  [[nodiscard]] std::optional<NSString> stringWithOptions(const MRKTaggedStringOptions& options,
                                                          Ref<NSError>* error = nullptr) const;

  // The text with the attributes that the options give its tags. Without options, the registered default options are
  // used.
  [[nodiscard]] Ref<NSAttributedString> attributedString() const;
  [[nodiscard]] Ref<NSAttributedString> attributedStringWithError(Ref<NSError>* error) const;
  [[nodiscard]] Ref<NSAttributedString> attributedStringWithOptions(const MRKTaggedStringOptions& options,
                                                                    Ref<NSError>* error = nullptr) const;

  [[nodiscard]] Ref<MRKTaggedString> copy() const;
  /// True if `other` is of this class or a subclass and has an equal source.
  [[nodiscard]] bool isEqual(const NSObject& other) const override;
  [[nodiscard]] std::size_t hash() const override;
  [[nodiscard]] NSString description() const override;

  [[nodiscard]] static constexpr bool supportsSecureCoding() noexcept { return true; }
  /// Encodes the source under "underlyingString". Decoding reads a missing source as the empty text.
  void encodeWithCoder(NSCoder& coder) const override;
  bool initWithCoder(NSCoder& coder) override;
};

}  // namespace norvik
