// NorvikCore/markup/MRKStringParserTag.h - one tag as the parser found it, and its place in the text.
//
//   auto tag = make<MRKStringParserTag>("a", 4u);
//   tag->addRawTagAttributes("href='https://example.org' target=new flag");
//   tag->tagAttributes();      // href, target, and flag with the null marker
//
// Attributes follow the name, one after the other:
// - A name ends at a space or "=". A tab does not end it. Names keep their case.
// - A value follows "=", in quotes or up to the next space or tab. What opens with one kind of quote (" or ')
//   ends at the next quote of either kind. That is deliberate: title="it's" is "it", and then the attribute s".
// - Two quotes or more are the empty text. No value, or an empty one without both quotes, is the null marker.
// - "=value" without a name is left out. That is deliberate too.
// - Of two attributes of one name the later counts.
// Spaces and tabs are U+0020 and U+0009 alone.
//
// Positions are UTF-16 units of the text without tags. Confined to one thread at a time.
#pragma once

#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/NSRange.h"

#include <optional>

namespace norvik {

class NK_EXPORT MRKStringParserTag : public NSObject {
  NK_OBJECT(MRKStringParserTag, NSObject)
  /// As written after "<", with the "/" of an ending tag; absent for "<>".
  NK_READONLY_PROPERTY(std::optional<NSString>, tagName)
  NK_READONLY_PROPERTY(NSUInteger, location)
  /// Where its ending tag stands; 0 until that is found.
  NK_READONLY_PROPERTY(NSUInteger, endLocation)
  /// Names, and texts or the null marker. Never empty Ref; without entries at first.
  NK_READONLY_PROPERTY(Ref<NSDictionary>, tagAttributes)

  MRKStringParserTag(std::optional<NSString> tagName, NSUInteger startLocation);
  ~MRKStringParserTag() override;

  [[nodiscard]] bool isEndingTag() const;
  /// `other` is this tag's ending tag, whatever the case of the names. A tag without a name has none.
  [[nodiscard]] bool isEndedByTag(const MRKStringParserTag& other) const;
  void updateWithTag(const MRKStringParserTag& endingTag) { endLocation_ = endingTag.location(); }
  /// Empty while endLocation() is before location().
  [[nodiscard]] NSRange tagRange() const;
  /// Adds the attributes in the text behind a tag's name; see above. Linear.
  void addRawTagAttributes(const NSString& raw);

  [[nodiscard]] NSString description() const override;
};

}  // namespace norvik
