#include "Arguments.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>

#include "Terminal.h"
#include "tests/support/TemporaryFolder.h"

namespace norvik_log {
namespace {

std::string complaint(const std::vector<std::string>& words) {
  try {
    (void)parseArguments(words);
  } catch (const UsageError& error) {
    return error.what();
  }
  return "";
}

TEST(Arguments, OptionsHaveLongAndShortNamesInAnyOrder) {
  const Arguments arguments =
      parseArguments({"logs", "--level=warn", "-t", "a b", "-ie", "x+", "--since", "14:00", "--until=15:00", "--thread",
                      "7", "-H", "--utc", "--log-zone", "UTC", "--color=always", "--", "-odd"});
  EXPECT_EQ(arguments.sources, (std::vector<std::string>{"logs", "-odd"}));
  EXPECT_EQ(arguments.level, 2);
  EXPECT_EQ(arguments.text, "a b");
  EXPECT_EQ(arguments.pattern, "x+");
  EXPECT_TRUE(arguments.ignoresCase);
  EXPECT_EQ(arguments.since, "14:00");
  EXPECT_EQ(arguments.until, "15:00");
  EXPECT_EQ(arguments.thread, "7");
  EXPECT_TRUE(arguments.hasSources);
  EXPECT_TRUE(arguments.isUtc);
  EXPECT_EQ(arguments.logZone, "UTC");
  EXPECT_EQ(arguments.colour, Arguments::Colour::Always);
  EXPECT_EQ(arguments.form, Arguments::Form::Lines);
  EXPECT_FALSE(arguments.follows);
  EXPECT_EQ(parseArguments({"x", "--html", "./~"}).html, "./~");
  EXPECT_EQ(parseArguments({"x", "--html", "~x"}).html, "~x");
  EXPECT_EQ(arguments.patience, std::chrono::seconds(60));
  EXPECT_EQ(parseArguments({"x", "--patience", "1"}).patience, std::chrono::seconds(1));
  EXPECT_EQ(parseArguments({"x", "--patience=86400"}).patience, std::chrono::hours(24));
}

TEST(Arguments, AShortOptionsValueMayFollowAtOnce) {
  const Arguments arguments = parseArguments({"-lerror", "-fH", "log"});
  EXPECT_EQ(arguments.level, 1);
  EXPECT_TRUE(arguments.follows);
  EXPECT_TRUE(arguments.hasSources);
  EXPECT_EQ(arguments.sources, std::vector<std::string>{"log"});
}

TEST(Arguments, RefusesWhatCannotBeFollowed) {
  const struct {
    std::vector<std::string> words;
    const char* what;
  } rows[] = {
      {{}, "no source is given; name a file, a folder of log files or a database"},
      {{""}, "a source needs a name"},
      {{"--loud", "x"}, "there is no option \"--loud\""},
      {{"-z", "x"}, "there is no option \"-z\""},
      {{"x", "--level"}, "--level needs a value"},
      {{"x", "-t"}, "--text needs a value"},
      {{"x", "--text="}, "--text needs a value"},
      {{"x", "--json=1"}, "--json takes no value"},
      {{"x", "-t", "a", "--text", "b"}, "--text is given twice"},
      {{"x", "--level", "loud"}, "--level takes error, warn, info, debug, verbose or a number from 1, not \"loud\""},
      {{"x", "--patience", "0"}, "--patience takes a number of seconds from 1 to 86400, not \"0\""},
      {{"x", "--patience", "86401"}, "--patience takes a number of seconds from 1 to 86400, not \"86401\""},
      {{"x", "--patience", "1s"}, "--patience takes a number of seconds from 1 to 86400, not \"1s\""},
      {{"x", "--color", "red"}, "--color takes auto, always or never, not \"red\""},
      {{"x", "--html=~/page.html"},
       "--html \"~/page.html\" begins with ~, which the shell replaces only at the beginning of a word; write the "
       "whole path"},
      {{"x", "--json", "--count"}, "--count, --json and --html exclude each other; give one of them"},
      {{"x", "--html", "a", "-f"}, "--follow never ends, so it cannot be combined with --count or --html"},
  };
  for (const auto& row : rows) EXPECT_EQ(complaint(row.words), row.what);
}

TEST(Arguments, PagesNameEveryOption) {
  const std::string manual = norvik::test::TemporaryFolder::read(NORVIK_LOG_PAGES "/norvik-log.1");
  const std::string completion = norvik::test::TemporaryFolder::read(NORVIK_LOG_PAGES "/norvik-log.bash");
  for (const std::string option :
       {"level", "since", "until", "thread", "text", "pattern", "ignore-case", "utc", "log-zone", "count", "json",
        "html", "with-source", "color", "follow", "patience", "help", "version"}) {
    EXPECT_NE(std::string(helpText).find("--" + option), std::string::npos) << option;
    EXPECT_NE(completion.find("--" + option), std::string::npos) << option;
    std::string escaped = "\\-\\-" + option;
    for (std::size_t at = escaped.find('-', 4); at != std::string::npos; at = escaped.find('-', at + 2))
      escaped.insert(at, "\\");
    EXPECT_NE(manual.find(escaped), std::string::npos) << escaped;
  }
}

/// The words that bash offers after the given words.
std::string offered(const std::string& words) {
  const std::string command = "bash -c 'source " NORVIK_LOG_PAGES "/norvik-log.bash; COMP_WORDS=(norvik-log " + words +
                              "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _norvik_log; echo \"${COMPREPLY[@]}\"'";
  std::FILE* const output = ::popen(command.c_str(), "r");
  std::string text;
  if (output == nullptr) return text;
  for (int c; (c = std::fgetc(output)) != EOF;) text += static_cast<char>(c);
  ::pclose(output);
  return text;
}

TEST(Arguments, BashCompletesThem) {
  EXPECT_EQ(offered("--le"), "--level\n");
  EXPECT_EQ(offered("--level w"), "warn\n");
  EXPECT_EQ(offered("--level = e"), "error\n");
  EXPECT_EQ(offered("--color = a"), "auto always\n");
  EXPECT_EQ(offered("--text x"), "\n");
}

}  // namespace
}  // namespace norvik_log
