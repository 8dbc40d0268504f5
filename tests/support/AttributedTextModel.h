// tests/support/AttributedTextModel.h - a simple model of an attributed text: its units, and for each of them a
// dictionary of attribute names and values.
#pragma once

#include "NorvikCore/platform/foundation/NSAttributedString.h"

#include <map>
#include <string>
#include <vector>

namespace norvik::test {

struct AttributedTextModel {
  using Attributes = std::map<std::string, int>;

  std::u16string units;
  std::vector<Attributes> attributes;  ///< one for each unit

  [[nodiscard]] AttributedTextModel part(std::size_t from, std::size_t length) const {
    const auto first = attributes.begin() + static_cast<std::ptrdiff_t>(from);
    return {units.substr(from, length), {first, first + static_cast<std::ptrdiff_t>(length)}};
  }
  void replace(std::size_t from, std::size_t length, const AttributedTextModel& text) {
    const AttributedTextModel inserted = text;  // a copy, because `text` may be this object
    units.replace(from, length, inserted.units);
    const auto first = attributes.begin() + static_cast<std::ptrdiff_t>(from);
    const auto behind = attributes.erase(first, first + static_cast<std::ptrdiff_t>(length));
    attributes.insert(behind, inserted.attributes.begin(), inserted.attributes.end());
  }
  void replaceCharacters(std::size_t from, std::size_t length, const std::u16string& text) {
    Attributes like;
    if (length > 0 || from == 0) {
      if (from < units.size()) like = attributes[from];
    } else {
      like = attributes[from - 1];
    }
    replace(from, length, {text, std::vector<Attributes>(text.size(), like)});
  }
  void set(std::size_t from, std::size_t length, const Attributes& added) {
    for (std::size_t i = from; i < from + length; ++i) attributes[i] = added;
  }
  void add(std::size_t from, std::size_t length, const Attributes& added) {
    for (std::size_t i = from; i < from + length; ++i) {
      for (const auto& [name, value] : added) attributes[i][name] = value;
    }
  }
  void remove(std::size_t from, std::size_t length, const std::string& name) {
    for (std::size_t i = from; i < from + length; ++i) attributes[i].erase(name);
  }
  /// The range of units around `at` that have the same attributes as it.
  [[nodiscard]] NSRange runAt(std::size_t at) const {
    std::size_t from = at, to = at + 1;
    while (from > 0 && attributes[from - 1] == attributes[at]) --from;
    while (to < units.size() && attributes[to] == attributes[at]) ++to;
    return {from, to - from};
  }
  friend bool operator==(const AttributedTextModel&, const AttributedTextModel&) = default;
};

[[nodiscard]] inline Ref<NSDictionary> dictionaryOf(const AttributedTextModel::Attributes& attributes) {
  std::vector<NSDictionary::Entry> entries;
  for (const auto& [name, value] : attributes) entries.push_back({NSString(name), value});
  return make<NSDictionary>(std::move(entries));
}

[[nodiscard]] inline AttributedTextModel::Attributes attributesOf(const NSDictionary& dictionary) {
  AttributedTextModel::Attributes attributes;
  for (const auto& [name, value] : dictionary) attributes[name.as<NSString>().str()] = value.as<int>();
  return attributes;
}

/// Reads the text unit by unit, through attributesAtIndex().
[[nodiscard]] inline AttributedTextModel modelOf(const NSAttributedString& text) {
  AttributedTextModel model{text.string().toUtf16(), {}};
  for (NSUInteger i = 0; i < text.length(); ++i) model.attributes.push_back(attributesOf(*text.attributesAtIndex(i)));
  return model;
}

}  // namespace norvik::test
