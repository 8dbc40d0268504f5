#include "NorvikCore/formatters/internal/AdditionalAttributes.h"

#include "NorvikCore/platform/object/AssociatedObjects.h"

namespace norvik::detail {
namespace {

constexpr char attributesKey = 0;  // its address

}  // namespace

Ref<NSDictionary> additionalAttributes(const NSFormatter& formatter) {
  return associatedValue(formatter, &attributesKey).as<Ref<NSDictionary>>();
}

void setAdditionalAttributes(NSFormatter& formatter, const Ref<NSDictionary>& attributes) {
  setAssociatedValue(formatter, &attributesKey, attributes);
}

Ref<NSAttributedString> customAttributedString(const NSFormatter& formatter, const Ref<NSAttributedString>& text) {
  const Ref<NSDictionary> attributes = additionalAttributes(formatter);
  if (!text || !attributes || attributes->count() == 0) return text;
  const auto custom = text->mutableCopy();
  custom->addAttributes(*attributes, {0, custom->length()});
  return custom;
}

}  // namespace norvik::detail
