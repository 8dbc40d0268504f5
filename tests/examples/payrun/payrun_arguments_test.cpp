// The pay run's command line.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "tests/examples/payrun/PayrunProgram.h"

namespace payrun_test {
namespace {

using testing::HasSubstr;

TEST(PayrunArguments, HelpNamesEveryOptionFileAndStatus) {
  const TemporaryFolder folder;
  const Result result = runPayrun(folder, {"--help"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.err, "");
  for (const char* word :
       {"--input",      "--month",       "--output",   "--log ",     "--logs",     "--watch",    "--payslips",
        "--html",       "--pdf",         "--template", "--generate", "--diagnose", "--help",     "--version",
        "employer.ini", "employees.csv", "items.csv",  "SIGINT",     "SIGTERM",    "exit status"}) {
    EXPECT_THAT(result.out, HasSubstr(word));
  }
  for (const std::string& line : linesOf(result.out)) EXPECT_LE(line.size(), 120U) << line;
}

TEST(PayrunArguments, PagesNameEveryOptionFileAndStatus) {
  const std::string manual = TemporaryFolder::read(PAYRUN_PAGES "/payrun.1");
  const std::string completion = TemporaryFolder::read(PAYRUN_PAGES "/payrun.bash");
  for (const std::string option : {"input", "month", "output", "log", "logs", "watch", "payslips", "html", "pdf",
                                   "template", "generate", "diagnose", "help", "version"}) {
    EXPECT_THAT(manual, HasSubstr("\\-\\-" + option));
    EXPECT_THAT(completion, HasSubstr("--" + option));
  }
  for (const char* word : {"employer.ini", "employees.csv", "items.csv", "SIGINT", "SIGTERM", "EXIT STATUS"}) {
    EXPECT_THAT(manual, HasSubstr(word));
  }
}

/// The words that bash offers after the given words, without directories and files.
std::string offered(const std::string& words) {
  const std::string command = "bash -c 'source " PAYRUN_PAGES "/payrun.bash; COMP_WORDS=(payrun " + words +
                              "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _payrun; echo \"${COMPREPLY[@]}\"'";
  std::FILE* const output = ::popen(command.c_str(), "r");
  std::string text;
  if (output == nullptr) return text;
  for (int c; (c = std::fgetc(output)) != EOF;) text += static_cast<char>(c);
  ::pclose(output);
  return text;
}

TEST(PayrunArguments, BashCompletesThem) {
  EXPECT_EQ(offered("--pay"), "--payslips\n");
  EXPECT_EQ(offered("--month 1"), "1 10 11 12\n");
  EXPECT_EQ(offered("--log = s"), "sqlite= syslog\n");
  EXPECT_EQ(offered("--generate 4"), "\n");
  EXPECT_EQ(offered("--input " PAYRUN_PAGES "/example"), PAYRUN_PAGES "/example-employer\n");
}

TEST(PayrunArguments, VersionIsOneLine) {
  const TemporaryFolder folder;
  const Result result = runPayrun(folder, {"--version"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.out, testing::MatchesRegex("payrun [0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

TEST(PayrunArguments, AValueMayFollowAnEqualsSign) {
  const TemporaryFolder folder;
  const Result result =
      runPayrun(folder, {"--input=" + exampleEmployer().string(), "--month=1", "--logs=" + folder.path("logs")});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(result.out, HasSubstr("Tax month 1 of 2024-25: 6 April 2024 to 5 May 2024"));
}

TEST(PayrunArguments, ACommandLineThatCannotBeFollowedIsRefused) {
  const struct {
    std::vector<std::string> arguments;
    const char* complaint;
  } rows[] = {
      {{}, "--input is missing"},
      {{"--input", "x"}, "--month is missing"},
      {{"--month", "1"}, "--input is missing"},
      {{"--input", "x", "--month", "0"}, "--month takes a number from 1 to 12, not \"0\""},
      {{"--input", "x", "--month", "13"}, "--month takes a number from 1 to 12, not \"13\""},
      {{"--input", "x", "--month", "1x"}, "--month takes a number from 1 to 12, not \"1x\""},
      {{"--input", "x", "--month", "-1"}, "--month takes a number from 1 to 12, not \"-1\""},
      {{"--input", "x", "--month"}, "--month needs a value"},
      {{"--input=", "--month", "1"}, "--input needs a value"},
      {{"--input", "x", "--input", "y", "--month", "1"}, "--input is given twice"},
      {{"--input", "x", "--month", "1", "--colour"}, "there is no option \"--colour\""},
      {{"employer"}, "there is no option \"employer\""},
      {{"--generate", "0", "--input", "x"}, "--generate takes a number from 1 to 1000000, not \"0\""},
      {{"--generate", "1000001", "--input", "x"}, "--generate takes a number from 1 to 1000000, not \"1000001\""},
      {{"--generate", "5", "--input", "x", "--month", "1"}, "--generate cannot be combined with --month"},
      {{"--generate", "5", "--input", "x", "--watch"}, "--generate cannot be combined with --watch"},
      {{"--generate", "5"}, "--input is missing"},
      {{"--generate", "5", "--input", "x", "--payslips"}, "--generate cannot be combined with --payslips"},
      {{"--generate", "5", "--input", "x", "--html", "y"}, "--generate cannot be combined with --html"},
      {{"--watch", "--input", "x", "--month", "1", "--payslips"}, "--watch cannot be combined with --payslips"},
      {{"--watch", "--input", "x", "--month", "1", "--html", "y"}, "--watch cannot be combined with --html"},
      {{"--input", "x", "--month", "1", "--html"}, "--html needs a value"},
      {{"--input", "x", "--month", "1", "--template", "y"}, "--template needs --payslips, --html or --pdf"},
      {{"--watch", "--input", "x"}, "--month is missing"},
      {{"--input", "x", "--month", "1", "--log", "paper"},
       "--log takes console, file, sqlite=PATH, postgres=URL and syslog, with commas between them, not \"paper\""},
      {{"--input", "x", "--month", "1", "--logs=~"},
       "--logs \"~\" begins with ~, which the shell replaces only at the beginning of a word; write the whole path"},
      {{"--input", "x", "--month", "1", "--output=~/report.txt"},
       "--output \"~/report.txt\" begins with ~, which the shell replaces only at the beginning of a word; write the "
       "whole path"},
      {{"--input=~/employer", "--month", "1"},
       "--input \"~/employer\" begins with ~, which the shell replaces only at the beginning of a word; write the "
       "whole path"},
      {{"--input", "x", "--month", "1", "--log", "file,sqlite=~/pay.db"},
       "--log sqlite \"~/pay.db\" begins with ~, which the shell replaces only at the beginning of a word; write the "
       "whole path"},
      {{"--diagnose", "--input", "x"}, "--diagnose cannot be combined with --input"},
      {{"--diagnose", "--logs", "x"}, "--diagnose cannot be combined with --logs"},
      {{"--diagnose", "--generate", "5"}, "--diagnose cannot be combined with --generate"},
      {{"--diagnose=all"}, "--diagnose takes no value"},
      {{"--watch=yes", "--input", "x", "--month", "1"}, "--watch takes no value"},
  };
  for (const auto& row : rows) {
    const TemporaryFolder folder;
    const Result result = runPayrun(folder, row.arguments);
    EXPECT_EQ(result.status, 2) << row.complaint;
    EXPECT_EQ(result.out, "") << row.complaint;
    EXPECT_EQ(result.err, std::string("payrun: ") + row.complaint + "; see payrun --help\n");
    EXPECT_TRUE(std::filesystem::is_empty(folder.path())) << row.complaint;
  }
}

TEST(PayrunArguments, WhatMayBeAPasswordIsNotRepeated) {
  const std::string server = "postgresql://clerk:hunter2@db/pay";
  const struct {
    std::vector<std::string> words;
    const char* complaint;
  } rows[] = {
      {{"--postgres=" + server}, "there is no option \"--postgres=...\""},
      {{"--postgres", server}, "there is no option \"--postgres\""},
      {{server}, "there is no option \"postgresql:...\""},
      {{"password=hunter2"}, "there is no option \"password=...\""},
      {{"--diagnose=" + server}, "--diagnose takes no value"},
      {{"--input", "x", "--month", "1", "--log", "file,pg=" + server},
       "--log takes console, file, sqlite=PATH, postgres=URL and syslog, with commas between them, not \"pg=...\""},
      {{"--input", "x", "--month", "1", "--log", server},
       "--log takes console, file, sqlite=PATH, postgres=URL and syslog, with commas between them, not "
       "\"postgresql:...\""},
      {{"--input", "x", "--month", "1", "--log", "postgres=" + server + ",postgres=" + server},
       "--log has \"postgres=\" twice"},
  };
  for (const auto& row : rows) {
    const TemporaryFolder folder;
    const Result result = runPayrun(folder, row.words);
    EXPECT_EQ(result.status, 2) << row.complaint;
    EXPECT_EQ(result.err, std::string("payrun: ") + row.complaint + "; see payrun --help\n");
  }
}

}  // namespace
}  // namespace payrun_test
