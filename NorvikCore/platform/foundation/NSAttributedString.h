// NorvikCore/platform/foundation/NSAttributedString.h - text with attributes over ranges of it.
//
//   auto red = NSDictionary::dictionaryWith({{NSForegroundColorAttributeName, colour}});
//   auto text = NSMutableAttributedString::attributedStringWithString("1,234.50");
//   text->addAttributes(*red, {0, 5});
//   NSRange run;
//   text->attributesAtIndex(2, &run);          // red's attributes; run is {0, 5}
//
// Attributes are a dictionary of names and values; every unit of the text has one, mostly shared with its neighbours.
// Ranges and indexes count UTF-16 units; one beyond the text raises NSRangeException. Neighbours with equal attributes
// make one run.
//
// Threads: any number may read; an NSMutableAttributedString is confined to one at a time.
// Cost:    finding a run takes the logarithm of the number of runs; a change takes their number.
#pragma once

#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/object/NSCoder.h"
#include "NorvikCore/platform/values/NSRange.h"

#include <vector>

namespace norvik {

/// Names of attributes.
extern NK_EXPORT const NSString NSFontAttributeName;             ///< an NSFont
extern NK_EXPORT const NSString NSForegroundColorAttributeName;  ///< an NSColor
extern NK_EXPORT const NSString NSBackgroundColorAttributeName;  ///< an NSColor
extern NK_EXPORT const NSString NSUnderlineStyleAttributeName;   ///< an integer, 0 for none
extern NK_EXPORT const NSString NSLinkAttributeName;             ///< an address as text

class NSMutableAttributedString;

class NK_EXPORT NSAttributedString : public NSObject, public NSCoding {
  NK_OBJECT(NSAttributedString, NSObject)
  NK_CODING

  NSAttributedString() = default;
  /// The whole text with these attributes; an empty Ref is none.
  explicit NSAttributedString(NSString string, const Ref<NSDictionary>& attributes = nullptr);
  ~NSAttributedString() override;

  [[nodiscard]] static Ref<NSAttributedString> attributedStringWithString(
      NSString string, const Ref<NSDictionary>& attributes = nullptr);

  [[nodiscard]] const NSString& string() const noexcept { return string_; }
  [[nodiscard]] NSUInteger length() const { return string_.length(); }

  /// The attributes there, empty but never absent, and the whole run of units that have just these.
  [[nodiscard]] Ref<NSDictionary> attributesAtIndex(NSUInteger index, NSRange* run = nullptr) const;
  /// Absent where the unit has no attribute of that name.
  [[nodiscard]] Value attribute_atIndex(const NSString& name, NSUInteger index) const;
  [[nodiscard]] Ref<NSAttributedString> attributedSubstringFromRange(NSRange range) const;

  [[nodiscard]] bool isEqualToAttributedString(const NSAttributedString& other) const { return isEqual(other); }
  /// Same text, and equal attributes everywhere.
  [[nodiscard]] bool isEqual(const NSObject& other) const override;
  [[nodiscard]] std::size_t hash() const override;
  /// Each run's text, followed by its attributes.
  [[nodiscard]] NSString description() const override;

  [[nodiscard]] Ref<NSMutableAttributedString> mutableCopy() const;

  /// The attributes go with it, so all their values must be codable.
  void encodeWithCoder(NSCoder& coder) const override;
  bool initWithCoder(NSCoder& coder) override;

 protected:
  struct Run {
    NSUInteger end;
    Ref<NSDictionary> attributes;
  };
  /// The run that holds the unit, or the one behind the last where index is the length.
  [[nodiscard]] std::size_t runAt(NSUInteger index) const noexcept;
  void checkRange(NSRange range) const;

  NSString string_;
  std::vector<Run> runs_;  ///< none for an empty text; each begins where the one before ends
};

class NK_EXPORT NSMutableAttributedString : public NSAttributedString {
  NK_OBJECT(NSMutableAttributedString, NSAttributedString)
  NK_CODING

  using NSAttributedString::NSAttributedString;
  ~NSMutableAttributedString() override;

  [[nodiscard]] static Ref<NSMutableAttributedString> attributedStringWithString(
      NSString string, const Ref<NSDictionary>& attributes = nullptr);

  /// These replace attributes of the same name in the range; others there stay.
  void addAttributes(const NSDictionary& attributes, NSRange range);
  void addAttribute(const NSString& name, const Value& value, NSRange range);
  void removeAttribute(const NSString& name, NSRange range);
  /// These alone; an empty Ref leaves none.
  void setAttributes(const Ref<NSDictionary>& attributes, NSRange range);

  void appendAttributedString(const NSAttributedString& text);
  /// The new text has the attributes of the first unit it replaces, or of the unit before where it replaces none.
  void replaceCharactersInRange(NSRange range, const NSString& text);
  void deleteCharactersInRange(NSRange range) { replaceCharactersInRange(range, NSString()); }

 private:
  template <class Change>
  void changeRuns(NSRange range, Change&& change);
  void splitAt(NSUInteger index);
  void joinEqualRuns();
};

}  // namespace norvik
