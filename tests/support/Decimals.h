// tests/support/Decimals.h - converts a text to a Decimal, for tests that write numbers as texts.
#pragma once

#include "NorvikCore/platform/values/Decimal.h"

#include <string_view>

namespace norvik::test {

/// Throws if the text is not a decimal number.
inline Decimal dec(std::string_view text) { return Decimal::parse(text).value(); }

}  // namespace norvik::test
