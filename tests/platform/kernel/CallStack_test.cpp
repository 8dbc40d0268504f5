#include "NorvikCore/platform/kernel/CallStack.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/kernel/SystemLog.h"

// Outside the unnamed namespace and exported, so that their names can be found.
namespace payroll {

struct Employer {};

[[gnu::noinline]] NK_EXPORT std::vector<std::string> innermost(std::size_t skip) {
  std::vector<std::string> symbols = norvik::kernel::callStackSymbols(skip);
  symbols.shrink_to_fit();  // prevents a tail call above
  return symbols;
}

[[gnu::noinline]] NK_EXPORT std::vector<std::string> runFor(const Employer&, int month) {
  std::vector<std::string> symbols = innermost(static_cast<std::size_t>(month));
  symbols.shrink_to_fit();
  return symbols;
}

}  // namespace payroll

namespace norvik {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

TEST(CallStack, HeaderExample) {
  const kernel::SystemLogCapture console;
  for (const std::string& frame : kernel::callStackSymbols()) kernel::writeSystemLog(frame);
  const std::vector<std::string> lines = console.lines();
  ASSERT_GE(lines.size(), 2U);
  EXPECT_THAT(lines[0], StartsWith("0   kernel_tests "));
  EXPECT_THAT(lines[1], StartsWith("1   "));
}

TEST(CallStack, TheCallerComesFirstThenItsCallers) {
  const std::vector<std::string> symbols = payroll::runFor(payroll::Employer(), 0);
  ASSERT_GE(symbols.size(), 3U);
  EXPECT_THAT(symbols[0], HasSubstr("payroll::innermost(unsigned long) + "));
  EXPECT_THAT(symbols[1], HasSubstr("payroll::runFor(payroll::Employer const&, int) + "));
}

TEST(CallStack, SkippedFramesAreLeftOut) {
  const std::vector<std::string> symbols = payroll::runFor(payroll::Employer(), 1);
  ASSERT_FALSE(symbols.empty());
  EXPECT_THAT(symbols[0], HasSubstr("payroll::runFor(payroll::Employer const&, int) + "));
  EXPECT_THAT(payroll::runFor(payroll::Employer(), 1'000'000), ::testing::IsEmpty());
}

TEST(CallStack, AFrameTellsNumberFileAndAddress) {
  const std::vector<std::string> symbols = payroll::runFor(payroll::Employer(), 0);
  EXPECT_THAT(symbols[0], StartsWith("0   kernel_tests "));
  EXPECT_THAT(symbols[1], StartsWith("1   kernel_tests "));
  EXPECT_THAT(symbols[0], HasSubstr(" 0x0000"));
}

TEST(CallStack, AnAddressThatBelongsToNothingIsShownAsANumber) {
  void* const nowhere[] = {reinterpret_cast<void*>(0x10)};
  const std::vector<std::string> symbols = kernel::symbolsOfAddresses(nowhere);
  ASSERT_EQ(symbols.size(), 1U);
  EXPECT_EQ(symbols[0], "0   ?                              0x0000000000000010 ? + 0x10");
}

TEST(CallStack, OnlyLinkersNamesOfCPlusPlusAreDemangled) {
  EXPECT_EQ(kernel::demangled("_ZN7payroll6runForERKNS_8EmployerEi"), "payroll::runFor(payroll::Employer const&, int)");
  EXPECT_EQ(kernel::demangled("main"), "main");
  EXPECT_EQ(kernel::demangled("_Zwhatever!"), "_Zwhatever!");
}

std::vector<void*> deep(int levels) {
  std::vector<void*> addresses = levels > 0 ? deep(levels - 1) : kernel::callStackAddresses();
  addresses.shrink_to_fit();
  return addresses;
}

TEST(CallStack, VeryDeepStacksAreCutAtTheOuterEnd) { EXPECT_EQ(deep(500).size(), 128U); }

}  // namespace
}  // namespace norvik
