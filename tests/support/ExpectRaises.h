// tests/support/ExpectRaises.h - expects that a statement raises the exception with a given name.
#pragma once

#include "NorvikCore/platform/values/NSException.h"

#include <gtest/gtest.h>

#include <string>

namespace norvik::test {

/// The name of the NSException that the statement raises, or "" if it raises none. Other exceptions pass.
template <class Statement>
std::string nameOfWhatIsRaised(Statement&& statement) {
  try {
    statement();
  } catch (const norvik::NSException& exception) {
    return exception.name().utf8();
  }
  return "";
}

}  // namespace norvik::test

/// EXPECT_RAISES(statement, "NSRangeException")
#define EXPECT_RAISES(statement, exceptionName) \
  EXPECT_EQ(::norvik::test::nameOfWhatIsRaised([&] { statement; }), exceptionName) << #statement
