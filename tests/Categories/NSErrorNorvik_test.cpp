#include <gtest/gtest.h>

#include "NorvikCore/Categories/NSError+Norvik.h"
#include "tests/support/ExpectRaises.h"

namespace norvik {
namespace {

// Expects exactly these three entries in the user info, the phrase as the domain, and the code 0.
void expectError(const NSError& error, const char* domain, const char* description, const char* reason,
                 const char* suggestion) {
  EXPECT_EQ(error.domain(), domain);
  EXPECT_EQ(error.code(), 0);
  EXPECT_EQ(error.userInfo()->count(), 3u);
  EXPECT_EQ(error.userInfo()->objectForKey("NSLocalizedDescription"), Value(description));
  EXPECT_EQ(error.userInfo()->objectForKey("NSLocalizedFailureReason"), Value(reason));
  EXPECT_EQ(error.userInfo()->objectForKey("NSLocalizedRecoverySuggestion"), Value(suggestion));
}

TEST(NSErrorNorvik, HeaderExample) {
  const Ref<NSError> invalid =
      validationErrorWithMessage("The NI number is not valid.", "It looks like QQ 12 34 56 C.");
  expectError(*invalid, "Application Validation Failure", "The NI number is not valid.", "Input validation error",
              "It looks like QQ 12 34 56 C.");
  try {
    NSException::raise(NSRangeException, "no such employee");
  } catch (const NSException& e) {
    expectError(*errorWithMessage("The pay run failed.", e), "Application Exception", "The pay run failed.",
                "Application Exception", "no such employee");
  }
}

TEST(NSErrorNorvik, AValidationErrorOfNothingHasTheTextsThatStandForThem) {
  expectError(*validationErrorWithMessage(std::nullopt, std::nullopt), "Application Validation Failure",
              "A validation error has occurred", "Input validation error", "");
}

TEST(NSErrorNorvik, AValidationErrorKeepsAnEmptyMessage) {
  expectError(*validationErrorWithMessage("", "Type a number."), "Application Validation Failure", "",
              "Input validation error", "Type a number.");
}

TEST(NSErrorNorvik, AFileErrorHasMessageAndInfo) {
  expectError(*fileErrorWithMessage("The employer's file is locked.", "Close it elsewhere."), "Application File Error",
              "The employer's file is locked.", "File error", "Close it elsewhere.");
}

TEST(NSErrorNorvik, AFileErrorOfNothingHasTheTextsThatStandForThem) {
  expectError(*fileErrorWithMessage(std::nullopt), "Application File Error", "A file error has occurred", "File error",
              "");
}

TEST(NSErrorNorvik, AnExceptionErrorTakesTheExceptionsReasonAsSuggestion) {
  expectError(*errorWithMessage("It failed.", NSException(NSGenericException, "the disk is full")),
              "Application Exception", "It failed.", "Application Exception", "the disk is full");
}

TEST(NSErrorNorvik, AnExceptionErrorWithoutAMessageRaises) {
  EXPECT_RAISES((void)errorWithMessage(std::nullopt, NSException(NSGenericException, "why")),
                "NSInvalidArgumentException");
}

}  // namespace
}  // namespace norvik
