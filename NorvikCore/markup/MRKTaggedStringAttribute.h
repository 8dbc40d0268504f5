// NorvikCore/markup/MRKTaggedStringAttribute.h - what one tag's name means: attributes, fixed or computed for each tag.
//
//   auto bold = make<MRKTaggedStringAttribute>();
//   bold->setStaticDictionary(NSDictionary::dictionaryWithObject(font, NSFontAttributeName));
//
// MRKTaggedStringOptions makes these; few others need one. Confined to one thread at a time.
#pragma once

#include "NorvikCore/markup/MRKStringParserTag.h"
#include "NorvikCore/platform/foundation/NSAttributedString.h"
#include "NorvikCore/platform/object/Block.h"

namespace norvik {

/// Computes the attributes of a tag from its name as written, the attributes in it (a text, or the null marker, for
/// each name) and what the first unit of its text has already. An empty Ref adds none.
using MRKDynamicAttributes = Block<Ref<NSDictionary>(const NSString& tagName, const NSDictionary& tagAttributes,
                                                     const NSDictionary& presentAttributes)>;

class NK_EXPORT MRKTaggedStringAttribute : public NSObject {
  NK_OBJECT(MRKTaggedStringAttribute, NSObject)
  /// Where there is one, it counts and not the closure. Kept, not copied.
  NK_PROPERTY(Ref<NSDictionary>, staticDictionary, setStaticDictionary)
  NK_PROPERTY(MRKDynamicAttributes, dynamicAttributes, setDynamicAttributes)

  MRKTaggedStringAttribute();
  ~MRKTaggedStringAttribute() override;

  /// What the tag adds to the text under construction; where there is neither dictionary nor closure, an empty one. A
  /// closure of a tag at the very end of the text, where there is no unit, is given no present attributes.
  [[nodiscard]] Ref<NSDictionary> attributesForTag(const MRKStringParserTag& tag, const NSAttributedString& text) const;

  [[nodiscard]] Ref<MRKTaggedStringAttribute> copy() const;
  /// Of this class or one below, with an equal dictionary or none as here, and the very same closure.
  [[nodiscard]] bool isEqual(const NSObject& other) const override;
  [[nodiscard]] std::size_t hash() const override;
};

}  // namespace norvik
