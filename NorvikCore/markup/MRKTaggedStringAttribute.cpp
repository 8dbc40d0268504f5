#include "NorvikCore/markup/MRKTaggedStringAttribute.h"

#include <functional>

namespace norvik {

MRKTaggedStringAttribute::MRKTaggedStringAttribute() = default;
MRKTaggedStringAttribute::~MRKTaggedStringAttribute() = default;

Ref<NSDictionary> MRKTaggedStringAttribute::attributesForTag(const MRKStringParserTag& tag,
                                                             const NSAttributedString& text) const {
  if (staticDictionary()) return staticDictionary();
  if (!dynamicAttributes()) return NSDictionary::dictionary();
  const auto present =
      tag.location() < text.length() ? text.attributesAtIndex(tag.location()) : NSDictionary::dictionary();
  return dynamicAttributes()(tag.tagName().value_or(NSString()), *tag.tagAttributes(), *present);
}

Ref<MRKTaggedStringAttribute> MRKTaggedStringAttribute::copy() const {
  auto copy = make<MRKTaggedStringAttribute>();
  copy->staticDictionary_ = staticDictionary();
  copy->dynamicAttributes_ = dynamicAttributes();
  return copy;
}

bool MRKTaggedStringAttribute::isEqual(const NSObject& other) const {
  const auto* attribute = dynamic_cast<const MRKTaggedStringAttribute*>(&other);
  if (!attribute || !other.isKindOfClass(classObject())) return false;
  const Ref<NSDictionary> mine = staticDictionary(), its = attribute->staticDictionary();
  return (mine == its || (mine && its && mine->isEqual(*its))) && dynamicAttributes() == attribute->dynamicAttributes();
}

std::size_t MRKTaggedStringAttribute::hash() const {
  const Ref<NSDictionary> fixed = staticDictionary();
  return (fixed ? fixed->hash() : 0) + std::hash<const void*>()(dynamicAttributes().object().get());
}

}  // namespace norvik
