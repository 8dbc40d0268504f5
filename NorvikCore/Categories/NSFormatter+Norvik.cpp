#include "NorvikCore/Categories/NSFormatter+Norvik.h"

#include "NorvikCore/formatters/internal/AdditionalAttributes.h"
#include "NorvikCore/platform/object/Stated.h"

namespace norvik {
namespace {

constinit const NSString attributesKey = "nk_additionalAttributes";

const detail::CategoryProperty additionalAttributes{
    NSFormatter::staticClass(),
    {.name = attributesKey,
     .typeName = "Ref<NSDictionary>",
     .setterName = "setNk_additionalAttributes",
     .isComputed = true,
     .get = [](const NSObject& formatter) -> Value {
       return nk_additionalAttributes(static_cast<const NSFormatter&>(formatter));
     },
     .set =
         [](NSObject& formatter, const Value& attributes) {
           setNk_additionalAttributes(static_cast<NSFormatter&>(formatter), attributes.as<Ref<NSDictionary>>());
         }}};

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
