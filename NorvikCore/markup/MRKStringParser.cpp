#include "NorvikCore/markup/MRKStringParser.h"

#include "NorvikCore/markup/internal/MarkupScan.h"
#include "NorvikCore/markup/internal/StyledRuns.h"
#include "NorvikCore/platform/values/NSException.h"

#include <utility>

namespace norvik {

constinit const NSString MRKTaggedStringErrorDomain = "MRKTaggedStringErrorDomain";

namespace {

struct NoTags {
  static bool open(std::string_view, std::string_view, NSUInteger) noexcept { return true; }
  static void close(NSUInteger) noexcept {}
};

Value withoutText(const NSString& fault, Ref<NSError>* error) {
  if (error) {
    *error = NSError::errorWithDomain(MRKTaggedStringErrorDomain, 100,
                                      NSDictionary::dictionaryWithObject(fault, "developerError"));
  }
  return {};
}

}  // namespace

MRKStringParser::~MRKStringParser() = default;

Value MRKStringParser::stringWithTaggedString(const MRKTaggedString& taggedString,
                                              const MRKTaggedStringOptions& options, const Class& returnClass,
                                              Ref<NSError>* error) {
  const NSString source = taggedString.underlyingString();
  if (&returnClass == &NSAttributedString::staticClass()) {
    detail::StyledText styled = detail::styledText(source, options);
    if (styled.fault) return withoutText(*styled.fault, error);
    return make<NSAttributedString>(std::move(styled.text), std::move(styled.runs));
  }
  NoTags tags;
  detail::MarkupScan scan(source, tags);
  (void)scan.run();
  if (scan.fault()) return withoutText(*scan.fault(), error);
  if (&returnClass != &Value(NSString()).classObject()) {
    NSException::raise(NSInternalInconsistencyException,
                       "Somehow asked for class type " + returnClass.name() + " for parsed string");
  }
  return scan.text();
}

void MRKStringParser::appendString(const std::optional<NSString>& string,
                                   NSMutableAttributedString& intoAttributedString) {
  if (string) intoAttributedString.appendAttributedString(*NSAttributedString::attributedStringWithString(*string));
}

}  // namespace norvik
