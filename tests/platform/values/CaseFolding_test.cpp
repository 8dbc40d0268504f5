#include "NorvikCore/platform/values/internal/CaseFolding.h"

#include <gtest/gtest.h>
#include <unicode/uchar.h>

namespace norvik {
namespace {

TEST(CaseFolding, IsUnicodesSimpleFoldingForEveryCharacter) {
  int folded = 0;
  for (UChar32 point = 0; point <= 0x10FFFF; ++point) {
    const auto expected = static_cast<char32_t>(u_foldCase(point, U_FOLD_CASE_DEFAULT));
    ASSERT_EQ(detail::foldCase(static_cast<char32_t>(point)), expected) << point;
    folded += static_cast<char32_t>(point) != expected;
  }
  EXPECT_GT(folded, 1400);
}

TEST(CaseFolding, FoldsToOneLetterOrNotAtAll) {
  EXPECT_EQ(detail::foldCase(U'A'), U'a');
  EXPECT_EQ(detail::foldCase(U'\u00C9'), U'\u00E9');
  EXPECT_EQ(detail::foldCase(U'\u03C2'), U'\u03C3');  // the final sigma
  EXPECT_EQ(detail::foldCase(U'\u00DF'), U'\u00DF');
  EXPECT_EQ(detail::foldCase(U'\u0130'), U'\u0130');  // I with a dot has no simple folding
}

}  // namespace
}  // namespace norvik
