#include "NorvikCore/logging/internal/CrashText.h"

#include "NorvikCore/platform/values/Decimal.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace norvik::detail {
namespace {

template <class... Args>
std::string formatted(std::string_view format, const Args&... arguments) {
  char memory[256];
  CrashText text(memory, sizeof memory);
  const FormatArgumentList list(arguments...);
  text.appendFormatted(format, list);
  return std::string(text.view());
}

TEST(CrashText, NumbersAndTimes) {
  char memory[256];
  CrashText text(memory, sizeof memory);
  text.appendNumber(0);
  text.append(' ');
  text.appendNumber(UINT64_MAX);
  text.append(' ');
  text.appendNumber(7, 3);
  text.append(' ');
  text.appendSigned(INT64_MIN);
  text.append(' ');
  text.appendHexadecimal(0);
  text.append(' ');
  text.appendHexadecimal(UINT64_MAX);
  text.append(' ');
  text.appendTime(1'620'653'412'045'999'999);
  EXPECT_EQ(text.view(),
            "0 18446744073709551615 007 -9223372036854775808 0x0 0xffffffffffffffff 2021-05-10T13:30:12.045Z");
  text.clear();
  EXPECT_EQ(text.view(), "");
  text.appendTime(0);
  EXPECT_EQ(text.view(), "1970-01-01T00:00:00.000Z");
}

TEST(CrashText, ControlCharactersBecomeBlanks) {
  char memory[32];
  CrashText text(memory, sizeof memory);
  text.appendOnOneLine(std::string_view("a\nb\0c\x7F Zoë", 11));
  EXPECT_EQ(text.view(), "a b c  Zoë");
}

TEST(CrashText, WhatDoesNotFitIsCut) {
  char memory[5] = {'.', '.', '.', '.', '.'};
  CrashText text(memory, 4);
  text.append("abc");
  text.append("defg");
  EXPECT_EQ(text.view(), "abcd");
  EXPECT_EQ(text.room(), 0U);
  text.appendNumber(12);
  EXPECT_EQ(text.view(), "abcd");
  EXPECT_EQ(memory[4], '.');
}

TEST(CrashText, DirectivesTakeNumbersAndTexts) {
  EXPECT_EQ(formatted("%d of %s at %@, %% %u", 3, "ten", NSString("Zoë"), 7U), "3 of ten at Zoë, % 7");
  EXPECT_EQ(formatted("%x %c %d", 255, 'x', true), "0xff x 1");
  EXPECT_EQ(formatted("%2$s %1$s", "world", "hello"), "hello world");
  EXPECT_EQ(formatted("%.2f %f %.0f", 1.005, -0.5, 2.5), "1.00 -0.500000 3");
  EXPECT_EQ(formatted("%f %.3f", 1e300, 0.9996), "(value) 1.000");
  EXPECT_EQ(formatted("%@", std::optional<int>()), "(null)");
  EXPECT_EQ(formatted("%5d|%-5d|%*d", 1, 2, 9, 3), "1|2|3");
}

TEST(CrashText, WhatWouldNeedMemoryIsAValue) { EXPECT_EQ(formatted("paid %@ to", Decimal(1234)), "paid (value) to"); }

TEST(CrashText, DirectivesWithoutArgumentsShowNothing) {
  EXPECT_EQ(formatted("%d and %d", 1), "1 and ");
  EXPECT_EQ(formatted("100 %"), "100 %");
}

}  // namespace
}  // namespace norvik::detail
