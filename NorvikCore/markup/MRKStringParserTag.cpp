#include "NorvikCore/markup/MRKStringParserTag.h"

#include "NorvikCore/markup/internal/MarkupScan.h"
#include "NorvikCore/markup/internal/TagAttributes.h"
#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/values/Format.h"

namespace norvik {

MRKStringParserTag::MRKStringParserTag(std::optional<NSString> tagName, NSUInteger startLocation) {
  tagName_ = std::move(tagName);
  location_ = startLocation;
  tagAttributes_ = NSDictionary::dictionary();
}

MRKStringParserTag::~MRKStringParserTag() = default;

bool MRKStringParserTag::isEndingTag() const { return tagName() && detail::isEndingName(tagName()->view()); }

bool MRKStringParserTag::isEndedByTag(const MRKStringParserTag& other) const {
  return tagName() && other.isEndingTag() && detail::isEndedBy(tagName()->view(), other.tagName()->view());
}

NSRange MRKStringParserTag::tagRange() const {
  return {location(), endLocation() < location() ? 0 : endLocation() - location()};
}

void MRKStringParserTag::addRawTagAttributes(const NSString& raw) {
  const Ref<NSDictionary> more = detail::tagAttributesIn(raw.view());
  if (more->count() == 0) return;
  const auto all = tagAttributes()->mutableCopy();
  all->addEntriesFromDictionary(*more);
  tagAttributes_ = all->copy();
}

NSString MRKStringParserTag::description() const {
  return stringWithFormat("<%@: %p; tag: %@, isEndingTag: %@, parsedAttributes: %@>", classObject(),
                          static_cast<const void*>(this), tagName(), isEndingTag() ? "YES" : "NO", tagAttributes());
}

}  // namespace norvik
