#include "NorvikCore/Categories/NSFormatter+Norvik.h"

#include "NorvikCore/formatters/internal/AdditionalAttributes.h"
#include "NorvikCore/platform/object/AnnouncedChange.h"

namespace norvik {
namespace {

constinit const NSString attributesKey = "nk_additionalAttributes";

NK_CATEGORY_PROPERTY(NSFormatter, Ref<NSDictionary>, nk_additionalAttributes, setNk_additionalAttributes)

}  // namespace

Ref<NSDictionary> nk_additionalAttributes(const NSFormatter& formatter) {
  return detail::additionalAttributes(formatter);
}

void setNk_additionalAttributes(NSFormatter& formatter, const Ref<NSDictionary>& attributes) {
  formatter.willChangeValueForKey(attributesKey);
  detail::setAdditionalAttributes(formatter, attributes);
  formatter.didChangeValueForKey(attributesKey);
}

Ref<NSAttributedString> nk_customAttributedString(const NSFormatter& formatter, const Ref<NSAttributedString>& text) {
  return detail::customAttributedString(formatter, text);
}

}  // namespace norvik
