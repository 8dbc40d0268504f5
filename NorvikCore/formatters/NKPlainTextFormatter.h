// NorvikCore/formatters/NKPlainTextFormatter.h - the formatter of a text field that holds plain text of a limited
// length, optionally in upper or lower case.
//
//   auto formatter = make<NKPlainTextFormatter>();
//   formatter->setMaxLength(9);
//   formatter->setUpperCase(true);
//   formatter->stringForObjectValue("qq123456c");      // "QQ123456C"
//
// While the user types, an edit that would exceed maxLength() is cut to the characters that still fit. If a case is
// set, every edit is refused and replaced by its converted text, even if that equals the proposed text. That is
// deliberate: it is how the converted text reaches the field.
//
// Case follows Unicode's full mapping (NSStringCase.h), which may make a text longer: "ß" becomes "SS". The length is
// checked before the case is converted, so the result may exceed maxLength().
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
  /// The greatest number of UTF-16 units that the field may hold; 2147483647 initially. With 0 no text fits. With less
  /// than 0 the empty text is refused too; its replacement is empty.
  NK_PROPERTY(std::int64_t, maxLength, setMaxLength)
  /// False initially. Setting one to true sets the other to false, before observers of either are notified.
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
  /// The value is the converted text; never fails.
  [[nodiscard]] bool getObjectValue_forString_errorDescription(Value& value, const NSString& text,
                                                               NSString* error = nullptr) const override;

  /// If the text would be too long, replaces the selection by as many of the inserted units as still fit and places the
  /// caret after them. A character of two units may be cut after its first unit. If the text was already too long, no
  /// unit fits and only the selection is lost: an edit may shorten such a text but not lengthen it. An edit that
  /// deletes more than the selection, such as a backspace at the caret, is accepted. A selection beyond the end of the
  /// text is cut at the end.
  [[nodiscard]] bool isPartialStringValid(NSString& proposed, NSRange& selection, const NSString& original,
                                          NSRange originalSelection, NSString* error = nullptr) const override;

  /// Encodes nothing; decoding gives a new formatter.
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
