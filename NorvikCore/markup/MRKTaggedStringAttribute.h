// NorvikCore/markup/MRKTaggedStringAttribute.h - the attributes that one tag name gives, fixed or computed for each
// tag.
//
//   auto bold = make<MRKTaggedStringAttribute>();
//   bold->setStaticDictionary(NSDictionary::dictionaryWithObject(font, NSFontAttributeName));
//
// MRKTaggedStringOptions creates these objects; other code rarely needs one. Confined to one thread at a time.
#pragma once

#include "NorvikCore/markup/MRKStringParserTag.h"
#include "NorvikCore/platform/foundation/NSAttributedString.h"
#include "NorvikCore/platform/object/Block.h"

namespace norvik {

/// Computes the attributes of a tag from its name as written, the attributes written in it (for each name a text or the
/// null marker) and the attributes that the first unit of its text already has. An empty Ref adds none.
using MRKDynamicAttributes = Block<Ref<NSDictionary>(const NSString& tagName, const NSDictionary& tagAttributes,
                                                     const NSDictionary& presentAttributes)>;

class NK_EXPORT MRKTaggedStringAttribute : public NSObject {
  NK_OBJECT(MRKTaggedStringAttribute, NSObject)
  /// If set, it is used and the closure is not. Retained, not copied.
  NK_PROPERTY(Ref<NSDictionary>, staticDictionary, setStaticDictionary)
  NK_PROPERTY(MRKDynamicAttributes, dynamicAttributes, setDynamicAttributes)

  MRKTaggedStringAttribute();
  ~MRKTaggedStringAttribute() override;

  /// The attributes that the tag adds to the text under construction; an empty dictionary if there is neither
  /// dictionary nor closure. For a tag at the very end of the text, where there is no unit, the closure receives no
  /// present attributes.
  [[nodiscard]] Ref<NSDictionary> attributesForTag(const MRKStringParserTag& tag, const NSAttributedString& text) const;

  [[nodiscard]] Ref<MRKTaggedStringAttribute> copy() const;
  /// True if `other` is of this class or a subclass, its dictionary is equal or absent as here, and its closure is the
  /// same.
  [[nodiscard]] bool isEqual(const NSObject& other) const override;
  [[nodiscard]] std::size_t hash() const override;
};

}  // namespace norvik
