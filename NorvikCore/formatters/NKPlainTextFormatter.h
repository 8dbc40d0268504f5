// NorvikCore/formatters/NKPlainTextFormatter.h - the formatter of a text field that holds plain text of a limited
// length, in capitals or small letters where that is wanted.
//
//   auto formatter = make<NKPlainTextFormatter>();
//   formatter->setMaxLength(9);
//   formatter->setUpperCase(true);
//   formatter->stringForObjectValue("qq123456c");      // "QQ123456C"
//
// While the user types, an edit that would exceed maxLength() is cut to what still fits. With a case set, every edit is
// answered by its converted text, also where that is what was proposed. That is deliberate: it is how the text gets
// into the field.
//
// Case is Unicode's full mapping (NSStringCase.h), which may make a text longer: "ß" becomes "SS". The length is
// checked before the case is changed, so that may exceed maxLength().
//
// Threads: confined to the thread of its field.
#pragma once

#include "NorvikCore/platform/foundation/NSFormatter.h"
#include "NorvikCore/platform/object/NSCoder.h"

#include <cstdint>

namespace norvik {

class NK_EXPORT NKPlainTextFormatter : public NSFormatter, public NSCoding {
  NK_OBJECT(NKPlainTextFormatter, NSFormatter)
  NK_CODING
  /// The greatest number of UTF-16 units the field may hold, 2147483647 at first. 0 is no exception: nothing fits then,
  /// nor for less than 0, where the empty text is refused too and its replacement is empty.
  NK_PROPERTY(std::int64_t, maxLength, setMaxLength)
  /// False at first. Setting one to true sets the other to false, before observers of either are notified.
  NK_COMPUTED_PROPERTY_WITH_SETTER(bool, upperCase, setUpperCase)
  NK_COMPUTED_PROPERTY_WITH_SETTER(bool, lowerCase, setLowerCase)

  NKPlainTextFormatter();
  ~NKPlainTextFormatter() override;

  [[nodiscard]] bool upperCase() const noexcept { return upperCase_; }
  [[nodiscard]] bool lowerCase() const noexcept { return lowerCase_; }
  void setUpperCase(bool upperCase);
  void setLowerCase(bool lowerCase);

  /// Absent unless the value is a text.
  [[nodiscard]] std::optional<NSString> stringForObjectValue(const Value& value) const override;
  /// The text, converted; never fails.
  [[nodiscard]] bool getObjectValue_forString_errorDescription(Value& value, const NSString& text,
                                                               NSString* error = nullptr) const override;

  /// As many of the inserted units as still fit take the place of the selection, and the caret goes behind them. Of a
  /// character of two units the first may fit alone. Where the text was too long already, none fits and nothing but the
  /// selection is lost: an edit may shorten such a text but not lengthen it. One that deletes more than was selected,
  /// as a backspace behind the caret does, is accepted. A selection beyond the text ends with it.
  [[nodiscard]] bool isPartialStringValid(NSString& proposed, NSRange& selection, const NSString& original,
                                          NSRange originalSelection, NSString* error = nullptr) const override;

  /// Nothing is archived: what is decoded is a new formatter.
  void encodeWithCoder(NSCoder& coder) const override;
  bool initWithCoder(NSCoder& coder) override;

 protected:
  bool init() override;

 private:
  struct CaseFlag {
    const char* key;
    bool& flag;
  };
  void setCase(const CaseFlag& set, bool value, const CaseFlag& other);
  [[nodiscard]] NSString converted(const NSString& text) const;

  bool upperCase_ = false, lowerCase_ = false;
};

}  // namespace norvik
