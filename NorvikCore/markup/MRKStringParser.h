// NorvikCore/markup/MRKStringParser.h - marked-up text becomes plain or attributed text.
//
//   Ref<NSError> error;
//   Value text = MRKStringParser::stringWithTaggedString(*source, *options, NSAttributedString::staticClass(), &error);
//
// MRKTaggedString has the operations with which to parse; docs/markup.md has the language.
//
// One pass; linear in the source, however tags are nested, and without recursion. Parsings share nothing: any thread.
#pragma once

#include "NorvikCore/markup/MRKTaggedString.h"
#include "NorvikCore/markup/MRKTaggedStringOptions.h"
#include "NorvikCore/platform/collections/NSError.h"
#include "NorvikCore/platform/foundation/NSAttributedString.h"

#include <optional>

namespace norvik {

/// The domain of errors in markup; their code is 100, their user info the message under "developerError".
NK_EXPORT extern const NSString MRKTaggedStringErrorDomain;

class NK_EXPORT MRKStringParser : public NSObject {
  NK_OBJECT(MRKStringParser, NSObject)
  ~MRKStringParser() override;

  /// A text where `returnClass` is NSString, an NSAttributedString where it is that; anything else raises
  /// NSInternalInconsistencyException. Absent where the source is no markup; then `error`, where given, says why.
  [[nodiscard]] static Value stringWithTaggedString(const MRKTaggedString& taggedString,
                                                    const MRKTaggedStringOptions& options, const Class& returnClass,
                                                    Ref<NSError>* error = nullptr);
  /// The new text has no attributes, whatever the text before it has. An absent text appends nothing.
  static void appendString(const std::optional<NSString>& string, NSMutableAttributedString& intoAttributedString);
};

}  // namespace norvik
