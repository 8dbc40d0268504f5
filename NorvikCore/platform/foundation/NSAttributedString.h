// NorvikCore/platform/foundation/NSAttributedString.h - text with attributes over ranges of it.
//
//   auto red = NSDictionary::dictionaryWith({{NSForegroundColorAttributeName, colour}});
//   auto text = NSMutableAttributedString::attributedStringWithString("1,234.50");
//   text->addAttributes(*red, {0, 5});
//   NSRange run;
//   text->attributesAtIndex(2, &run);                       // red's attributes; run is {0, 5}
//   for (const auto& [range, attributes] : *text) {}        // {0, 5} in red, then {5, 3} without attributes
//
// Attributes are a dictionary of names and values; every unit of the text has one, mostly shared with its neighbours.
// Ranges and indexes count UTF-16 units, also within a pair of halves; one beyond the text raises NSRangeException.
// Neighbours with equal attributes make one run.
//
// A dictionary given is copied where it can change. The values in it are shared: where one changes its equality later,
// runs are compared as they were.
//
// Threads: any number may read an NSAttributedString; an NSMutableAttributedString is confined to one at a time.
// Cost:    finding, adding or removing a run takes the logarithm of the number of runs, a change of a range the number
//          of runs in it. Text is appended in proportion to what is appended; a change elsewhere moves the text behind
//          it.
#pragma once

#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/object/NSCoder.h"
#include "NorvikCore/platform/values/NSMutableString.h"
#include "NorvikCore/platform/values/NSRange.h"

#include <cstddef>
#include <iterator>
#include <vector>

namespace norvik {

/// Names of attributes.
extern NK_EXPORT const NSString NSFontAttributeName;             ///< an NSFont
extern NK_EXPORT const NSString NSForegroundColorAttributeName;  ///< an NSColor
extern NK_EXPORT const NSString NSBackgroundColorAttributeName;  ///< an NSColor
extern NK_EXPORT const NSString NSUnderlineStyleAttributeName;   ///< an integer, 0 for none
extern NK_EXPORT const NSString NSLinkAttributeName;             ///< an address as text

class NSMutableAttributedString;

namespace detail {
class AttributeRuns;
}

/// So many units one after the other, and the attributes of all of them.
struct AttributeRun {
  NSUInteger length = 0;
  Ref<NSDictionary> attributes;  ///< empty for none
};

class NK_EXPORT NSAttributedString : public NSObject, public NSCoding {
  NK_OBJECT(NSAttributedString, NSObject)
  NK_CODING

  NSAttributedString();
  /// The whole text with these attributes; an empty Ref is none.
  explicit NSAttributedString(NSString string, const Ref<NSDictionary>& attributes = nullptr);
  /// The text in runs. Raises NSRangeException where their lengths are not that of the text. Linear.
  NSAttributedString(NSString string, std::vector<AttributeRun> runs);
  /// For the library itself, which alone makes such runs. Their lengths are that of the text.
  NSAttributedString(NSString string, detail::AttributeRuns runs);
  ~NSAttributedString() override;

  [[nodiscard]] static Ref<NSAttributedString> attributedStringWithString(
      NSString string, const Ref<NSDictionary>& attributes = nullptr);

  [[nodiscard]] virtual NSString string() const { return string_; }
  [[nodiscard]] NSUInteger length() const noexcept;

  /// The attributes there, empty but never absent, and the whole run of units that have just these.
  [[nodiscard]] Ref<NSDictionary> attributesAtIndex(NSUInteger index, NSRange* run = nullptr) const;
  /// Absent where the unit has no attribute of that name.
  [[nodiscard]] Value attribute_atIndex(const NSString& name, NSUInteger index) const;
  [[nodiscard]] Ref<NSAttributedString> attributedSubstringFromRange(NSRange range) const;

  /// A run as a loop over the text gives it.
  struct Run {
    NSRange range;
    Ref<NSDictionary> attributes;
  };
  class Iterator;
  /// The runs in order. Where an NSMutableAttributedString is changed under the loop, the loop raises
  /// NSGenericException at its next step. The loop does not keep the text: hold it by a Ref.
  [[nodiscard]] Iterator begin() const;
  [[nodiscard]] Iterator end() const;

  [[nodiscard]] bool isEqualToAttributedString(const NSAttributedString& other) const { return isEqual(other); }
  /// Same text, and equal attributes everywhere, mutable or not.
  [[nodiscard]] bool isEqual(const NSObject& other) const override;
  [[nodiscard]] std::size_t hash() const override;
  /// Each run's text, followed by its attributes.
  [[nodiscard]] NSString description() const override;

  /// A text that does not change: this one, unless it is an NSMutableAttributedString.
  [[nodiscard]] virtual Ref<NSAttributedString> copy() const;
  [[nodiscard]] Ref<NSMutableAttributedString> mutableCopy() const;

  /// The attributes go with it, so all their values must be codable.
  void encodeWithCoder(NSCoder& coder) const override;
  bool initWithCoder(NSCoder& coder) override;

 protected:
  void checkRange(NSRange range) const;
  [[nodiscard]] static std::vector<AttributeRun> runsOf(const NSAttributedString& text);

  mutable NSString string_;
  detail::AttributeRuns* runs_;  ///< never null
  std::size_t changes_ = 0;      ///< how often an NSMutableAttributedString was changed
};

class NSAttributedString::Iterator {
 public:
  using iterator_category = std::input_iterator_tag;
  using value_type = Run;
  using difference_type = std::ptrdiff_t;
  using pointer = const Run*;
  using reference = const Run&;

  reference operator*() const noexcept { return run_; }
  pointer operator->() const noexcept { return &run_; }
  NK_EXPORT Iterator& operator++();
  void operator++(int) { ++*this; }
  friend bool operator==(const Iterator& a, const Iterator& b) noexcept {
    return a.run_.range.location == b.run_.range.location;
  }

 private:
  friend class NSAttributedString;
  Iterator(const NSAttributedString& text, NSUInteger from);

  const NSAttributedString* text_;
  std::size_t changes_;
  Run run_;
};

class NK_EXPORT NSMutableAttributedString : public NSAttributedString {
  NK_OBJECT(NSMutableAttributedString, NSAttributedString)
  NK_CODING

  using NSAttributedString::NSAttributedString;
  ~NSMutableAttributedString() override;

  [[nodiscard]] static Ref<NSMutableAttributedString> attributedStringWithString(
      NSString string, const Ref<NSDictionary>& attributes = nullptr);

  /// After a change of the text the first call copies it, once.
  [[nodiscard]] NSString string() const override;

  /// These replace attributes of the same name in the range; others there stay.
  void addAttributes(const NSDictionary& attributes, NSRange range);
  void addAttribute(const NSString& name, const Value& value, NSRange range);
  void removeAttribute(const NSString& name, NSRange range);
  /// These alone; an empty Ref leaves none.
  void setAttributes(const Ref<NSDictionary>& attributes, NSRange range);

  // A text that is put in keeps its attributes; it may be this text itself.
  void appendAttributedString(const NSAttributedString& text);
  void insertAttributedString(const NSAttributedString& text, NSUInteger index);
  void replaceCharactersInRange(NSRange range, const NSAttributedString& text);
  void setAttributedString(const NSAttributedString& text);
  /// The new text has the attributes of the first unit it replaces, or of the unit before where it replaces none; at
  /// the very start, of the unit behind it, and in an empty text none.
  void replaceCharactersInRange(NSRange range, const NSString& text);
  void deleteCharactersInRange(NSRange range);

  /// Changes up to the matching endEditing() are one edit: edited() is called once, after the outermost. Everything
  /// that is read in between sees each change at once. An endEditing() too many raises
  /// NSInternalInconsistencyException.
  void beginEditing();
  void endEditing();

  [[nodiscard]] Ref<NSAttributedString> copy() const override;

 protected:
  /// Called after each edit, for a subclass that shows the text. `range` holds all that is new, in units of the present
  /// text; `changeInLength` is how many units it has more than before. This one does nothing.
  virtual void edited(NSRange range, NSInteger changeInLength);

 private:
  void replace(NSRange range, const NSString& text, std::vector<AttributeRun> runs);
  template <class Change>
  void changeRuns(NSRange range, Change&& change);
  void noteEdit(NSRange replaced, NSUInteger newLength);

  mutable NSMutableString buffer_;
  mutable bool bufferIsCurrent_ = false;  ///< buffer_ holds the text; else string_ does
  mutable bool stringIsCurrent_ = true;
  std::size_t batches_ = 0;
  bool wasEdited_ = false;
  NSRange editedRange_;
  NSInteger changeInLength_ = 0;
};

}  // namespace norvik
