// NorvikCore/platform/foundation/NSFormatter.h - between a value and the text of the field that shows it.
//
// A text field asks its formatter for the text of its value, for the text to edit, at each edit whether the new text
// may stand, and when the user commits for the value of the text:
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

  /// The text that shows the value; absent where the formatter cannot show a value of that kind.
  [[nodiscard]] virtual std::optional<NSString> stringForObjectValue(const Value& value) const = 0;
  /// The same with attributes; empty where the formatter has none of its own to add and the plain text is to be shown
  /// with the default ones.
  [[nodiscard]] virtual Ref<NSAttributedString> attributedStringForObjectValue_withDefaultAttributes(
      const Value& value, const Ref<NSDictionary>& attributes) const;
  /// The text to begin editing with: the one that shows the value, unless a formatter has a plainer one.
  [[nodiscard]] virtual std::optional<NSString> editingStringForObjectValue(const Value& value) const;

  /// Reads what the user committed. False refuses: `value` keeps what it had and `error`, where given, says why.
  [[nodiscard]] virtual bool getObjectValue_forString_errorDescription(Value& value, const NSString& text,
                                                                       NSString* error = nullptr) const = 0;

  /// Asked at every edit: `proposed` is the whole text with the edit and `selection` the caret it leads to; `original`
  /// and `originalSelection` are what the edit was made on. True accepts. False refuses where `proposed` still is the
  /// very text (isIdenticalTo); whatever was assigned to it, also an equal text, takes the place of the edit, with
  /// `selection`. An empty text has no identity and always takes it. This one accepts everything.
  [[nodiscard]] virtual bool isPartialStringValid(NSString& proposed, NSRange& selection, const NSString& original,
                                                  NSRange originalSelection, NSString* error = nullptr) const;
};

}  // namespace norvik
