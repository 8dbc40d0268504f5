// tests/support/MarkupComparison.h - the markup parser beside its model, on one source.
#pragma once

#include <string>

namespace norvik::test {

/// Parses the source in every way, with fixed and computed attributes, and with and without a closure for unknown tags.
/// What differs from the model in text, attributes, messages or calls of closures; "" where nothing does.
[[nodiscard]] std::string differenceFromModel(const std::u16string& source);

}  // namespace norvik::test
