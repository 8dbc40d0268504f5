#include "Output.h"

#include <gtest/gtest.h>

#include "HtmlOutput.h"
#include "VisibleText.h"
#include "tests/programs/norvik-log/FoundIn.h"
#include "tests/support/TemporaryFolder.h"

namespace norvik_log {
namespace {

using norvik_log_test::foundIn;

std::string jsonOf(const std::string& log) {
  std::string json;
  for (auto& found : foundIn(log, Filter())) {
    found.record.bytes = found.bytes;
    found.record.source = "log \"1\"";
    appendJson(json, found.record);
  }
  return json;
}

TEST(JsonOutput, HasWhatTheLineSaysAndNothingElse) {
  EXPECT_EQ(
      jsonOf("2021-05-10T13:30:12.045Z WARN    [com.norvik.main-thread:0471] PayRun.cpp:42  Zo\xc3\xab\\n\\\"\n"),
      "{\"time\":\"2021-05-10T13:30:12.045Z\",\"level\":\"WARN\",\"queue\":\"com.norvik.main-thread\",\"thread\":471,"
      "\"file\":\"PayRun.cpp\",\"line\":42,\"text\":\"Zo\xc3\xab\\\\n\\\\\\\"\",\"source\":\"log \\\"1\\\"\"}\n");
  EXPECT_EQ(
      jsonOf("2021/05/10 14:30:12:045  40 payslips\nwritten\n"),
      "{\"time\":\"2021-05-10T14:30:12.045Z\",\"text\":\"40 payslips\\nwritten\",\"source\":\"log \\\"1\\\"\"}\n");
  EXPECT_EQ(jsonOf("foreign\n"), "{\"text\":\"foreign\",\"source\":\"log \\\"1\\\"\"}\n");
}

TEST(JsonOutput, IsValidWhateverTheBytes) {
  EXPECT_EQ(jsonOf(std::string("\0\x01\t\r\x1f\x7f\"\\/", 9)),
            "{\"text\":\"\\u0000\\u0001\\t\\r\\u001f\\u007f\\\"\\\\/\",\"source\":\"log \\\"1\\\"\"}\n");
  EXPECT_EQ(jsonOf("\xff\xc3(\xed\xa0\x80\xc0\xaf\xf4\x90\x80\x80"),
            "{\"text\":\"\xef\xbf\xbd\xef\xbf\xbd(\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd"
            "\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd\xef\xbf\xbd\",\"source\":\"log \\\"1\\\"\"}\n");
}

TEST(VisibleText, CannotChangeHowItIsShown) {
  std::string visible;
  appendVisible(visible, std::string("\x1b[2J\0\t\n\x7f\xff\xc2\x85\xe2\x80\xae\xe2\x81\xa6 Zo\xc3\xab", 22),
                LineFeeds::Escaped);
  EXPECT_EQ(visible, "\\x1b[2J\\x00\t\\x0a\\x7f\\xff\\x85\\u202e\\u2066 Zo\xc3\xab");
  visible.clear();
  appendVisible(visible, "a\nb", LineFeeds::Kept);
  EXPECT_EQ(visible, "a\nb");
}

TEST(HtmlOutput, EscapesEverything) {
  std::string html;
  appendHtml(html, "<script>alert(\"x\")</script> & 'y'\x1b");
  EXPECT_EQ(html, "&lt;script&gt;alert(&quot;x&quot;)&lt;/script&gt; &amp; &#39;y&#39;\\x1b");
}

TEST(HtmlOutput, IsThereInWholeOrNotAtAll) {
  const norvik::test::TemporaryFolder folder;
  const WallClock clock(norvik::NSTimeZone::timeZoneForSecondsFromGMT(0));
  Record record;
  record.bytes = "text </pre> here";
  { HtmlOutput(folder.path("log.html"), clock, "UTC").add(record); }
  EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
  HtmlOutput output(folder.path("log.html"), clock, "<UTC>");
  output.add(record);
  output.finish();
  const std::string page = norvik::test::TemporaryFolder::read(folder.path("log.html"));
  EXPECT_NE(page.find("<pre>text &lt;/pre&gt; here<small>"), std::string::npos) << page;
  EXPECT_NE(page.find("times: &lt;UTC&gt;"), std::string::npos) << page;
  EXPECT_EQ(page.rfind("http"), page.find("http-equiv"));  // it loads nothing
}

TEST(HtmlOutput, AnEmptyFirstLineIsShown) {
  const norvik::test::TemporaryFolder folder;
  const WallClock clock(norvik::NSTimeZone::timeZoneForSecondsFromGMT(0));
  const std::string text = "2021-05-10 13:00:00\nsecond";
  HtmlOutput output(folder.path("log.html"), clock, "UTC");
  output.add(recordOf(text, *headTime(text.data(), text.data() + text.size())));
  output.finish();
  const std::string page = norvik::test::TemporaryFolder::read(folder.path("log.html"));
  EXPECT_NE(page.find("<pre>\n\nsecond<small>"), std::string::npos) << page;  // browsers ignore the first line feed
}

std::string chartOf(const std::vector<std::pair<const char*, int>>& messages, std::size_t width,
                    const char* zone = "UTC", bool hasColours = false) {
  CountOutput count(WallClock(norvik::NSTimeZone::timeZoneWithName(zone)), width, hasColours);
  for (const auto& [time, flag] : messages) {
    Record record;
    const std::string text = time;
    if (const auto read = headTime(text.data(), text.data() + text.size())) record.time = read->milliseconds;
    record.flag = flag;
    count.add(record);
  }
  return count.chart();
}

TEST(CountOutput, HasARowForEachHourAndAColumnForEachLevel) {
  EXPECT_EQ(chartOf({{"2021-05-10 13:00:00", 1},
                     {"2021-05-10 13:59:59.999", 4},
                     {"2021-05-10 13:30:00", 4},
                     {"2021-05-10 13:30:00", 4},
                     {"2021-05-10 14:00:00", 2},
                     {"?", 0}},
                    70),
            "hour              error  warn  info  no level\n"
            "2021-05-10 13:00      1     0     3         0  EEEEEEIIIIIIIIIIIIIIIII\n"
            "2021-05-10 14:00      0     1     0         0  WWWWWW\n"
            "no time               0     0     0         1  ......\n"
            "all                   1     1     3         1\n");
}

TEST(CountOutput, FitsTheWidth) {
  std::vector<std::pair<const char*, int>> messages;
  for (int i = 0; i < 1234; ++i) messages.emplace_back("2021-05-10 13:00:00", 1 << i % 7);
  messages.emplace_back("2021-05-10 15:00:00", 1);
  for (std::size_t width = 30; width < 200; ++width) {
    const std::string chart = chartOf(messages, width);
    for (std::size_t at = 0; at < chart.size(); at = chart.find('\n', at) + 1) {
      EXPECT_LE(chart.find('\n', at) - at, width) << chart;
    }
  }
  EXPECT_EQ(chartOf(messages, 40),
            "hour               all\n"
            "2021-05-10 13:00  1234  EEEWWIIDDVVooooo\n"
            "2021-05-10 15:00     1  E\n"
            "all               1235\n");
}

TEST(CountOutput, AnHourThatTheClocksShowTwiceHasTwoRows) {
  EXPECT_EQ(chartOf({{"2021-10-31 00:30:00", 4}, {"2021-10-31 01:30:00", 4}}, 60, "Europe/London"),
            "hour                     info\n"
            "2021-10-31 01:00 +01:00     1  " +
                std::string(29, 'I') +
                "\n"
                "2021-10-31 01:00 +00:00     1  " +
                std::string(29, 'I') +
                "\n"
                "all                         2\n");
}

TEST(CountOutput, HoursAreThoseOfTheZone) {
  EXPECT_EQ(chartOf({{"2021-05-10 13:29:59.999", 1}, {"2021-05-10 13:30:00", 1}}, 40, "Asia/Kolkata"),
            "hour              error\n"
            "2021-05-10 18:00      1  EEEEEEEEEEEEEEE\n"
            "2021-05-10 19:00      1  EEEEEEEEEEEEEEE\n"
            "all                   2\n");
}

TEST(CountOutput, IsInColourWhereThatIsWanted) {
  EXPECT_EQ(chartOf({{"2021-05-10 13:00:00", 1}}, 30, "UTC", true),
            "hour              all\n2021-05-10 13:00    1  \x1b[1;31mEEEEEEE\x1b[0m\n");
}

TEST(CountOutput, OfNothingIsNothing) { EXPECT_EQ(chartOf({}, 80), ""); }

}  // namespace
}  // namespace norvik_log
