#include "NorvikCore/markup/MRKTaggedString.h"

#include "NorvikCore/markup/MRKStringParser.h"

#include <utility>

namespace norvik {

MRKTaggedString::MRKTaggedString(std::optional<NSString> string) {
  underlyingString_ = std::move(string).value_or(NSString());
}

MRKTaggedString::~MRKTaggedString() = default;

Ref<MRKTaggedString> MRKTaggedString::stringWithString(std::optional<NSString> string) {
  return make<MRKTaggedString>(std::move(string));
}

std::optional<NSString> MRKTaggedString::string() const { return stringWithError(nullptr); }

std::optional<NSString> MRKTaggedString::stringWithError(Ref<NSError>* error) const {
  const auto options = MRKTaggedStringOptions::registeredOptions();
  return stringWithOptions(*options, error);
}

std::optional<NSString> MRKTaggedString::stringWithOptions(const MRKTaggedStringOptions& options,
                                                           Ref<NSError>* error) const {
  const Class& plain = Value(NSString()).classObject();
  return MRKStringParser::stringWithTaggedString(*this, options, plain, error).as<std::optional<NSString>>();
}

Ref<NSAttributedString> MRKTaggedString::attributedString() const { return attributedStringWithError(nullptr); }

Ref<NSAttributedString> MRKTaggedString::attributedStringWithError(Ref<NSError>* error) const {
  const auto options = MRKTaggedStringOptions::registeredOptions();
  return attributedStringWithOptions(*options, error);
}

Ref<NSAttributedString> MRKTaggedString::attributedStringWithOptions(const MRKTaggedStringOptions& options,
                                                                     Ref<NSError>* error) const {
  return MRKStringParser::stringWithTaggedString(*this, options, NSAttributedString::staticClass(), error)
      .as<Ref<NSAttributedString>>();
}

Ref<MRKTaggedString> MRKTaggedString::copy() const { return make<MRKTaggedString>(underlyingString()); }

bool MRKTaggedString::isEqual(const NSObject& other) const {
  const auto* tagged = dynamic_cast<const MRKTaggedString*>(&other);
  return tagged && other.isKindOfClass(classObject()) && underlyingString() == tagged->underlyingString();
}

std::size_t MRKTaggedString::hash() const { return std::hash<NSString>()(underlyingString()); }

NSString MRKTaggedString::description() const {
  return norvik::stringWithFormat("<%@: %p; underlying: \"%@\">", classObject(), static_cast<const void*>(this),
                                  underlyingString());
}

void MRKTaggedString::encodeWithCoder(NSCoder& coder) const {
  coder.encodeObject(underlyingString(), "underlyingString");
}

bool MRKTaggedString::initWithCoder(NSCoder& coder) {
  underlyingString_ = coder.decode<std::optional<NSString>>("underlyingString").value_or(NSString());
  return true;
}

}  // namespace norvik
