#include "NorvikCore/platform/values/NSException.h"

#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/collections/NSDictionary.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace norvik {
namespace {

TEST(NSException, HeaderExample) {
  const Ref<NSArray> payslips = NSArray::arrayWithObjects("one");
  NSString reason;
  try {
    (void)payslips->objectAtIndex(12);
  } catch (const NSException& e) {
    if (e.name() != NSRangeException) throw;
    reason = e.reason();
  }
  EXPECT_FALSE(reason.empty());
  EXPECT_THROW(NSException::raise(NSInvalidArgumentException, "the payment date is before the start of the tax year"),
               NSException);
}

TEST(NSException, CarriesNameReasonAndUserInfo) {
  try {
    NSException::raise(NSInvalidArgumentException, "no such month", NSDictionary::dictionaryWith({{"month", 13}}));
    FAIL();
  } catch (const NSException& e) {
    EXPECT_EQ(e.name(), "NSInvalidArgumentException");
    EXPECT_EQ(e.reason(), "no such month");
    EXPECT_EQ(e.userInfo()->objectForKey("month"), Value(13));
    EXPECT_STREQ(e.what(), "NSInvalidArgumentException: no such month");
    EXPECT_EQ(e.description(), "NSInvalidArgumentException: no such month");
  }
}

TEST(NSException, IsCaughtAsAStandardException) {
  try {
    NSException::raise(NSRangeException, "beyond");
    FAIL();
  } catch (const std::exception& e) {
    EXPECT_STREQ(e.what(), "NSRangeException: beyond");
  }
}

TEST(NSException, CopiesShareWhatTheyCarryAndDoNotThrow) {
  static_assert(std::is_nothrow_copy_constructible_v<NSException> && std::is_nothrow_copy_assignable_v<NSException>);
  const NSException a("A", "one", NSDictionary::dictionary());
  NSException b("B", "two");
  EXPECT_FALSE(b.userInfo());
  b = a;
  EXPECT_EQ(b.userInfo(), a.userInfo());
  EXPECT_STREQ(b.what(), "A: one");
}

TEST(NSException, NamesHaveThePlatformsTexts) {
  EXPECT_EQ(NSUndefinedKeyException, "NSUnknownKeyException");
  EXPECT_EQ(NSGenericException, "NSGenericException");
  EXPECT_EQ(NSInternalInconsistencyException, "NSInternalInconsistencyException");
  EXPECT_EQ(NSDecimalNumberDivideByZeroException, "NSDecimalNumberDivideByZeroException");
}

TEST(NSException, DecimalsRaiseByTheExportedNames) {
  try {
    (void)(1_dec / 0_dec);
    FAIL();
  } catch (const NSException& e) {
    EXPECT_EQ(e.name(), NSDecimalNumberDivideByZeroException);
  }
}

}  // namespace
}  // namespace norvik
