// NorvikCore/markup/MRKStringParserTag.h - one parsed tag and its position in the text.
//
//   auto tag = make<MRKStringParserTag>("a", 4u);
//   tag->addRawTagAttributes("href='https://example.org' target=new flag");
//   tag->tagAttributes();      // href, target, and flag with the null marker
//
// Attributes follow the tag's name:
// - An attribute's name ends at a space or "=". A tab does not end it. Names keep their case.
// - A value follows "=". It is quoted, or ends at the next space or tab. A value that opens with one kind of quote ("
//   or ') ends at the next quote of either kind. That is deliberate: title="it's" gives "it", followed by the attribute
//   s".
// - Two or more quotes give the empty text. A missing value, or an empty value without both quotes, gives the null
//   marker.
// - "=value" without a name is ignored, deliberately.
// - If two attributes have the same name, the later one counts.
// A space is U+0020 and a tab U+0009; no other white space separates attributes.
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
  /// The position of its ending tag; 0 until that is found.
  NK_READONLY_PROPERTY(NSUInteger, endLocation)
  /// Names with texts or the null marker. Never an empty Ref; initially without entries.
  NK_READONLY_PROPERTY(Ref<NSDictionary>, tagAttributes)

  MRKStringParserTag(std::optional<NSString> tagName, NSUInteger startLocation);
  ~MRKStringParserTag() override;

  [[nodiscard]] bool isEndingTag() const;
  /// True if `other` is the ending tag of this tag, ignoring case. A tag without a name has no ending tag.
  [[nodiscard]] bool isEndedByTag(const MRKStringParserTag& other) const;
  void updateWithTag(const MRKStringParserTag& endingTag) { endLocation_ = endingTag.location(); }
  /// Empty while endLocation() is before location().
  [[nodiscard]] NSRange tagRange() const;
  /// Adds the attributes in `raw`, the text after a tag's name; see above. Linear.
  void addRawTagAttributes(const NSString& raw);

  [[nodiscard]] NSString description() const override;
};

}  // namespace norvik
