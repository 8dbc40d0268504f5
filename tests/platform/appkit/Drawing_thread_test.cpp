#include "NorvikCore/platform/appkit/NSStringDrawing.h"
#include "NorvikCore/platform/appkit/PDFDocument.h"

#include "tests/support/OnThreads.h"
#include "tests/support/QuietFork.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>
#include <atomic>
#include <string>

using namespace norvik;

// More threads than there are sets of fonts.
TEST(DrawingThreads, MeasureTheSameAtOnce) {
  const auto font = NSFont::fontWithName("DejaVu Sans", 11);
  const double wages = widthInFont("wages", *font);
  test::onThreads(20, [&](int number) {
    for (int round = 0; round < 50; ++round) {
      EXPECT_EQ(widthInFont("wages", *font), wages);
      EXPECT_GT(widthInFont(NSString("word" + std::to_string(number * round)), *font), wages / 2);
    }
  });
}

TEST(DrawingThreads, DrawDocumentsAtOnce) {
  const auto text = NSAttributedString::attributedStringWithString("Net pay 1,234.50\n\u0645\u0631\u062D\u0628\u0627");
  test::onThreads(4, [&](int) {
    for (int round = 0; round < 5; ++round) {
      PDFDocument document;
      document.drawText(*text, {56, 56}, 300);
      EXPECT_GT(document.data()->length(), 1000u);
    }
  });
}

TEST(DrawingThreads, AChildDrawsWhileOthersMakeDocuments) {
  NK_SKIP_WHERE_A_BUSY_FORK_IS_NOT_SUPPORTED();
  const auto draw = [](int pages) {
    PDFDocument document({200, 100});
    for (int page = 0; page < pages; ++page) {
      document.drawText(*NSAttributedString::attributedStringWithString("Net pay 1,234.50"), {10, 10});
      document.beginPage();
    }
    return document.data()->length();
  };
  std::atomic<bool> isOver{false};
  test::onThreads(3, [&](int number) {
    while (number > 0 && !isOver) {
      EXPECT_GT(draw(3), 1000u);
      for (int i = 0; i < 20; ++i) const PDFDocument empty({200, 100});
    }
    for (int round = 0; number == 0 && round < 40; ++round) {
      const pid_t child = fork();
      if (child == 0) {
        alarm(20);  // because a child that waits for a lock would wait until the tests end
        _exit(draw(1) > 1000 ? 7 : 8);
      }
      int status = 0;
      waitpid(child, &status, 0);
      EXPECT_TRUE(WIFEXITED(status));
      EXPECT_EQ(WEXITSTATUS(status), 7);
    }
    isOver = isOver || number == 0;
  });
}

TEST(DrawingThreads, AChildFindsTheFontsFreeWhileOthersMeasure) {
  NK_SKIP_WHERE_A_BUSY_FORK_IS_NOT_SUPPORTED();
  const auto font = NSFont::fontWithName("DejaVu Sans", 11);
  test::onThreads(3, [&](int number) {
    for (int round = 0; round < 10; ++round) {
      if (number > 0) {
        EXPECT_GT(widthInFont(NSString("fork" + std::to_string(number * 100 + round)), *font), 0);
        continue;
      }
      const pid_t child = fork();
      if (child == 0) _exit(widthInFont("wages", *font) > 0 ? 7 : 8);
      int status = 0;
      waitpid(child, &status, 0);
      EXPECT_EQ(WEXITSTATUS(status), 7);
    }
  });
}
