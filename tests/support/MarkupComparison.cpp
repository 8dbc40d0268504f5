#include "tests/support/MarkupComparison.h"

#include "NorvikCore/markup/MRKTaggedString.h"
#include "tests/support/MarkupModel.h"

#include <algorithm>

namespace norvik::test {
namespace {

using Units = std::u16string;
using Attributes = MarkupModel::Attributes;

/// Records the calls of closures, one after the other. The parser's and the model's closures write the same format.
struct Calls {
  std::vector<Units> texts;

  Attributes note(const Units& tag, const MarkupModel::TagAttributes& written, const Attributes& present) {
    Units text = tag + u"|";
    for (const auto& [name, value] : written) text += name + (value ? u"=" + *value : u"") + u";";
    text += u"|";
    for (const auto& [name, value] : present) {
      text += Units(name.begin(), name.end());
      text += static_cast<char16_t>(u'0' + value);
    }
    texts.push_back(text);
    return {{"called", static_cast<int>(texts.size() % 3)}, {"bold", static_cast<int>(present.size() % 2)}};
  }
};

MarkupModel::TagAttributes writtenOf(const NSDictionary& dictionary) {
  MarkupModel::TagAttributes written;
  for (const auto& [name, value] : dictionary) {
    written[name.as<NSString>().toUtf16()] =
        value.isNull() ? std::nullopt : std::optional(value.as<NSString>().toUtf16());
  }
  return written;
}

MRKDynamicAttributes noting(Calls& calls) {
  return [&calls](const NSString& tag, const NSDictionary& written, const NSDictionary& present) {
    return dictionaryOf(calls.note(tag.toUtf16(), writtenOf(written), attributesOf(present)));
  };
}

const std::pair<const char*, Attributes> fixedTags[] = {
    {"b", {{"bold", 1}}}, {"i", {{"italic", 1}, {"bold", 0}}}, {"u", {}}, {"\u00E9", {{"italic", 2}}}};

NSString shown(const NSString& text) { return "\"" + text + "\""; }

std::string difference(const Units& source, bool unknown) {
  Calls expectedCalls, calls;
  MarkupModel model;
  model.base = {{"base", 1}};
  const auto options = MRKTaggedStringOptions::optionsWithBaseAttributes(dictionaryOf(model.base));
  for (const auto& [name, attributes] : fixedTags) {
    model.table[NSString(name).toUtf16()].fixed = attributes;
    options->setAttributes(dictionaryOf(attributes), name);
  }
  const MarkupModel::Entry computed{
      std::nullopt, [&](const Units& tag, const MarkupModel::TagAttributes& written, const Attributes& present) {
        return expectedCalls.note(tag, written, present);
      }};
  model.table[u"a"] = computed;
  options->setDynamicAttributes(noting(calls), "A");
  if (unknown) {
    model.unknown = computed;
    options->setUnknownTagDynamicAttributes(noting(calls));
  }

  const auto tagged = MRKTaggedString::stringWithString(NSString::fromUtf16(source));
  const MarkupModel::Result plain = model.parse(source, false);
  Ref<NSError> error;
  const auto text = tagged->stringWithOptions(*options, &error);
  const std::optional<NSString> fault =
      error ? error->userInfo()->objectForKey("developerError").as<std::optional<NSString>>() : std::nullopt;
  if (plain.fault) {
    if (text || !fault || fault->toUtf16() != *plain.fault) return "plain: another fault than the model's";
  } else if (!text || error || text->toUtf16() != plain.text.units) {
    return ("plain: " + shown(text.value_or("(absent)")) + " and not " + shown(NSString::fromUtf16(plain.text.units)))
        .utf8();
  }

  const MarkupModel::Result expected = model.parse(source, true);
  error = nullptr;
  const auto styled = tagged->attributedStringWithOptions(*options, &error);
  if (static_cast<bool>(styled) == expected.fault.has_value() || static_cast<bool>(styled) == static_cast<bool>(error))
    return "attributed: a fault on one side only";
  if (calls.texts != expectedCalls.texts) return "closures were called otherwise";
  if (!styled) return "";
  if (!(modelOf(*styled) == expected.text)) return "attributed: " + styled->description().utf8();
  NSUInteger unit = 0;
  for (const auto& run : *styled) {
    if (run.range != expected.text.runAt(unit)) return "a run that is not maximal";
    unit += run.range.length;
  }
  return "";
}

}  // namespace

std::string differenceFromModel(const Units& source) {
  const std::string without = difference(source, false);
  return without.empty() ? difference(source, true) : without;
}

}  // namespace norvik::test
