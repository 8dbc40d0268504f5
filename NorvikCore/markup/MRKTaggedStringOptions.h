// NorvikCore/markup/MRKTaggedStringOptions.h - the attributes that the tags of marked-up text give.
//
//   auto options = MRKTaggedStringOptions::optionsWithBaseAttributes(body);
//   options->setAttributes(NSDictionary::dictionaryWithObject(boldFont, NSFontAttributeName), "b");
//   options->setDynamicAttributes([](const NSString&, const NSDictionary& written, const NSDictionary&) {
//     return NSDictionary::dictionaryWithObject(written["href"], NSLinkAttributeName);
//   }, "a");
//   MRKTaggedString::stringWithString("Pay <b>now</b>")->attributedStringWithOptions(*options);
//
// Tag names are compared without regard to case, by Unicode's full lower case. If tags are nested, the inner tag's
// attributes replace those of the same name. A tag whose name has no entry adds nothing, unless there is a closure for
// unknown tags.
//
// Entries are applied in reverse order of the closing tags, so a closure sees the attributes of the tags around its
// own. The attributes of an empty tag cover nothing, but its closure is called: with the attributes of the unit after
// the tag, or with none if the text ends there. No entry is used if the text is empty without its tags.
//
// Closures run on the thread that parses, with no lock held. An exception of a closure ends the parsing and passes.
// Threads: confined, except that the registered options are synchronised: any thread may register options and parse
//          with them.
#pragma once

#include "NorvikCore/markup/MRKTaggedStringAttribute.h"
#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/collections/NSDictionary.h"

namespace norvik {

class NK_EXPORT MRKTaggedStringOptions : public NSObject {
  NK_OBJECT(MRKTaggedStringOptions, NSObject)
  /// Apply to the whole text, below the attributes of the tags. Never an empty Ref: setting one sets a dictionary
  /// without entries. A mutable dictionary is copied.
  NK_COMPUTED_PROPERTY_WITH_SETTER(Ref<NSDictionary>, baseAttributes, setBaseAttributes)

  explicit MRKTaggedStringOptions(const Ref<NSDictionary>& baseAttributes = nullptr);
  ~MRKTaggedStringOptions() override;

  [[nodiscard]] static Ref<MRKTaggedStringOptions> options();
  [[nodiscard]] static Ref<MRKTaggedStringOptions> optionsWithBaseAttributes(const Ref<NSDictionary>& baseAttributes);

  /// Sets the options of every parsing that is given none. They are copied: later changes of `options` do not affect
  /// the copy.
  static void registerDefaultOptions(const MRKTaggedStringOptions& options);
  /// A copy of the registered options; new empty options if none were registered.
  [[nodiscard]] static Ref<MRKTaggedStringOptions> defaultOptions();

  [[nodiscard]] const Ref<NSDictionary>& baseAttributes() const noexcept { return baseAttributes_; }
  void setBaseAttributes(const Ref<NSDictionary>& attributes);
  /// Replaces the name's earlier entry, fixed or computed. The dictionary is retained, not copied.
  void setAttributes(const Ref<NSDictionary>& attributes, const NSString& tagName);
  void setDynamicAttributes(MRKDynamicAttributes attributes, const NSString& tagName);
  /// For every name without an entry of its own. An empty Block removes the closure.
  void setUnknownTagDynamicAttributes(MRKDynamicAttributes attributes);
  [[nodiscard]] MRKDynamicAttributes unknownTagDynamicAttributes() const;

  /// The name's entry, otherwise the entry for unknown tags; empty if there is neither.
  [[nodiscard]] Ref<MRKTaggedStringAttribute> attributeForTagName(const NSString& tagName) const;

  /// Replaces all attributes of the text by the base attributes, then adds those of each MRKStringParserTag, in the
  /// order given. Does nothing to an empty text. The cost per tag is that of changing attributes of its range.
  void _private_updateAttributedString(NSMutableAttributedString& text, const NSArray& updatedWithTags) const;

  /// An independent copy: later changes of one do not affect the other. The dictionaries and entries are shared.
  [[nodiscard]] Ref<MRKTaggedStringOptions> copy() const;
  /// True if `other` is of this class or a subclass, with equal base attributes, names and entries.
  [[nodiscard]] bool isEqual(const NSObject& other) const override;
  [[nodiscard]] std::size_t hash() const override;

 private:
  friend class MRKTaggedString;
  /// The registered options themselves; they are never changed.
  [[nodiscard]] static Ref<const MRKTaggedStringOptions> registeredOptions();
  void setEntry(const Ref<MRKTaggedStringAttribute>& entry, const NSString& tagName);

  Ref<NSDictionary> baseAttributes_;
  Ref<NSDictionary> table_;  ///< lower-cased names and entries; replaced as a whole, so copies may share it
  Ref<MRKTaggedStringAttribute> unknownTag_;
};

}  // namespace norvik
