#include "NorvikCore/platform/foundation/NSLog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "NorvikCore/platform/collections/NSError.h"
#include "NorvikCore/platform/kernel/SystemLog.h"

namespace norvik {
namespace {

using ::testing::ElementsAre;

TEST(NSLog, HeaderExample) {
  const kernel::SystemLogCapture capture;
  const NSString path = "/var/pay";
  const Ref<NSError> error = NSError::posixError(13, "open", path);
  NSLog("Error creating %@: %@", path, error->localizedDescription());
  EXPECT_THAT(capture.lines(), ElementsAre("Error creating /var/pay: open /var/pay: Permission denied"));
}

TEST(NSLog, FormatsNumbersTextsAndAbsentValues) {
  const kernel::SystemLogCapture capture;
  NSLog("%d of %s at %.2f, %@", 3, "payslips", 12.5, Ref<NSObject>());
  NSLog("100%%");
  EXPECT_THAT(capture.lines(), ElementsAre("3 of payslips at 12.50, (null)", "100%"));
}

TEST(NSLog, AnAbsentFormatWritesNothing) {
  const kernel::SystemLogCapture capture;
  NSLog(nullptr);
  NSLog(runtimeFormat(std::nullopt));
  EXPECT_TRUE(capture.lines().empty());
}

TEST(NSLog, AFormatKnownAtRunTimeReadsNothingButItsArguments) {
  const kernel::SystemLogCapture capture;
  NSLog(runtimeFormat("%s %n %@"));
  ASSERT_EQ(capture.lines().size(), 1U);
}

TEST(NSLog, TextThatIsNoUTF8IsWrittenAsUTF8) {
  const kernel::SystemLogCapture capture;
  NSLog("%@", NSString::fromBytes("pay\xFF.csv"));
  EXPECT_THAT(capture.lines(), ElementsAre("pay\uFFFD.csv"));
}

}  // namespace
}  // namespace norvik
