#include "NorvikCore/platform/foundation/NSStringCase.h"

#include <gtest/gtest.h>

namespace norvik {
namespace {

TEST(NSStringCase, HeaderExample) {
  EXPECT_EQ(uppercaseString("Stra\u00DFe 7"), "STRASSE 7");
  EXPECT_EQ(lowercaseString("PAYE"), "paye");
  EXPECT_EQ(capitalizedString("net pay"), "Net Pay");
}

TEST(NSStringCase, MapsEveryScriptAndLeavesTheRest) {
  const struct {
    const char* why;
    NSString text, upper, lower;
  } rows[] = {
      {"nothing", "", "", ""},
      {"ASCII and its neighbours", "@AZ[`az{09:", "@AZ[`AZ{09:", "@az[`az{09:"},
      {"accents", "Zo\u00EB \u00C5sa", "ZO\u00CB \u00C5SA", "zo\u00EB \u00E5sa"},
      {"Greek, with its final letter", "\u03A3\u03BF\u03C6\u03CC\u03C2", "\u03A3\u039F\u03A6\u038C\u03A3",
       "\u03C3\u03BF\u03C6\u03CC\u03C2"},
      {"beyond 16 bits", "\U00010428", "\U00010400", "\U00010428"},
      {"the i of no locale in particular", "iI", "II", "ii"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(uppercaseString(row.text), row.upper) << row.why;
    EXPECT_EQ(lowercaseString(row.text), row.lower) << row.why;
  }
}

TEST(NSStringCase, CapitalisedWordsBeginInTitleCaseAndGoOnInSmallLetters) {
  EXPECT_EQ(capitalizedString(""), "");
  EXPECT_EQ(capitalizedString("a"), "A");
  EXPECT_EQ(capitalizedString("NET pAY"), "Net Pay");
  EXPECT_EQ(capitalizedString("o'neil"), "O'neil");
  EXPECT_EQ(capitalizedString("\u01C6"), "\u01C5");
  EXPECT_EQ(capitalizedString("\u00DF"), "Ss");
  EXPECT_EQ(capitalizedString("\u039F\u03A3"), "\u039F\u03C2");
  EXPECT_EQ(capitalizedString("\U00010428"), "\U00010400");
}

TEST(NSStringCase, ASigmaAtTheEndOfAWordIsFinal) {
  EXPECT_EQ(lowercaseString("\u039F\u03A3 \u03A3\u039F"), "\u03BF\u03C2 \u03C3\u03BF");
  EXPECT_EQ(lowercaseString("\u03A3"), "\u03C3");  // the whole word is one sigma
}

TEST(NSStringCase, ALoneHalfStays) {
  const NSString half = NSString::fromCodePoint(0x1F600).substringToIndex(1);
  EXPECT_EQ(uppercaseString("a" + half + "\u00EB"), "A" + half + "\u00CB");
}

}  // namespace
}  // namespace norvik
