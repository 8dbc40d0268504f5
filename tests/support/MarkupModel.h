// tests/support/MarkupModel.h - tagged text parsed step by step, as plainly as possible: the oracle of the markup tests
// and of the fuzzer. Slow; one attribute dictionary for each unit.
#pragma once

#include "tests/support/AttributedTextModel.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace norvik::test {

struct MarkupModel {
  using Attributes = AttributedTextModel::Attributes;
  /// Names in the order of their first appearance do not matter to the model; no value is the null marker.
  using TagAttributes = std::map<std::u16string, std::optional<std::u16string>>;
  using Closure = std::function<Attributes(const std::u16string& tag, const TagAttributes& tagAttributes,
                                           const Attributes& present)>;

  struct Entry {
    std::optional<Attributes> fixed;
    Closure closure;
  };

  Attributes base;
  std::map<std::u16string, Entry> table;  ///< by lower-cased names
  std::optional<Entry> unknown;

  struct Result {
    std::optional<std::u16string> fault;
    AttributedTextModel text;
  };
  [[nodiscard]] Result parse(const std::u16string& source, bool attributed) const;
};

[[nodiscard]] MarkupModel::TagAttributes modelTagAttributes(const std::u16string& raw);

}  // namespace norvik::test
