#include "NorvikCore/markup/MRKStringParser.h"

#include "NorvikCore/markup/internal/MarkupScan.h"
#include "NorvikCore/markup/internal/StyledRuns.h"
#include "NorvikCore/platform/values/NSException.h"

namespace norvik {

constinit const NSString MRKTaggedStringErrorDomain = "MRKTaggedStringErrorDomain";

MRKStringParser::~MRKStringParser() = default;

Value MRKStringParser::stringWithTaggedString(const MRKTaggedString& taggedString,
                                              const MRKTaggedStringOptions& options, const Class& returnClass,
                                              Ref<NSError>* error) {
  const bool attributed = &returnClass == &NSAttributedString::staticClass();
  const NSString source = taggedString.underlyingString();
  const detail::MarkupScan scan = detail::scanMarkup(source, attributed);
  if (scan.fault) {
    if (error) {
      *error = NSError::errorWithDomain(MRKTaggedStringErrorDomain, 100,
                                        NSDictionary::dictionaryWithObject(*scan.fault, "developerError"));
    }
    return {};
  }
  if (attributed) return make<NSAttributedString>(scan.text, detail::styledRuns(scan, options));
  if (&returnClass != &Value(NSString()).classObject()) {
    NSException::raise(NSInternalInconsistencyException,
                       "Somehow asked for class type " + returnClass.name() + " for parsed string");
  }
  return scan.text;
}

void MRKStringParser::appendString(const std::optional<NSString>& string,
                                   NSMutableAttributedString& intoAttributedString) {
  if (string) intoAttributedString.appendAttributedString(*NSAttributedString::attributedStringWithString(*string));
}

}  // namespace norvik
