#include "NorvikCore/platform/collections/NSError.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace norvik {
namespace {

TEST(NSError, HeaderExample) {
  const auto error = NSError::errorWithDomain(
      "Payroll", 7,
      NSDictionary::dictionaryWith({{NSLocalizedDescriptionKey, "The pay run is closed."},
                                    {NSLocalizedRecoverySuggestionErrorKey, "Open it first."}}));
  EXPECT_EQ(error->domain(), "Payroll");
  EXPECT_EQ(error->code(), 7);
  EXPECT_EQ(error->localizedDescription(), "The pay run is closed.");
  EXPECT_EQ(error->localizedRecoverySuggestion(), "Open it first.");
  EXPECT_EQ(error->localizedFailureReason(), std::nullopt);
  EXPECT_EQ(error->description(), "Payroll error 7: The pay run is closed. Open it first.");
}

TEST(NSError, WithoutUserInfoItStillSaysWhatItKnows) {
  const auto error = make<NSError>("Payroll", -3);
  EXPECT_EQ(error->userInfo()->count(), 0u);
  EXPECT_EQ(error->localizedDescription(), "The operation could not be completed. (Payroll error -3.)");
}

TEST(NSError, TheFailureReasonStandsInForADescription) {
  const auto error = NSError::errorWithDomain(
      "Payroll", 1, NSDictionary::dictionaryWith({{NSLocalizedFailureReasonErrorKey, "The month is over."}}));
  EXPECT_EQ(error->localizedDescription(), "The operation could not be completed. The month is over.");
}

TEST(NSError, AnErrorOfTheSystemSaysWhatOnWhatAndWhy) {
  const auto error = NSError::posixError(ENOENT, "open", "/var/pay.csv");
  EXPECT_EQ(error->domain(), NSPOSIXErrorDomain);
  EXPECT_EQ(error->code(), ENOENT);
  EXPECT_EQ(error->localizedDescription(), "open /var/pay.csv: No such file or directory");
  EXPECT_EQ(error->localizedFailureReason(), "No such file or directory");
  EXPECT_EQ(error->userInfo()->objectForKey(NSFilePathErrorKey), Value("/var/pay.csv"));
  EXPECT_EQ(error->description(), "NSPOSIXErrorDomain error 2: open /var/pay.csv: No such file or directory");
  EXPECT_EQ(NSError::posixError(EINTR, "fork", "")->localizedDescription(), "fork: Interrupted system call");
}

TEST(NSError, TellsItsCause) {
  const auto cause = NSError::posixError(EACCES, "open", "/pay");
  const auto error = NSError::errorWithDomain(
      "Payroll", 2,
      NSDictionary::dictionaryWith({{NSLocalizedDescriptionKey, "No run."}, {NSUnderlyingErrorKey, cause}}));
  EXPECT_EQ(error->underlyingError(), cause);
  EXPECT_EQ(error->description(),
            "Payroll error 2: No run. (NSPOSIXErrorDomain error 13: open /pay: Permission denied)");
}

TEST(NSError, EqualErrorsHaveEqualDomainCodeAndUserInfo) {
  EXPECT_EQ(Value(NSError::posixError(EACCES, "open", "/a")), Value(NSError::posixError(EACCES, "open", "/a")));
  EXPECT_NE(Value(NSError::posixError(EACCES, "open", "/a")), Value(NSError::posixError(EACCES, "open", "/b")));
  EXPECT_NE(Value(make<NSError>("A", 1)), Value(make<NSError>("A", 2)));
  EXPECT_EQ(make<NSError>("A", 1)->hash(), make<NSError>("A", 1)->hash());
}

TEST(NSError, IsReadByKeys) {
  const auto error = make<NSError>("Payroll", 5);
  EXPECT_EQ(error->valueForKey("code"), Value(5));
  EXPECT_EQ(error->valueForKey("domain"), Value("Payroll"));
}

TEST(NSError, KeysHaveTheirOwnTexts) {
  EXPECT_EQ(NSLocalizedDescriptionKey, "NSLocalizedDescription");
  EXPECT_EQ(NSLocalizedFailureReasonErrorKey, "NSLocalizedFailureReason");
  EXPECT_EQ(NSLocalizedRecoverySuggestionErrorKey, "NSLocalizedRecoverySuggestion");
  EXPECT_EQ(NSUnderlyingErrorKey, "NSUnderlyingError");
}

}  // namespace
}  // namespace norvik
