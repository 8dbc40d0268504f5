// NorvikCore/markup/MRKTaggedString.h - text with tags in it: what it says, and what it says with styles.
//
//   auto options = MRKTaggedStringOptions::options();
//   options->setAttributes(NSDictionary::dictionaryWithObject(boldFont, NSFontAttributeName), "b");
//   auto source = MRKTaggedString::stringWithFormat("Pay <b>%@</b> now", MRKEscapedStringForString(name));
//   source->string();                                   // "Pay Zoe now"
//   source->attributedStringWithOptions(*options);      // the same with a bold name
//
// A tag is opened by "<b>" and must be closed by "</b>", in whatever case; there are no tags that close themselves.
// Tags are nested, never crossed. docs/markup.md has the rest.
//
// What was marked up wrongly gives an absent text; the forms with an error say what is wrong (MRKStringParser.h). Each
// call parses anew, in one pass. Immutable; any thread.
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

  /// An absent source is the empty text.
  explicit MRKTaggedString(std::optional<NSString> string = std::nullopt);
  ~MRKTaggedString() override;

  [[nodiscard]] static Ref<MRKTaggedString> stringWithString(std::optional<NSString> string);
  /// The arguments become a part of the markup: text of others goes through MRKEscapedStringForString first.
  template <class... Args>
  [[nodiscard]] static Ref<MRKTaggedString> stringWithFormat(FormatStringFor<Args...> format,
                                                             const Args&... arguments) {
    return stringWithString(stringWithFormatArguments(format.view(), FormatArgumentList(arguments...)));
  }

  // The text without its tags, whose attributes are not read.
  [[nodiscard]] std::optional<NSString> string() const;
  [[nodiscard]] std::optional<NSString> stringWithError(Ref<NSError>* error) const;
  [[nodiscard]] std::optional<NSString> stringWithOptions(const MRKTaggedStringOptions& options,
                                                          Ref<NSError>* error = nullptr) const;

  // The text with the attributes that the options give its tags. Without options, those registered count.
  [[nodiscard]] Ref<NSAttributedString> attributedString() const;
  [[nodiscard]] Ref<NSAttributedString> attributedStringWithError(Ref<NSError>* error) const;
  [[nodiscard]] Ref<NSAttributedString> attributedStringWithOptions(const MRKTaggedStringOptions& options,
                                                                    Ref<NSError>* error = nullptr) const;

  [[nodiscard]] Ref<MRKTaggedString> copy() const;
  /// Of this class or one below, with an equal source.
  [[nodiscard]] bool isEqual(const NSObject& other) const override;
  [[nodiscard]] std::size_t hash() const override;
  [[nodiscard]] NSString description() const override;

  [[nodiscard]] static constexpr bool supportsSecureCoding() noexcept { return true; }
  /// The source, under "underlyingString"; read as empty where it is missing.
  void encodeWithCoder(NSCoder& coder) const override;
  bool initWithCoder(NSCoder& coder) override;
};

}  // namespace norvik
