// NorvikCore/platform/foundation/NSFormatter.h - converts between a value and the text of the field that shows it.
//
// A text field asks its formatter for the text of its value and for the text to edit, at each edit whether the new text
// is valid, and when the user commits, for the value of the text:
//
//   Value amount;
//   NSString why;
//   if (!formatter->getObjectValue_forString_errorDescription(amount, "1,234.5", &why)) show(why);
//
// Threads: confined to the thread of its field; distinct formatters are independent.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/object/NSObject.h"
#include "NorvikCore/platform/values/NSRange.h"

#include <optional>

namespace norvik {

class NSAttributedString;
class NSDictionary;

class NK_EXPORT NSFormatter : public NSObject {
  NK_OBJECT(NSFormatter, NSObject)
  ~NSFormatter() override;

  /// The text that shows the value; absent if the formatter cannot show a value of that kind.
  [[nodiscard]] virtual std::optional<NSString> stringForObjectValue(const Value& value) const = 0;
  /// The same with attributes; an empty Ref if the formatter adds no attributes, so that the plain text is to be shown
  /// with the default ones.
  [[nodiscard]] virtual Ref<NSAttributedString> attributedStringForObjectValue_withDefaultAttributes(
      const Value& value, const Ref<NSDictionary>& attributes) const;
  /// The text with which editing begins: the one that shows the value, unless a formatter has a plainer one.
  [[nodiscard]] virtual std::optional<NSString> editingStringForObjectValue(const Value& value) const;

  /// Reads the committed text. False refuses it: `value` is unchanged, and `error`, if given, is set to the reason.
  [[nodiscard]] virtual bool getObjectValue_forString_errorDescription(Value& value, const NSString& text,
                                                                       NSString* error = nullptr) const = 0;

  /// Called at every edit: `proposed` is the whole text after the edit, and `selection` the caret after it; `original`
  /// and `originalSelection` are those before the edit. True accepts the edit. If the result is false and `proposed` is
  /// still the same text (isIdenticalTo), the edit is refused. If it is false and another text, even an equal one, was
  /// assigned to `proposed`, that text replaces the edit, with `selection`. An empty text has no identity and always
  /// replaces it. The default accepts everything.
  [[nodiscard]] virtual bool isPartialStringValid(NSString& proposed, NSRange& selection, const NSString& original,
                                                  NSRange originalSelection, NSString* error = nullptr) const;
};

}  // namespace norvik
