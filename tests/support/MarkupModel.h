// tests/support/MarkupModel.h - a model that parses tagged text step by step and as simply as possible. The markup
// tests and the fuzzer compare the library with it. It is slow, and has one attribute dictionary for each unit.
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
  /// The model ignores the order of names. A name without a value has the null marker.
  using TagAttributes = std::map<std::u16string, std::optional<std::u16string>>;
  using Closure = std::function<Attributes(const std::u16string& tag, const TagAttributes& tagAttributes,
                                           const Attributes& present)>;

  struct Entry {
    std::optional<Attributes> fixed;
    Closure closure;
  };

  Attributes base;
  std::map<std::u16string, Entry> table;  ///< by names in lower case
  std::optional<Entry> unknown;

  struct Result {
    std::optional<std::u16string> fault;
    AttributedTextModel text;
  };
  [[nodiscard]] Result parse(const std::u16string& source, bool attributed) const;
};

[[nodiscard]] MarkupModel::TagAttributes modelTagAttributes(const std::u16string& raw);

}  // namespace norvik::test
