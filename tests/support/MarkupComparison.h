// tests/support/MarkupComparison.h - compares the markup parser with its model for one source.
#pragma once

#include <string>

namespace norvik::test {

/// Parses the source in all ways: with fixed and computed attributes, and with and without a closure for unknown tags.
/// Returns the difference from the model in text, attributes, messages or calls of closures, or "" if there is none.
[[nodiscard]] std::string differenceFromModel(const std::u16string& source);

}  // namespace norvik::test
