// NorvikCore/markup/MRKStringParser.h - converts marked-up text to plain or attributed text.
//
//   Ref<NSError> error;
//   Value text = MRKStringParser::stringWithTaggedString(*source, *options, NSAttributedString::staticClass(), &error);
//
// MRKTaggedString has the operations that applications use; docs/markup.md describes the language.
//
// One pass, without recursion; linear in the source, however deep tags are nested. Calls share no state: any thread.
#pragma once

#include "NorvikCore/markup/MRKTaggedString.h"
#include "NorvikCore/markup/MRKTaggedStringOptions.h"
#include "NorvikCore/platform/collections/NSError.h"
#include "NorvikCore/platform/foundation/NSAttributedString.h"

#include <optional>

namespace norvik {

/// The domain of errors in markup. Their code is 100; their user info has the message under "developerError".
NK_EXPORT extern const NSString MRKTaggedStringErrorDomain;

class NK_EXPORT MRKStringParser : public NSObject {
  NK_OBJECT(MRKStringParser, NSObject)
  ~MRKStringParser() override;

  /// An NSString if `returnClass` is NSString, an NSAttributedString if it is NSAttributedString; another class raises
  /// NSInternalInconsistencyException. If the source is not valid markup, the result is absent and `error`, if given,
  /// holds the reason.
  [[nodiscard]] static Value stringWithTaggedString(const MRKTaggedString& taggedString,
                                                    const MRKTaggedStringOptions& options, const Class& returnClass,
                                                    Ref<NSError>* error = nullptr);
  /// The appended text has no attributes, whatever attributes the text before it has. An absent text appends nothing.
  static void appendString(const std::optional<NSString>& string, NSMutableAttributedString& intoAttributedString);
};

}  // namespace norvik
