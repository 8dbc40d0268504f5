#include "tests/support/MarkupModel.h"

#include "NorvikCore/platform/foundation/NSStringCase.h"

namespace norvik::test {
namespace {

using Units = std::u16string;

struct Tag {
  std::optional<Units> name;
  std::size_t location = 0, endLocation = 0;
  MarkupModel::TagAttributes attributes;

  [[nodiscard]] bool isEnding() const { return name && !name->empty() && name->front() == u'/'; }
};

Units lowered(const Units& units) { return lowercaseString(NSString::fromUtf16(units)).toUtf16(); }

bool isEndedBy(const Tag& open, const Tag& other) {
  return other.isEnding() && open.name && lowered(*other.name).substr(1) == lowered(*open.name);
}

/// Reads a text from start to end. Each scan returns the units that it read.
struct Scanner {
  const Units& units;
  std::size_t at = 0;

  [[nodiscard]] bool atEnd() const { return at == units.size(); }
  Units upToAnyOf(const Units& set) {
    const std::size_t from = at;
    while (!atEnd() && set.find(units[at]) == Units::npos) ++at;
    return units.substr(from, at - from);
  }
  Units runOf(const Units& set) {
    const std::size_t from = at;
    while (!atEnd() && set.find(units[at]) != Units::npos) ++at;
    return units.substr(from, at - from);
  }
};

const Units blanksAndTabs = u" \t";
const Units quotes = u"\"'";

Units shown(const std::optional<Units>& name) { return name.value_or(u"(null)"); }

}  // namespace

MarkupModel::TagAttributes modelTagAttributes(const Units& raw) {
  MarkupModel::TagAttributes attributes;
  Scanner scanner{raw};
  for (;;) {
    scanner.runOf(blanksAndTabs);
    if (scanner.atEnd()) return attributes;
    const Units name = scanner.upToAnyOf(u" =");
    const Units separator = scanner.runOf(u" =");
    std::optional<Units> value;
    if (!scanner.atEnd() && separator.find(u'=') != Units::npos) {
      const Units opening = scanner.runOf(quotes);
      if (opening.size() >= 2) {
        value = u"";
      } else {
        Units text;
        if (opening.size() == 1) {
          text = scanner.upToAnyOf(quotes);
          scanner.runOf(quotes);
        } else {
          text = scanner.upToAnyOf(blanksAndTabs);
          scanner.runOf(blanksAndTabs);
        }
        if (!text.empty()) value = text;
      }
    }
    if (!name.empty()) attributes[name] = value;  // a value without a name is ignored
  }
}

MarkupModel::Result MarkupModel::parse(const Units& source, bool attributed) const {
  Scanner scanner{source};
  AttributedTextModel output;
  const auto append = [&](const Units& units) {
    output.replace(output.units.size(), 0, {units, std::vector<Attributes>(units.size())});
  };
  std::vector<Tag> open, finished;
  while (!scanner.atEnd()) {
    const Units text = scanner.upToAnyOf(u"<");
    append(text);
    if (scanner.atEnd()) break;
    scanner.runOf(u"<");
    if (!text.empty() && text.back() == u'\x01') {
      output.replace(output.units.size() - 1, 1, {});
      append(u"<");
      continue;
    }
    const Units body = scanner.upToAnyOf(u">");
    if (scanner.atEnd()) {
      append(body);
      break;
    }
    scanner.runOf(u">");
    Scanner inner{body};
    inner.runOf(u" \t\n\v\f\r");
    const Units name = inner.upToAnyOf(blanksAndTabs);
    Tag tag;
    if (!name.empty()) tag.name = name;
    tag.location = output.units.size();
    if (attributed && tag.name) {
      inner.runOf(blanksAndTabs);
      tag.attributes = modelTagAttributes(body.substr(inner.at));
    }
    if (!open.empty() && isEndedBy(open.back(), tag)) {
      open.back().endLocation = tag.location;
      finished.insert(finished.begin(), open.back());
      open.pop_back();
    } else if (tag.isEnding()) {
      const std::optional<Units> expected = open.empty() ? std::nullopt : open.back().name;
      return {u"String had ending tag " + shown(tag.name) + u" when we expected ending tag " + shown(expected) +
                  u" or new tag",
              {}};
    } else {
      open.push_back(tag);
    }
  }
  if (!open.empty()) {
    Units names;
    for (const Tag& tag : open) names += (names.empty() ? u"" : u", ") + shown(tag.name);
    const std::string count = std::to_string(open.size());
    return {u"Reached end of string with " + Units(count.begin(), count.end()) + u" tags remaining (" + names + u")",
            {}};
  }
  if (!attributed || output.units.empty()) return {std::nullopt, output};
  output.set(0, output.units.size(), base);
  for (const Tag& tag : finished) {
    const auto found = table.find(lowered(*tag.name));
    const Entry* entry = found != table.end() ? &found->second : unknown ? &*unknown : nullptr;
    if (!entry) continue;
    Attributes added;
    if (entry->fixed) {
      added = *entry->fixed;
    } else if (entry->closure) {
      // There is no unit at the end of the text.
      added = entry->closure(*tag.name, tag.attributes,
                             tag.location < output.units.size() ? output.attributes[tag.location] : Attributes());
    }
    output.add(tag.location, tag.endLocation < tag.location ? 0 : tag.endLocation - tag.location, added);
  }
  return {std::nullopt, output};
}

}  // namespace norvik::test
