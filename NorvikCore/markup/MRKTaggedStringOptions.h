// NorvikCore/markup/MRKTaggedStringOptions.h - which attributes the tags of marked-up text give.
//
//   auto options = MRKTaggedStringOptions::optionsWithBaseAttributes(body);
//   options->setAttributes(NSDictionary::dictionaryWithObject(boldFont, NSFontAttributeName), "b");
//   options->setDynamicAttributes([](const NSString&, const NSDictionary& written, const NSDictionary&) {
//     return NSDictionary::dictionaryWithObject(written["href"], NSLinkAttributeName);
//   }, "a");
//   MRKTaggedString::stringWithString("Pay <b>now</b>")->attributedStringWithOptions(*options);
//
// Names of tags are told apart without regard to case, by Unicode's full lower case. Where tags are nested the inner
// one's attributes win. A tag whose name has no entry adds nothing, unless there is a closure for unknown tags.
//
// The tag closed last is asked first, so a closure sees what the tags around its own gave. The attributes of an empty
// tag cover nothing, but its closure is called: with those of the unit behind it, or with none where the text ends
// there. Entries are not asked for a text that is empty without its tags.
//
// Closures run on the thread that parses, under no lock; what one raises ends the parsing and passes.
// Threads: confined, but the registered options are synchronised: any thread may register and parse with them.
#pragma once

#include "NorvikCore/markup/MRKTaggedStringAttribute.h"
#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/collections/NSDictionary.h"

namespace norvik {

class NK_EXPORT MRKTaggedStringOptions : public NSObject {
  NK_OBJECT(MRKTaggedStringOptions, NSObject)
  /// Over the whole text, under those of the tags. Never an empty Ref: setting one sets a dictionary without entries. A
  /// mutable dictionary is copied.
  NK_COMPUTED_PROPERTY_WITH_SETTER(Ref<NSDictionary>, baseAttributes, setBaseAttributes)

  explicit MRKTaggedStringOptions(const Ref<NSDictionary>& baseAttributes = nullptr);
  ~MRKTaggedStringOptions() override;

  [[nodiscard]] static Ref<MRKTaggedStringOptions> options();
  [[nodiscard]] static Ref<MRKTaggedStringOptions> optionsWithBaseAttributes(const Ref<NSDictionary>& baseAttributes);

  /// The options of every parsing that is given none. They are copied: later changes of these here do not reach them.
  static void registerDefaultOptions(const MRKTaggedStringOptions& options);
  /// A copy of those registered; of empty ones until some are.
  [[nodiscard]] static Ref<MRKTaggedStringOptions> defaultOptions();

  [[nodiscard]] const Ref<NSDictionary>& baseAttributes() const noexcept { return baseAttributes_; }
  void setBaseAttributes(const Ref<NSDictionary>& attributes);
  /// In place of what the name meant before, fixed or computed. The dictionary is kept, not copied.
  void setAttributes(const Ref<NSDictionary>& attributes, const NSString& tagName);
  void setDynamicAttributes(MRKDynamicAttributes attributes, const NSString& tagName);
  /// For every name without an entry of its own; an empty Block for none.
  void setUnknownTagDynamicAttributes(MRKDynamicAttributes attributes);
  [[nodiscard]] MRKDynamicAttributes unknownTagDynamicAttributes() const;

  /// The entry of that name, or the one of unknown tags; empty where there is neither.
  [[nodiscard]] Ref<MRKTaggedStringAttribute> attributeForTagName(const NSString& tagName) const;

  /// Sets the base attributes over the whole text, and nothing else stays; then adds those of each MRKStringParserTag,
  /// in the order given. Does nothing to an empty text. The time of each tag is that of a change of its range.
  void _private_updateAttributedString(NSMutableAttributedString& text, const NSArray& updatedWithTags) const;

  /// Independent: later changes of either do not reach the other. What is in them is shared.
  [[nodiscard]] Ref<MRKTaggedStringOptions> copy() const;
  /// Of this class or one below, with equal base attributes, names and entries.
  [[nodiscard]] bool isEqual(const NSObject& other) const override;
  [[nodiscard]] std::size_t hash() const override;

 private:
  friend class MRKTaggedString;
  /// The registered options themselves, which nothing changes.
  [[nodiscard]] static Ref<const MRKTaggedStringOptions> registeredOptions();
  void setEntry(const Ref<MRKTaggedStringAttribute>& entry, const NSString& tagName);

  Ref<NSDictionary> baseAttributes_;
  Ref<NSDictionary> table_;  ///< lower-cased names and their entries; replaced as a whole, so copies may share it
  Ref<MRKTaggedStringAttribute> unknownTag_;
};

}  // namespace norvik
