#include "NorvikCore/platform/kernel/CodePlace.h"

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/kernel/HostInfo.h"

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace norvik::kernel {

NK_EXPORT int namedInThisProgram(int number);
NK_EXPORT __attribute__((noinline)) int namedInThisProgram(int number) { return number + 1; }

namespace {

std::uintptr_t addressOf(const void* code) { return reinterpret_cast<std::uintptr_t>(code); }

TEST(CodePlace, AFunctionOfThisProgramIsInItsFile) {
  prepareCodePlaces();
  const std::uintptr_t address = reinterpret_cast<std::uintptr_t>(&namedInThisProgram);
  const CodePlace place = placeOfCode(address + 1);
  EXPECT_EQ(place.module, executablePath());
  EXPECT_STREQ(place.symbol, "_ZN6norvik6kernel18namedInThisProgramEi");
  EXPECT_EQ(place.into, 1U);
  Dl_info info{};
  ASSERT_NE(dladdr(reinterpret_cast<const void*>(address), &info), 0);
  EXPECT_EQ(place.offset, address + 1 - addressOf(info.dli_fbase));
}

TEST(CodePlace, AFunctionOfASharedObjectIsInThatFile) {
  const void* const code = dlsym(RTLD_DEFAULT, "getpid");
  ASSERT_NE(code, nullptr);
  const CodePlace place = placeOfCode(addressOf(code));
  EXPECT_THAT(std::string(place.module), ::testing::HasSubstr("libc.so"));
  EXPECT_THAT(std::string(place.symbol), ::testing::HasSubstr("getpid"));
  EXPECT_EQ(place.into, 0U);
}

TEST(CodePlace, WhatIsNoCodeHasNoPlace) {
  for (const std::uintptr_t address : {std::uintptr_t{0}, std::uintptr_t{16}, UINTPTR_MAX}) {
    const CodePlace place = placeOfCode(address);
    EXPECT_EQ(place.module, nullptr);
    EXPECT_EQ(place.symbol, nullptr);
    EXPECT_EQ(place.offset, address);
  }
}

}  // namespace
}  // namespace norvik::kernel
