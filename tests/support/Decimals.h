// tests/support/Decimals.h - a Decimal from its text, for tests that compute with texts.
#pragma once

#include "NorvikCore/platform/values/Decimal.h"

#include <string_view>

namespace norvik::test {

/// Throws where the text is no decimal.
inline Decimal dec(std::string_view text) { return Decimal::parse(text).value(); }

}  // namespace norvik::test
