#include "NorvikCore/platform/values/Format.h"

#include "NorvikCore/platform/values/Decimal.h"
#include "NorvikCore/platform/values/NSNumber.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <limits>
#include <optional>
#include <random>
#include <string>
#include <string_view>

namespace norvik {
namespace {

using detail::checkFormatFor;
using detail::FormatFault;

struct Described {
  [[nodiscard]] NSString description() const { return "<a described value>"; }
};

enum class Colour : std::uint8_t { red = 3 };

NSString atRunTime(const char* format) { return stringWithFormat(runtimeFormat(NSString(format))); }

TEST(Format, HeaderExample) {
  const NSString name = "Zoë";
  const NSString pattern = "%d of %@";
  EXPECT_EQ(stringWithFormat("%d of %@ at %.2f", 3, name, 1.5), "3 of Zoë at 1.50");
  EXPECT_EQ(stringWithFormat("%8.2f", 1234.565_dec), " 1234.57");
  EXPECT_EQ(stringWithFormat(runtimeFormat(pattern), 3, name), "3 of Zoë");
  EXPECT_EQ(stringWithFormat("%2$@ %1$@", "world", "hello"), "hello world");
}

TEST(Format, AFloatingDirectiveShowsADecimalExactly) {
  const struct {
    const char* format;
    Decimal number;
    const char* expected;
  } rows[] = {
      {"%.2f", 1234.5_dec, "1234.50"},
      {"%.2f", 2.675_dec, "2.68"},  // as a double it is below the half
      {"%.2f", -2.675_dec, "-2.68"},
      {"%.2f", -0.001_dec, "0.00"},
      {"%.0f", 0.5_dec, "1"},
      {"%#.0f", 12_dec, "12."},
      {"%f", 1.5_dec, "1.500000"},
      {"%F", 0.00000049_dec, "0.000000"},
      {"%.30f", 0.1_dec, "0.100000000000000000000000000000"},
      {"%.1f", 12345678901234567890123456789012345678_dec, "12345678901234567890123456789012345678.0"},
      {"%9.2f|", 12.5_dec, "    12.50|"},
      {"%-9.2f|", 12.5_dec, "12.50    |"},
      {"%09.2f|", -12.5_dec, "-00012.50|"},
      {"%+.1f % .1f", 1_dec, "+1.0 (bad argument)"},
      {"% .1f", 1_dec, " 1.0"},
      {"%08.2f|", Decimal::notANumber(), "     NaN|"},
      {"%+f", Decimal::notANumber(), "NaN"},
      {"%e", 1_dec, "(bad argument)"},
      {"%d", 1_dec, "(bad argument)"},
      {"%@", 1.50_dec, "1.50"},
  };
  for (const auto& row : rows)
    EXPECT_EQ(stringWithFormat(runtimeFormat(row.format), row.number), row.expected) << row.format;
  EXPECT_EQ(stringWithFormat("%.4096f", Decimal::maximumDecimalNumber()).length(), 165u + 1 + 4096);
  EXPECT_EQ(stringWithFormat("%.*f %.2f", 1, 2.55_dec, std::optional<Decimal>()), "2.6 (null)");
}

TEST(Format, AFloatingDirectiveShowsANumberOfAnyKind) {
  EXPECT_EQ(stringWithFormat("%.2f %.1f %.1f", NSNumber(12.345_dec), NSNumber(7), NSNumber(true)), "12.35 7.0 1.0");
  EXPECT_EQ(stringWithFormat("%.2f", NSNumber(2.675)), "2.68");
  EXPECT_EQ(stringWithFormat("%.2f %@", NSNumber(std::numeric_limits<double>::infinity()), NSNumber(2.5)), "inf 2.5");
  EXPECT_TRUE(stringWithFormat("%.0f", NSNumber(1e200)).hasPrefix("99999999999999996973"));  // no Decimal holds it
  EXPECT_EQ(stringWithFormat("%.0f", NSNumber(1e200)).length(), 200u);
}

TEST(FormatDirective, HeaderExample) {
  std::size_t at = 1;
  EXPECT_EQ(detail::parseFormatDirective("%5.2f", at).width, 5);
  EXPECT_EQ(at, 5u);
}

TEST(Format, TextWithoutDirectivesComesBack) {
  EXPECT_EQ(stringWithFormat(""), "");
  EXPECT_EQ(stringWithFormat("Zoë paid 100 %%"), "Zoë paid 100 %");
}

TEST(Format, AnObjectDirectiveTakesEveryKindOfText) {
  const std::string text = "std";
  EXPECT_EQ(stringWithFormat("%@ %@ %@ %@", NSString("ns"), text, std::string_view("view"), "array"),
            "ns std view array");
  const char* pointer = "pointer";
  EXPECT_EQ(stringWithFormat("%@ %s", pointer, pointer), "pointer pointer");
}

TEST(Format, AnObjectDirectiveShowsTheDescription) {
  const Described value;
  EXPECT_EQ(stringWithFormat("%@", value), "<a described value>");
  EXPECT_EQ(stringWithFormat("%@", &value), "<a described value>");
}

TEST(Format, AnAbsentArgumentShowsAsNull) {
  const char* noText = nullptr;
  const Described* noObject = nullptr;
  EXPECT_EQ(
      stringWithFormat("%@ %@ %s %@ %d", nullptr, std::optional<NSString>(), noText, noObject, std::optional<int>()),
      "(null) (null) (null) (null) (null)");
  EXPECT_EQ(stringWithFormat("[%8@]", nullptr), "[  (null)]");
}

TEST(Format, AnOptionalShowsItsValue) {
  EXPECT_EQ(stringWithFormat("%@ %d", std::optional<NSString>("here"), std::optional<int>(7)), "here 7");
}

TEST(Format, IntegersShowTheNumberTheyHold) {
  EXPECT_EQ(stringWithFormat("%d %i %u", -1, -2, -3), "-1 -2 -3");
  EXPECT_EQ(stringWithFormat("%d", std::numeric_limits<std::uint64_t>::max()), "18446744073709551615");
  EXPECT_EQ(stringWithFormat("%d", std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
  EXPECT_EQ(stringWithFormat("%d %d %d", true, 'A', Colour::red), "1 65 3");
}

TEST(Format, LengthModifiersSayNothing) {
  EXPECT_EQ(stringWithFormat("%hhd %hd %ld %lld %qd %zd %td %jd %Lf", 70000, 70000, 70000, 70000, 70000, 70000, 70000,
                             70000, 1.5),
            "70000 70000 70000 70000 70000 70000 70000 70000 1.500000");
}

TEST(Format, HexadecimalAndOctalShowNegativesInTheirOwnWidth) {
  EXPECT_EQ(stringWithFormat("%x %X %o", -1, std::int16_t{-2}, std::int8_t{-1}), "ffffffff FFFE 377");
  EXPECT_EQ(stringWithFormat("%x", std::int64_t{-1}), "ffffffffffffffff");
}

TEST(Format, FlagsOfIntegersAreThoseOfPrintf) {
  const struct {
    const char *format, *expected;
    int value;
  } rows[] = {
      {"[%5d]", "[   42]", 42},     {"[%-5d]", "[42   ]", 42},     {"[%05d]", "[00042]", 42},  {"[%+d]", "[+42]", 42},
      {"[% d]", "[ 42]", 42},       {"[%+ d]", "[+42]", 42},       {"[%05d]", "[-0042]", -42}, {"[%.4d]", "[0042]", 42},
      {"[%7.4d]", "[   0042]", 42}, {"[%07.4d]", "[   0042]", 42}, {"[%.0d]", "[]", 0},        {"[%.d]", "[]", 0},
      {"[%#x]", "[0x2a]", 42},      {"[%#X]", "[0X2A]", 42},       {"[%#x]", "[0]", 0},        {"[%#o]", "[052]", 42},
      {"[%#o]", "[0]", 0},          {"[%#08x]", "[0x00002a]", 42}, {"[%'d]", "[42]", 42},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(stringWithFormat(runtimeFormat(NSString(row.format)), row.value), row.expected) << row.format;
  }
}

TEST(Format, FloatingNumbersAreThoseOfPrintf) {
  const struct {
    const char *format, *expected;
    double value;
  } rows[] = {
      {"%f", "0.000000", 0.0},
      {"%f", "-0.000000", -0.0},
      {"%.0f", "2", 2.5},
      {"%.0f", "4", 3.5},
      {"%.1f", "0.1", 0.125},
      {"%.2f", "0.12", 0.125},
      {"%.2f", "0.38", 0.375},
      {"%.2f", "1.00", 0.999},
      {"%.2f", "2.67", 2.675},
      {"%#.0f", "1.", 1.0},
      {"%+.1f", "+1.5", 1.5},
      {"%08.2f", "-0001.50", -1.5},
      {"%e", "1.234560e+03", 1234.56},
      {"%E", "1.234560E+03", 1234.56},
      {"%g", "0.0001", 0.0001},
      {"%g", "1e-05", 0.00001},
      {"%g", "1e+06", 1000000.0},
      {"%g", "999999", 999999.4},
      {"%g", "1e+06", 999999.5},
      {"%g", "10", 9.9999996},
      {"%g", "0", 0.0},
      {"%g", "-0", -0.0},
      {"%g", "1", 1.0},
      {"%g", "0.25", 0.25},
      {"%g", "1234.5", 1234.5},
      {"%g", "100000", 100000.0},
      {"%+010g", "+0000001.5", 1.5},
      {"%-8g|", "-2.5    |", -2.5},
      {"%.0g", "2", 2.5},
      {"%.2g", "1e+02", 99.5},
      {"%.2g", "98", 98.5},
      {"%.11g", "12345678901", 12345678901.0},
      {"%.12g", "123456789012", 123456789012.0},
      {"%.17g", "2.6749999999999998", 2.675},
      {"%#g", "1.00000", 1.0},
      {"%#.3g", "0.00100", 0.001},
      {"%#g", "0.00000", 0.0},
      {"%a", "0x1.8p+0", 1.5},
      {"%A", "0X1.8P+0", 1.5},
      {"%.0f", "1000000000000000000000", 1e21},
      {"%f", "inf", INFINITY},
      {"%F", "-INF", -INFINITY},
      {"%05f", "  inf", INFINITY},
      {"%f", "nan", NAN},
      {"%.20f", "0.10000000000000000555", 0.1},
      {"%.3f", "0.000", 1e-300},
      {"%.11f", "0.00000000001", 1e-11},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(stringWithFormat(runtimeFormat(NSString(row.format)), row.value), row.expected)
        << row.format << " of " << row.value;
  }
}

TEST(Format, GeneralNumbersHaveTheDigitsOfTheStandardLibrary) {
  std::mt19937_64 random(20261122);
  std::uniform_real_distribution<double> exponent(-2, 14);
  char expected[64];
  for (int i = 0; i < 100'000; ++i) {
    const int precision = static_cast<int>(random() % 14), places = static_cast<int>(random() % 8);
    double number = std::pow(10.0, exponent(random));
    // Half of them are short decimals, which have ties and trailing zeros.
    if (i % 2 == 0) number = std::round(number * std::pow(2.0, places)) / std::pow(2.0, places);
    const auto end =
        std::to_chars(expected, std::end(expected), number, std::chars_format::general, std::max(precision, 1));
    ASSERT_EQ(stringWithFormat("%.*g", precision, number).view(), std::string_view(expected, end.ptr))
        << "%." << precision << "g of " << std::hexfloat << number;
  }
}

TEST(Format, AFloatAndALongDoubleKeepTheirValues) {
  EXPECT_EQ(stringWithFormat("%.1f %.20Lf", 0.5F, 0.1L), "0.5 0.10000000000000000000");
}

TEST(Format, TheLargestFixedNumberHasAllItsDigits) {
  const NSString text = stringWithFormat("%f", std::numeric_limits<double>::max());
  EXPECT_EQ(text.length(), 316U);
  EXPECT_EQ(text.view().substr(0, 32), "17976931348623157081452742373170");
  EXPECT_EQ(text.view().substr(300), "124858368.000000");
}

TEST(Format, CharactersAreBytesUnitsOrCodePoints) {
  EXPECT_EQ(stringWithFormat("%c%c%C%c", 'a', u'é', U'€', 0x1F600), "aé€😀");
  EXPECT_EQ(stringWithFormat("%c%c", '\xC3', '\xAB'), "ë");
  EXPECT_EQ(stringWithFormat("%C%C", u'\xD83D', u'\xDE00'), "😀");
  EXPECT_EQ(stringWithFormat("%c", 0x110000), "\uFFFD");
  EXPECT_EQ(stringWithFormat("[%3c|%-3c]", 'x', 'y'), "[  x|y  ]");
}

TEST(Format, WidthCountsUnitsAndPrecisionNeverCutsACharacter) {
  EXPECT_EQ(stringWithFormat("[%5@|%-5@]", "Zoë", "Zoë"), "[  Zoë|Zoë  ]");
  EXPECT_EQ(stringWithFormat("[%4@]", "😀"), "[  😀]");
  EXPECT_EQ(stringWithFormat("[%.2@|%.3@]", "Zoë", "Zoë"), "[Zo|Zoë]");
  EXPECT_EQ(stringWithFormat("[%.1@|%.2@]", "😀", "😀"), "[|😀]");
  EXPECT_EQ(stringWithFormat("[%.3s|%.4s]", "Zoë", "Zoë"), "[Zo|Zoë]");
  EXPECT_EQ(stringWithFormat("[%.3s|%.4s]", NSString("Zoë"), std::string("Zoë")), "[Zo|Zoë]");
}

TEST(Format, HalvesOfACharacterRejoin) {
  const NSString text = "a😀b";
  const NSString first = text.substringToIndex(2), second = text.substringFromIndex(2);
  EXPECT_EQ(stringWithFormat("<%@%@>", first, second), "<a😀b>");
  EXPECT_EQ(stringWithFormat("%@|%@", first, second), first + "|" + second);
  EXPECT_EQ(stringWithFormat("[%4@]", first), "[  " + first + "]");
  EXPECT_EQ(stringWithFormat("[%.1@]", first), "[a]");
}

TEST(Format, APrecisionBoundsWhatIsReadOfUnterminatedText) {
  const char unterminated[3] = {'a', 'b', 'c'};
  EXPECT_EQ(stringWithFormat("%s %@ %.2s", unterminated, unterminated, unterminated), "abc abc ab");
  const char* pointer = unterminated;
  EXPECT_EQ(stringWithFormat("%.*s", 3, pointer), "abc");
}

extern const char textOfUnknownSize[];

TEST(Format, AnArrayShowsWhatIsBeforeItsFirstZeroOrAllOfIt) {
  EXPECT_EQ(stringWithFormat("%s|%s|%.3s|%5s", "", "tax\0year", "literal", "net"), "|tax|lit|  net");
  static constexpr char full[2] = {'G', 'B'};
  static constexpr char filledUp[8] = {'G', 'B'};
  EXPECT_EQ(stringWithFormat("%s|%s|%.1s", full, filledUp, full), "GB|GB|G");
  char changing[6] = "month";
  changing[3] = '\0';
  EXPECT_EQ(stringWithFormat("%s", changing), "mon");
  EXPECT_EQ(stringWithFormat("%s", textOfUnknownSize), "size unknown");
}

const char textOfUnknownSize[] = "size unknown";

TEST(Format, AStarTakesItsNumberFromTheArguments) {
  EXPECT_EQ(stringWithFormat("[%*d|%-*d|%*d]", 4, 1, 4, 2, -4, 3), "[   1|2   |3   ]");
  EXPECT_EQ(stringWithFormat("[%.*f|%.*f]", 1, 2.25, -1, 2.25), "[2.2|2.250000]");
  EXPECT_EQ(stringWithFormat("[%2$*1$d]", 4, 7), "[   7]");
  EXPECT_EQ(stringWithFormat("[%*d|%*d]", 1, 5, -1, 6), "[5|6]");
}

TEST(Format, PointersShowTheirAddress) {
  int here = 0;
  EXPECT_EQ(stringWithFormat("%p", static_cast<void*>(nullptr)), "0x0");
  EXPECT_EQ(stringWithFormat("%p", nullptr), "0x0");
  char expected[32];
  std::snprintf(expected, sizeof expected, "%p", static_cast<void*>(&here));
  EXPECT_EQ(stringWithFormat("%p", &here), expected);
}

TEST(Format, PlainNumbersAreShownAsNSNumberShowsThem) {
  EXPECT_EQ(stringWithFormat("%@ %@ %@", 5, -7L, std::numeric_limits<std::uint64_t>::max()),
            "5 -7 18446744073709551615");
  EXPECT_EQ(stringWithFormat("%@ %@ %@ %@", 1.5, 0.25F, 1e300, true), "1.5 0.25 1e+300 1");
  EXPECT_EQ(stringWithFormat("[%6@] [%-3@] [%.2@]", 12, false, 3456), "[    12] [0  ] [34]");
  EXPECT_EQ(stringWithFormat("%@", std::optional<int>()), "(null)");
}

TEST(Format, ALongTextGrowsBeyondTheBuffer) {
  const std::string longText(100000, 'x');
  EXPECT_EQ(stringWithFormat("%@%@%d", longText, longText, 5).str(), longText + longText + "5");
}

TEST(Format, AFieldIsLimited) {
  EXPECT_EQ(stringWithFormat(runtimeFormat("%999999999d"), 1).length(), 4096U);
  EXPECT_EQ(stringWithFormat(runtimeFormat("%.99999999999999999999d"), 1).length(), 4096U);
  EXPECT_EQ(stringWithFormat("%*d", std::numeric_limits<std::uint64_t>::max(), 1).length(), 4096U);
  EXPECT_EQ(stringWithFormat("%*d", std::numeric_limits<int>::min(), 1).length(), 4096U);
}

TEST(Format, ARunTimeFormatShowsWhatDoesNotFit) {
  EXPECT_EQ(stringWithFormat(runtimeFormat("%d|%@|%s|%f|%p"), "text", 'a', 2, 3, 4.0),
            "(bad argument)|(bad argument)|(bad argument)|(bad argument)|(bad argument)");
  EXPECT_EQ(atRunTime("%d and %3$d"), "(bad argument) and (bad argument)");
  EXPECT_EQ(stringWithFormat(runtimeFormat("%*d"), "width", 7), "(bad argument)");
  EXPECT_EQ(atRunTime("%n %y"), "(bad format)n (bad format)y");
  EXPECT_EQ(atRunTime("100 %"), "100 (bad format)");
  EXPECT_EQ(atRunTime("%5$"), "(bad format)");
  EXPECT_EQ(stringWithFormat(runtimeFormat("%d"), 1, 2, 3), "1");
}

TEST(Format, AnArgumentThatDoesNotFitIsStillTaken) {
  EXPECT_EQ(stringWithFormat(runtimeFormat("%d %d"), "text", 2), "(bad argument) 2");
}

TEST(Format, AnAbsentFormatGivesTheEmptyText) {
  EXPECT_EQ(stringWithFormat(nullptr, 1), "");
  EXPECT_EQ(stringWithFormat(runtimeFormat(std::nullopt), 1), "");
}

TEST(Format, PlainFloatingNumbersHaveSixDecimals) {
  const struct {
    double number;
    const char* expected;
  } rows[] = {
      {0, "0.000000"},
      {-0.0, "-0.000000"},
      {0.37, "0.370000"},
      {-1234.5, "-1234.500000"},
      {0.0000005, "0.000000"},  // the double is slightly below the half
      {0.0000015, "0.000002"},  // and this one slightly above
      {0.00000095367431640625, "0.000001"},
      {0.9999999, "1.000000"},
      {99.9999996, "100.000000"},
      {4503599627.370497, "4503599627.370497"},
      {12345678901234567890.0, "12345678901234567168.000000"},
      {5e-324, "0.000000"},
      {INFINITY, "inf"},
      {-INFINITY, "-inf"},
      {NAN, "nan"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(stringWithFormat("%f", row.number), row.expected);
    EXPECT_EQ(stringWithFormat("<%f>", row.number), "<" + NSString(row.expected) + ">");
  }
}

TEST(Format, AppendsUtf8WhateverTheArgumentsHold) {
  const struct {
    std::string given;
    const char* expected;
  } rows[] = {
      {"Zo\xC3\xAB Smith of department seven", "by Zo\xC3\xAB Smith of department seven."},
      {"\xC2\xA3 1,234.50", "by \xC2\xA3 1,234.50."},
      {"Zo\xEB Smith of department seven", "by Zo\xEF\xBF\xBD Smith of department seven."},
      {"department seven \xFF", "by department seven \xEF\xBF\xBD."},
      {"\xC3", "by \xEF\xBF\xBD."},
      {"", "by ."},
  };
  for (const auto& row : rows) {
    const FormatArgumentList list(std::string_view(row.given));
    std::string text = "paid ";
    appendFormatArguments(text, "by %s.", list);
    EXPECT_EQ(text, "paid " + std::string(row.expected));
  }
}

TEST(Format, AListOfArgumentsCanBeHandedOn) {
  const FormatArgumentList list(3, "of");
  EXPECT_EQ(stringWithFormatArguments("%d %s", list), "3 of");
  EXPECT_EQ(stringWithFormatArguments("none", FormatArguments()), "none");
  std::string text = "log: ";
  appendFormatArguments(text, "%d %s", list);
  EXPECT_EQ(text, "log: 3 of");
}

// The check of literals, run by the compiler.
static_assert(checkFormatFor<int, NSString, double>("%d %@ %f") == FormatFault::none);
static_assert(checkFormatFor<>("100 %%") == FormatFault::none);
static_assert(checkFormatFor<int, const char*>("%2$s %1$d") == FormatFault::none);
static_assert(checkFormatFor<int, int, double>("%*.*f") == FormatFault::none);
static_assert(checkFormatFor<>("%d") == FormatFault::missingArgument);
static_assert(checkFormatFor<int>("%*d") == FormatFault::missingArgument);
static_assert(checkFormatFor<int>("%2$d") == FormatFault::missingArgument);
static_assert(checkFormatFor<int, int>("%d") == FormatFault::surplusArgument);
static_assert(checkFormatFor<int, int>("%1$d") == FormatFault::surplusArgument);
static_assert(checkFormatFor<int, double, bool>("%@ %@ %@") == FormatFault::none);
static_assert(checkFormatFor<char>("%@") == FormatFault::wrongArgument);
static_assert(checkFormatFor<NSString>("%d") == FormatFault::wrongArgument);
static_assert(checkFormatFor<double>("%d") == FormatFault::wrongArgument);
static_assert(checkFormatFor<int>("%f") == FormatFault::wrongArgument);
static_assert(checkFormatFor<int>("%s") == FormatFault::wrongArgument);
static_assert(checkFormatFor<int>("%p") == FormatFault::wrongArgument);
static_assert(checkFormatFor<double, int>("%*d") == FormatFault::wrongArgument);
static_assert(checkFormatFor<int>("%n") == FormatFault::unknownDirective);
static_assert(checkFormatFor<>("100 %") == FormatFault::unknownDirective);
static_assert(checkFormatFor<int, int>("%1$d %d") == FormatFault::mixedPositions);
static_assert(checkFormatFor<int>("%4096d") == FormatFault::none);
static_assert(checkFormatFor<int>("%4097d") == FormatFault::fieldTooWide);

}  // namespace
}  // namespace norvik
