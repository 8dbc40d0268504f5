// NorvikCore/platform/foundation/NSAttributedString.h - text with attributes over ranges of it.
//
//   auto red = NSDictionary::dictionaryWith({{NSForegroundColorAttributeName, colour}});
//   auto text = NSMutableAttributedString::attributedStringWithString("1,234.50");
//   text->addAttributes(*red, {0, 5});
//   NSRange run;
//   text->attributesAtIndex(2, &run);                       // red's attributes; run is {0, 5}
//   for (const auto& [range, attributes] : *text) {}        // {0, 5} in red, then {5, 3} without attributes
//
// Each UTF-16 unit of the text has a dictionary of attributes (names and values). Neighbouring units with equal
// attributes form one run and share the dictionary. Ranges and indexes count UTF-16 units and may split a surrogate
// pair. A range or index beyond the text raises NSRangeException.
//
// A mutable dictionary is copied when it is passed in. Its values are shared. Runs are compared when the text is
// created or edited: if a value becomes equal or unequal to another one later, the existing runs are neither joined nor
// split.
//
// Threads: any number of threads may read an NSAttributedString; an NSMutableAttributedString is confined to one thread
//          at a time.
// Cost:    finding, adding or removing a run takes time logarithmic in the number of runs; changing a range takes time
//          linear in the number of runs in it. Appending takes time linear in the appended text. A change elsewhere
//          also moves the text behind it.
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
extern NK_EXPORT const NSString NSLinkAttributeName;             ///< a URL as text

class NSMutableAttributedString;

namespace detail {
class AttributeRuns;
}

/// A number of consecutive units that have the same attributes.
struct AttributeRun {
  NSUInteger length = 0;
  Ref<NSDictionary> attributes;  ///< an empty Ref means no attributes
};

class NK_EXPORT NSAttributedString : public NSObject, public NSCoding {
  NK_OBJECT(NSAttributedString, NSObject)
  NK_CODING

  NSAttributedString();
  /// The whole text has these attributes; an empty Ref means none.
  explicit NSAttributedString(NSString string, const Ref<NSDictionary>& attributes = nullptr);
  /// The text in runs. Raises NSRangeException unless their lengths add up to the length of the text. Linear.
  NSAttributedString(NSString string, std::vector<AttributeRun> runs);
  /// For the library itself, because only the library can make such runs. Their lengths must add up to the text's.
  NSAttributedString(NSString string, detail::AttributeRuns runs);
  ~NSAttributedString() override;

  [[nodiscard]] static Ref<NSAttributedString> attributedStringWithString(
      NSString string, const Ref<NSDictionary>& attributes = nullptr);

  [[nodiscard]] virtual NSString string() const { return string_; }
  [[nodiscard]] NSUInteger length() const noexcept;

  /// The attributes of the unit (may be empty, never absent); `run` is set to the whole run that the unit belongs to.
  [[nodiscard]] Ref<NSDictionary> attributesAtIndex(NSUInteger index, NSRange* run = nullptr) const;
  /// Absent if the unit has no attribute of that name.
  [[nodiscard]] Value attribute_atIndex(const NSString& name, NSUInteger index) const;
  [[nodiscard]] Ref<NSAttributedString> attributedSubstringFromRange(NSRange range) const;

  /// One run, as a loop over the text yields it.
  struct Run {
    NSRange range;
    Ref<NSDictionary> attributes;
  };
  class Iterator;
  /// The runs in order. If an NSMutableAttributedString is changed during the loop, the next step of the loop raises
  /// NSGenericException. The loop does not retain the text: hold it by a Ref.
  [[nodiscard]] Iterator begin() const;
  [[nodiscard]] Iterator end() const;

  [[nodiscard]] bool isEqualToAttributedString(const NSAttributedString& other) const { return isEqual(other); }
  /// True if the texts are the same and the attributes are equal everywhere. Mutability does not matter.
  [[nodiscard]] bool isEqual(const NSObject& other) const override;
  [[nodiscard]] std::size_t hash() const override;
  /// Each run's text, followed by its attributes.
  [[nodiscard]] NSString description() const override;

  /// An immutable text: this one, unless it is an NSMutableAttributedString.
  [[nodiscard]] virtual Ref<NSAttributedString> copy() const;
  [[nodiscard]] Ref<NSMutableAttributedString> mutableCopy() const;

  /// The attributes are archived too, so each of their values must be one that can be archived.
  void encodeWithCoder(NSCoder& coder) const override;
  bool initWithCoder(NSCoder& coder) override;

 protected:
  void checkRange(NSRange range) const;
  [[nodiscard]] static std::vector<AttributeRun> runsOf(const NSAttributedString& text);

  mutable NSString string_;
  detail::AttributeRuns* runs_;  ///< never null
  std::size_t changes_ = 0;      ///< the number of changes of an NSMutableAttributedString
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

/// Attributed text that can be appended to and changed in place.
class NK_EXPORT NSMutableAttributedString : public NSAttributedString {
  NK_OBJECT(NSMutableAttributedString, NSAttributedString)
  NK_CODING

  using NSAttributedString::NSAttributedString;
  ~NSMutableAttributedString() override;

  [[nodiscard]] static Ref<NSMutableAttributedString> attributedStringWithString(
      NSString string, const Ref<NSDictionary>& attributes = nullptr);

  /// The first call after a change of the text copies the text.
  [[nodiscard]] NSString string() const override;

  /// Attributes of the same name in the range are replaced; other attributes there stay.
  void addAttributes(const NSDictionary& attributes, NSRange range);
  void addAttribute(const NSString& name, const Value& value, NSRange range);
  void removeAttribute(const NSString& name, NSRange range);
  /// Replaces all attributes in the range; an empty Ref removes them.
  void setAttributes(const Ref<NSDictionary>& attributes, NSRange range);

  // An inserted text keeps its attributes. It may be this text itself.
  void appendAttributedString(const NSAttributedString& text);
  void insertAttributedString(const NSAttributedString& text, NSUInteger index);
  void replaceCharactersInRange(NSRange range, const NSAttributedString& text);
  void setAttributedString(const NSAttributedString& text);
  /// The new text gets the attributes of the first unit that it replaces. If it replaces none, it gets those of the
  /// unit before it; at the start of the text, those of the unit behind it; in an empty text, none.
  void replaceCharactersInRange(NSRange range, const NSString& text);
  void deleteCharactersInRange(NSRange range);

  /// Changes up to the matching endEditing() count as one edit: edited() is called once, by the outermost endEditing().
  /// Reads in between see each change at once. An endEditing() without a beginEditing() raises
  /// NSInternalInconsistencyException.
  void beginEditing();
  void endEditing();

  [[nodiscard]] Ref<NSAttributedString> copy() const override;

 protected:
  /// Called after each edit, for a subclass that shows the text. `range` covers everything that is new, in units of the
  /// present text; `changeInLength` is the number of units by which the text became longer. The default does nothing.
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
