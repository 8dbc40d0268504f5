#include "NorvikCore/markup/MRKTaggedStringOptions.h"

#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/foundation/NSStringCase.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/kernel/Mutex.h"

#include <utility>

namespace norvik {
namespace {

struct RegisteredOptions {
  Mutex mutex;
  Ref<const MRKTaggedStringOptions> options NK_GUARDED_BY(mutex);
};

RegisteredOptions& registered() {
  return kernel::madeOnce([] { return new RegisteredOptions; });
}

}  // namespace

MRKTaggedStringOptions::MRKTaggedStringOptions(const Ref<NSDictionary>& baseAttributes)
    : table_(NSDictionary::dictionary()) {
  baseAttributes_ = baseAttributes ? baseAttributes->copy() : NSDictionary::dictionary();
}

MRKTaggedStringOptions::~MRKTaggedStringOptions() = default;

Ref<MRKTaggedStringOptions> MRKTaggedStringOptions::options() { return make<MRKTaggedStringOptions>(); }

Ref<MRKTaggedStringOptions> MRKTaggedStringOptions::optionsWithBaseAttributes(const Ref<NSDictionary>& baseAttributes) {
  return make<MRKTaggedStringOptions>(baseAttributes);
}

void MRKTaggedStringOptions::registerDefaultOptions(const MRKTaggedStringOptions& options) {
  Ref<const MRKTaggedStringOptions> copy = options.copy();
  MutexLock lock(registered().mutex);
  std::swap(registered().options, copy);  // the former options are destroyed after the lock is released
}

Ref<const MRKTaggedStringOptions> MRKTaggedStringOptions::registeredOptions() {
  MutexLock lock(registered().mutex);
  if (!registered().options) registered().options = options();
  return registered().options;
}

Ref<MRKTaggedStringOptions> MRKTaggedStringOptions::defaultOptions() { return registeredOptions()->copy(); }

void MRKTaggedStringOptions::setBaseAttributes(const Ref<NSDictionary>& attributes) {
  baseAttributes_ = attributes ? attributes->copy() : NSDictionary::dictionary();
}

void MRKTaggedStringOptions::setEntry(const Ref<MRKTaggedStringAttribute>& entry, const NSString& tagName) {
  const auto changed = table_->mutableCopy();
  changed->setObject(entry, lowercaseString(tagName));
  table_ = changed->copy();
}

void MRKTaggedStringOptions::setAttributes(const Ref<NSDictionary>& attributes, const NSString& tagName) {
  const auto entry = make<MRKTaggedStringAttribute>();
  entry->setStaticDictionary(attributes);
  setEntry(entry, tagName);
}

void MRKTaggedStringOptions::setDynamicAttributes(MRKDynamicAttributes attributes, const NSString& tagName) {
  const auto entry = make<MRKTaggedStringAttribute>();
  entry->setDynamicAttributes(std::move(attributes));
  setEntry(entry, tagName);
}

void MRKTaggedStringOptions::setUnknownTagDynamicAttributes(MRKDynamicAttributes attributes) {
  if (!attributes) {
    unknownTag_ = nullptr;
    return;
  }
  const auto entry = make<MRKTaggedStringAttribute>();
  entry->setDynamicAttributes(std::move(attributes));
  unknownTag_ = entry;
}

MRKDynamicAttributes MRKTaggedStringOptions::unknownTagDynamicAttributes() const {
  return unknownTag_ ? unknownTag_->dynamicAttributes() : MRKDynamicAttributes();
}

Ref<MRKTaggedStringAttribute> MRKTaggedStringOptions::attributeForTagName(const NSString& tagName) const {
  const Value* entry = table_->find(Value(lowercaseString(tagName)));
  return entry ? entry->as<Ref<MRKTaggedStringAttribute>>() : unknownTag_;
}

void MRKTaggedStringOptions::_private_updateAttributedString(NSMutableAttributedString& text,
                                                             const NSArray& updatedWithTags) const {
  if (text.length() == 0) return;
  text.setAttributes(baseAttributes(), {0, text.length()});
  for (const MRKStringParserTag& tag : updatedWithTags.as<MRKStringParserTag>()) {
    const Ref<MRKTaggedStringAttribute> entry = tag.tagName() ? attributeForTagName(*tag.tagName()) : unknownTag_;
    if (!entry) continue;
    const Ref<NSDictionary> attributes = entry->attributesForTag(tag, text);
    if (attributes) text.addAttributes(*attributes, tag.tagRange());
  }
}

Ref<MRKTaggedStringOptions> MRKTaggedStringOptions::copy() const {
  auto copy = make<MRKTaggedStringOptions>(baseAttributes());
  copy->table_ = table_;
  copy->unknownTag_ = unknownTag_;
  return copy;
}

bool MRKTaggedStringOptions::isEqual(const NSObject& other) const {
  const auto* options = dynamic_cast<const MRKTaggedStringOptions*>(&other);
  if (!options || !other.isKindOfClass(classObject())) return false;
  const bool sameUnknown = unknownTag_ == options->unknownTag_ ||
                           (unknownTag_ && options->unknownTag_ && unknownTag_->isEqual(*options->unknownTag_));
  return sameUnknown && baseAttributes()->isEqual(*options->baseAttributes()) && table_->isEqual(*options->table_);
}

std::size_t MRKTaggedStringOptions::hash() const {
  return baseAttributes()->hash() + table_->hash() + (unknownTag_ ? unknownTag_->hash() : 0);
}

}  // namespace norvik
