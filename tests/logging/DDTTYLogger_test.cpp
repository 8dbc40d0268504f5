// The console's output, byte by byte; console_child.cpp is the process that logs. Its standard error is a pipe, a
// terminal or a file, and its environment has no TERM and no XcodeColors unless the test sets them.
#include "NorvikCore/logging/DDTTYLogger.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

extern char** environ;

namespace norvik {
namespace {

using ::testing::MatchesRegex;

using Words = std::vector<std::string>;

Words operator+(Words words, const Words& more) {
  words.insert(words.end(), more.begin(), more.end());
  return words;
}

struct Environment {
  std::optional<std::string> terminal, plugIn;
};

enum class Kind : std::uint8_t { pipe, smallPipe, terminal, pipeWithoutReader, full };

/// The child and the test's ends of its standard descriptors.
class Console {
 public:
  Console(const Environment& environment, const Words& commands, Kind kind = Kind::pipe) {
    int in[2] = {-1, -1}, out[2] = {-1, -1};
    if (pipe2(in, O_CLOEXEC) != 0 || pipe2(out, O_CLOEXEC) != 0) ADD_FAILURE() << "no pipe";
    const int error = openError(kind);
    Words variables;
    for (char** at = environ; *at; ++at) {
      if (std::strncmp(*at, "TERM=", 5) != 0 && std::strncmp(*at, "XcodeColors=", 12) != 0) variables.push_back(*at);
    }
    if (environment.terminal) variables.push_back("TERM=" + *environment.terminal);
    if (environment.plugIn) variables.push_back("XcodeColors=" + *environment.plugIn);
    Words arguments = Words{NORVIK_CONSOLE_CHILD} + commands;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, in[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, error, STDERR_FILENO);
    if (posix_spawn(&id_, arguments[0].c_str(), &actions, nullptr, pointers(arguments).data(),
                    pointers(variables).data()) != 0) {
      ADD_FAILURE() << "cannot start " << arguments[0];
    }
    posix_spawn_file_actions_destroy(&actions);
    close(in[0]);
    close(out[1]);
    close(error);
    toChild_ = in[1];
    output_ = out[0];
  }
  Console(const Console&) = delete;
  Console& operator=(const Console&) = delete;
  ~Console() {
    if (id_ > 0) wait();
    close(output_);
    if (error_ >= 0) close(error_);
  }

  [[nodiscard]] pid_t id() const { return id_; }

  /// Waits until the child is at its next "meet".
  void meet() { EXPECT_EQ(readLine(), "met"); }
  void goOn() { EXPECT_EQ(::write(toChild_, "\n", 1), 1); }

  std::string readLine() {
    std::string line;
    for (char byte = 0; read(output_, &byte, 1) == 1 && byte != '\n';) line += byte;
    return line;
  }
  /// Reads this many bytes of standard error.
  std::string readError(std::size_t size) {
    std::string text(size, '\0');
    std::size_t done = 0;
    for (ssize_t count; done < size && (count = read(error_, text.data() + done, size - done)) > 0;) {
      done += static_cast<std::size_t>(count);
    }
    text.resize(done);
    return text;
  }
  /// The rest of standard output and of standard error, and the exit code.
  std::string readOutput() { return readAll(output_); }
  std::string readError() { return readAll(error_); }
  int wait() {
    close(toChild_);
    int status = 0;
    waitpid(std::exchange(id_, -1), &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
  }

 private:
  static std::vector<char*> pointers(Words& words) {
    std::vector<char*> all;
    for (std::string& word : words) all.push_back(word.data());
    all.push_back(nullptr);
    return all;
  }
  static std::string readAll(int descriptor) {
    std::string text;
    char bytes[4096];
    for (ssize_t count; (count = read(descriptor, bytes, sizeof bytes)) > 0;) {
      text.append(bytes, static_cast<std::size_t>(count));
    }
    return text;
  }
  /// Returns the child's end; the test's end becomes error_.
  int openError(Kind kind) {
    if (kind == Kind::full) return open("/dev/full", O_WRONLY | O_CLOEXEC);
    if (kind == Kind::terminal) {
      error_ = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
      if (error_ < 0 || grantpt(error_) != 0 || unlockpt(error_) != 0) ADD_FAILURE() << "no terminal";
      const int end = open(ptsname(error_), O_RDWR | O_NOCTTY | O_CLOEXEC);
      termios settings{};
      tcgetattr(end, &settings);
      cfmakeraw(&settings);
      tcsetattr(end, TCSANOW, &settings);
      return end;
    }
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC) != 0) ADD_FAILURE() << "no pipe";
    if (kind == Kind::smallPipe && fcntl(ends[1], F_SETPIPE_SZ, 4096) != 4096) ADD_FAILURE() << "no small pipe";
    error_ = ends[0];
    if (kind == Kind::pipeWithoutReader) close(std::exchange(error_, -1));
    return ends[1];
  }

  pid_t id_ = -1;
  int toChild_ = -1, output_ = -1, error_ = -1;
};

struct Result {
  std::string error, output;
};

/// The result of a child, which must exit with 0. Standard error is read meanwhile, because a terminal takes few
/// thousand bytes that nobody reads.
Result run(const Environment& environment, const Words& commands, Kind kind = Kind::pipe) {
  Console console(environment, commands, kind);
  Result result;
  std::thread reader;
  if (kind != Kind::pipeWithoutReader && kind != Kind::full) {
    reader = std::thread([&] { result.error = console.readError(); });
  }
  result.output = console.readOutput();
  EXPECT_EQ(console.wait(), 0);
  if (reader.joinable()) reader.join();
  return result;
}

const Environment plain{}, color16{"xterm-color", {}}, color256{"xterm-256color", {}}, plugIn{{}, "YES"};

/// The output with colours, and with a formatter, so that each line is only the text.
std::string colored(const Environment& environment, const Words& commands) {
  return run(environment, Words{"copy", "colors", "on"} + commands).error;
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

TEST(DDTTYLogger, HeaderExample) {
  EXPECT_THAT(
      run(color16, {"colors", "on", "flag", "16", "128,128,128", "-", "say", "1", "0", "no bank account for Zoë Smith"})
          .error,
      MatchesRegex("\033\\[31m[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}:[0-9]{3} "
                   "console_child\\[[0-9]+:[0-9a-f]+\\] no bank account for Zoë Smith\n\033\\[0m"));
}

TEST(DDTTYLogger, TheEnvironmentDecidesOnTheColours) {
  const std::string in16 = "\033[31mx\n\033[0m", in256 = "\033[38;5;124mx\n\033[0m",
                    inPlugIn = "\033[fg214,57,30;x\n\033[;";
  const struct {
    Environment environment;
    std::string expected;
  } rows[] = {
      {{"xterm-256color", {}}, in256},
      {{"256color", {}}, in256},
      {{"xterm-COLOR-256", "YES"}, in256},
      {{"xterm-color", {}}, in16},
      {{"Xterm-Color", "no"}, in16},
      {{"color", {}}, in16},
      {{"xterm", {}}, "x\n"},
      {{"xterm-256", {}}, "x\n"},
      {{"colo", {}}, "x\n"},
      {{"xterm", "YES"}, "x\n"},
      {{"", "YES"}, "x\n"},
      {{{}, "YES"}, inPlugIn},
      {{{}, "yes"}, "x\n"},
      {{{}, "YES "}, "x\n"},
      {{{}, ""}, "x\n"},
      {{{}, {}}, "x\n"},
  };
  for (const auto& row : rows) {
    const std::string why = row.environment.terminal.value_or("unset") + " " + row.environment.plugIn.value_or("unset");
    EXPECT_EQ(colored(row.environment, {"say", "1", "0", "x"}), row.expected) << why;
  }
}

TEST(DDTTYLogger, ATerminalGetsTheBytesOfAPipe) {
  const Words commands{"copy", "colors", "on", "say", "1", "0", "x", "say", "4", "0", "y", "say", "2", "0", "z"};
  EXPECT_EQ(run(color16, commands, Kind::terminal).error, "\033[31mx\n\033[0my\n\033[33mz\n\033[0m");
  EXPECT_EQ(run(color256, commands, Kind::terminal).error, "\033[38;5;124mx\n\033[0my\n\033[38;5;130mz\n\033[0m");
  EXPECT_EQ(run(plain, commands, Kind::terminal).error, "x\ny\nz\n");
}

TEST(DDTTYLogger, ColoursAreOffUntilTheyAreSwitchedOn) {
  const Words say{"copy", "say", "1", "0", "x"};
  EXPECT_EQ(run(color16, say).error, "x\n");
  EXPECT_EQ(run(color16, Words{"flag", "1", "255,0,0", "-"} + say).error, "x\n");
  EXPECT_EQ(run(color16, Words{"colors", "on", "colors", "off"} + say).error, "x\n");
  EXPECT_EQ(run(color16, {"colors?", "colors", "on", "colors?", "colors", "off", "colors?"}).output, "0\n1\n0\n");
}

TEST(DDTTYLogger, ALineHasForegroundBackgroundTextLineFeedAndReset) {
  const Words commands{"flag", "4", "255,0,0", "0,0,255", "say", "4", "0", "x"};
  EXPECT_EQ(colored(color16, commands), "\033[1;31m\033[44mx\n\033[0m");
  EXPECT_EQ(colored(color256, commands), "\033[38;5;196m\033[48;5;19mx\n\033[0m");
  EXPECT_EQ(colored(plugIn, commands), "\033[fg255,0,0;\033[bg0,0,255;x\n\033[;");
  EXPECT_EQ(colored(color16, {"flag", "4", "-", "0,0,0", "say", "4", "0", "x"}), "\033[40mx\n\033[0m");
  EXPECT_EQ(colored(color16, {"flag", "4", "-", "-", "say", "4", "0", "x"}), "x\n\033[0m");
}

TEST(DDTTYLogger, TheColoursOf16AreAsATerminalHasThem) {
  const struct {
    const char *rgb, *code;
  } rows[] = {
      {"0,0,0", "30"},         {"194,54,33", "31"},    {"37,188,36", "32"},    {"173,173,39", "33"},
      {"73,46,225", "34"},     {"211,56,211", "35"},   {"51,187,200", "36"},   {"203,204,205", "37"},
      {"129,131,131", "1;30"}, {"252,57,31", "1;31"},  {"49,231,34", "1;32"},  {"234,236,35", "1;33"},
      {"88,51,255", "1;34"},   {"249,53,248", "1;35"}, {"20,240,240", "1;36"}, {"233,235,235", "1;37"},
  };
  Words commands{"copy", "colors", "on"};
  std::string expected;
  for (const auto& row : rows) {
    commands = commands + Words{"flag", "4", row.rgb, row.rgb, "say", "4", "0", "x"};
    std::string background = row.code;
    background[background.size() - 2] = '4';  // 31 is 41, 1;31 is 1;41
    expected += "\033[" + std::string(row.code) + "m\033[" + background + "mx\n\033[0m";
  }
  EXPECT_EQ(run(color16, commands).error, expected);
}

TEST(DDTTYLogger, TheColoursOf256BeginAt16AndEndWithGreys) {
  EXPECT_EQ(run(color256, {"index", "47,49,49", "index", "60,42,144", "index", "66,44,183", "index", "73,46,222",
                           "index", "81,50,253", "index", "88,51,255", "index", "240,242,242", "index", "53,55,55"})
                .output,
            "0\n1\n2\n3\n4\n5\n239\n216\n");
  EXPECT_EQ(
      run(color256, {"index", "-", "index", "0,0,0", "index", "255,255,255", "index", "255,0,0", "index", "0,255,0"})
          .output,
      "0\n0\n215\n180\n30\n");
}

TEST(DDTTYLogger, WithoutColoursEveryColourIsTheFirst) {
  EXPECT_EQ(run(plain, {"index", "255,0,0", "index", "-"}).output, "0\n0\n");
  EXPECT_EQ(run(plugIn, {"index", "255,0,0"}).output, "0\n");
}

TEST(DDTTYLogger, ColoursAreLoadedOnce) {
  EXPECT_EQ(run(color16, {"load-colors", "256", "index", "88,51,255"}).output, "12\n");
  EXPECT_EQ(run(color256, {"load-colors", "16", "index", "88,51,255"}).output, "5\n");
  EXPECT_EQ(run(plain, {"load-colors", "256", "load-colors", "16", "index", "88,51,255"}).output, "5\n");
}

TEST(DDTTYLogger, TheComponentsOfAnAbsentColourAre0) {
  double red = 1, green = 1, blue = 1;
  DDTTYLogger::getRed(&red, &green, &blue, nullptr);
  EXPECT_EQ(red, 0);
  EXPECT_EQ(green, 0);
  EXPECT_EQ(blue, 0);
  DDTTYLogger::getRed(&red, nullptr, &blue, NSColor::colorWithRed(0.25, 0.5, 0.75, 1));
  EXPECT_EQ(red, 0.25);
  EXPECT_EQ(blue, 0.75);
}

TEST(DDTTYLoggerColorProfile, HeaderExample) {
  EXPECT_EQ(run(color16, {"code-of-red"}).output, "\033[1;31m\n");
  EXPECT_EQ(run(plain, {"code-of-red"}).output, "\n");
}

TEST(DDTTYLogger, AnAbsentColourHasNoCode) {
  EXPECT_EQ(
      run(color16, {"profile", "252,57,31", "-"}).output,
      "<DDTTYLoggerColorProfile: HERE mask:3 ctxt:7 fg:252,57,31 bg:0,0,0 fgCode:1;31m bgCode:(null)>\n9 0 7 0 4\n");
  EXPECT_EQ(run(plugIn, {"profile", "-", "255,255,255"}).output,
            "<DDTTYLoggerColorProfile: HERE mask:3 ctxt:7 fg:0,0,0 bg:255,255,255 fgCode:(null) bgCode:(null)>\n"
            "0 0 0 16 3\n");
  EXPECT_EQ(run(plain, {"profile", "1,2,3", "4,5,6"}).output,
            "<DDTTYLoggerColorProfile: HERE mask:3 ctxt:7 fg:1,2,3 bg:4,5,6 fgCode:(null) bgCode:(null)>\n0 0 0 0 0\n");
}

// Profiles. In 16 colours 255,0,0 is 1;31, 0,255,0 is 1;32 and 0,0,255 is 34.

const char *const red = "255,0,0", *const green = "0,255,0", *const blue = "0,0,255";
const std::string inRed = "\033[1;31mx\n\033[0m", inGreen = "\033[1;32mx\n\033[0m", inBlue = "\033[34mx\n\033[0m";

TEST(DDTTYLogger, AnErrorIsRedAndAWarningOrangeByDefault) {
  EXPECT_EQ(colored(color16, {"say", "1", "0", "x"}), "\033[31mx\n\033[0m");
  EXPECT_EQ(colored(color16, {"say", "1", "9", "x"}), "\033[31mx\n\033[0m");
  EXPECT_EQ(colored(color16, {"say", "2", "0", "x"}), "\033[33mx\n\033[0m");
  EXPECT_EQ(colored(color16, {"say", "4", "0", "x"}), "x\n");
}

TEST(DDTTYLogger, SwitchingColoursOffLoadsTheDefaultsToo) {
  EXPECT_EQ(run(color16, {"copy", "colors", "off", "flag", "4", red, "-", "colors", "on", "say", "1", "0", "x"}).error,
            "\033[31mx\n\033[0m");
}

TEST(DDTTYLogger, ColoursThatWereSetBeforeKeepTheDefaultsAway) {
  EXPECT_EQ(run(color16, {"copy", "flag", "4", red, "-", "colors", "on", "say", "1", "0", "x"}).error, "x\n");
  EXPECT_EQ(run(color16, {"copy", "tag", "pay", red, "-", "colors", "on", "say", "1", "0", "x"}).error,
            "\033[31mx\n\033[0m");
}

TEST(DDTTYLogger, DefaultsReplaceWhatWasSetForTheirFlagsAndKeepTheOthers) {
  EXPECT_EQ(colored(color16, {"flag", "1", blue, "-", "flag", "4", green, "-", "defaults", "say", "1", "0", "x", "say",
                              "4", "0", "x"}),
            "\033[31mx\n\033[0m" + inGreen);
  // Both profiles apply to a message of both flags. The warning's profile is the later one, because it was added last.
  EXPECT_EQ(run(color16, {"copy", "flag", "3", blue, "-", "colors", "on", "defaults", "say", "1", "0", "x", "say", "3",
                          "0", "x"})
                .error,
            "\033[31mx\n\033[0m\033[33mx\n\033[0m");
  EXPECT_EQ(run(color16, {"copy", "flag", "1", blue, "-", "flag", "3", green, "-", "colors", "on", "defaults", "say",
                          "1", "0", "x"})
                .error,
            inGreen);  // the error's profile keeps its place before that for both flags
}

TEST(DDTTYLogger, TheLastProfileOfEveryContextCounts) {
  EXPECT_EQ(colored(color16, {"flag", "5", red, "-", "flag", "4", green, "-", "say", "4", "0", "x"}), inGreen);
  EXPECT_EQ(colored(color16, {"flag", "4", green, "-", "flag", "5", red, "-", "say", "4", "0", "x"}), inRed);
}

TEST(DDTTYLogger, AProfileOfTheMessagesContextCountsWhereverItIs) {
  const Words exact{"context", "4", "7", blue, "-"}, before{"flag", "4", red, "-"}, after{"flag", "12", green, "-"};
  const Words say{"say", "4", "7", "x"};
  EXPECT_EQ(colored(color16, exact + before + after + say), inBlue);
  EXPECT_EQ(colored(color16, before + exact + after + say), inBlue);
  EXPECT_EQ(colored(color16, before + after + exact + say), inBlue);
  EXPECT_EQ(colored(color16, before + after + exact + Words{"say", "4", "8", "x"}), inGreen);
  EXPECT_EQ(colored(color16, Words{"context", "12", "7", red, "-"} + exact + say), inRed);  // the first profile
}

TEST(DDTTYLogger, TheSameMaskAndContextReplaceAProfile) {
  EXPECT_EQ(
      colored(color16, {"flag", "4", red, "-", "flag", "5", green, "-", "flag", "4", blue, "-", "say", "4", "0", "x"}),
      inGreen);  // the replaced profile keeps its place
  EXPECT_EQ(colored(color16, {"flag", "4", red, "-", "flag", "4", blue, "-", "say", "4", "0", "x"}), inBlue);
}

TEST(DDTTYLogger, ATagCountsBeforeFlags) {
  const Words tag{"tag", "pay", blue, "-", "flag", "4", red, "-"};
  EXPECT_EQ(colored(color16, tag + Words{"say-tagged", "4", "0", "pay", "x"}), inBlue);
  EXPECT_EQ(colored(color16, tag + Words{"say-tagged", "4", "0", "tax", "x"}), inRed);
  EXPECT_EQ(colored(color16, tag + Words{"say", "4", "0", "x"}), inRed);
  EXPECT_EQ(colored(color16, tag + Words{"tag", "pay", green, "-", "say-tagged", "4", "0", "pay", "x"}), inGreen);
  EXPECT_EQ(colored(color16, {"no-tag", blue, "say", "4", "0", "x"}), "x\n");
}

TEST(DDTTYLogger, ClearingAFlagClearsContext0Only) {
  const Words everywhere{"flag", "4", red, "-"}, inContext0{"context", "4", "0", blue, "-"};
  EXPECT_EQ(colored(color16, everywhere + Words{"clear-flag", "4", "say", "4", "0", "x"}), inRed);
  EXPECT_EQ(colored(color16, everywhere + inContext0 + Words{"clear-flag", "4", "say", "4", "0", "x"}), inRed);
  EXPECT_EQ(colored(color16, inContext0 + Words{"clear-flag", "4", "say", "4", "0", "x"}), "x\n");
  EXPECT_EQ(colored(color16, everywhere + Words{"clear-context", "4", "2147483647", "say", "4", "0", "x"}), "x\n");
  EXPECT_EQ(colored(color16, everywhere + Words{"clear-context", "4", "7", "say", "4", "0", "x"}), inRed);
}

TEST(DDTTYLogger, FlagsAndTagsAreClearedApartOrTogether) {
  const Words both{"flag", "4", red, "-", "tag", "pay", blue, "-"};
  const Words say{"say", "4", "0", "x", "say-tagged", "8", "0", "pay", "x"};
  EXPECT_EQ(colored(color16, both + say), inRed + inBlue);
  EXPECT_EQ(colored(color16, both + Words{"clear-flags"} + say), "x\n" + inBlue);
  EXPECT_EQ(colored(color16, both + Words{"clear-tags"} + say), inRed + "x\n");
  EXPECT_EQ(colored(color16, both + Words{"clear-tag", "pay"} + say), inRed + "x\n");
  EXPECT_EQ(colored(color16, both + Words{"clear-tag", "tax"} + say), inRed + inBlue);
  EXPECT_EQ(colored(color16, both + Words{"clear"} + say), "x\nx\n");
}

TEST(DDTTYLogger, AChangeOnTheLoggersQueueIsMadeAtOnce) {
  EXPECT_EQ(colored(color16, {"on-its-queue"}), "\033[1;31mat once\n\033[0m");
}

TEST(DDTTYLogger, SwitchingColoursOnTakesItsTurnOnTheLoggersQueueToo) {
  EXPECT_EQ(run(color16, {"copy", "switch-on-on-its-queue", "say", "1", "0", "x"}).error,
            "before its turn\n\033[31mx\n\033[0m");
}

// Lines

TEST(DDTTYLogger, ThereIsOneInstance) {
  EXPECT_EQ(run(plain, {"second"}).output, "none\n");
  EXPECT_EQ(DDTTYLogger::sharedInstance().get(), DDTTYLogger::sharedInstance().get());
  EXPECT_EQ(*DDTTYLogger::sharedInstance()->loggerName(), "cocoa.quillmarch.ttyLogger");
  EXPECT_STREQ(dispatch_queue_get_label(DDTTYLogger::sharedInstance()->loggerQueue()), "cocoa.quillmarch.ttyLogger");
}

TEST(DDTTYLogger, ALineTellsTheProcessAndTheThread) {
  Console console(plain, {"thread", "say", "4", "0", "x"});
  const std::string process = std::to_string(console.id()), thread = console.readLine();
  const std::string error = console.readError();
  EXPECT_THAT(error, MatchesRegex("[-0-9]{10} [:0-9]{12} console_child\\[" + process + ":" + thread + "\\] x\n"));
}

TEST(DDTTYLogger, AForkedChildHasItsOwnNumber) {
  const std::string error = run(plain, {"fork"}).error;
  EXPECT_THAT(error, MatchesRegex(".* console_child\\[([0-9]+):[0-9a-f]+\\] child [0-9]+\n"));
  const std::size_t begin = error.find('[') + 1;
  const std::string shown = error.substr(begin, error.find(':', begin) - begin);
  EXPECT_TRUE(error.ends_with("] child " + shown + "\n")) << error;
}

TEST(DDTTYLogger, AFormatterThatGivesTheMessagesOwnTextCountsAsNone) {
  EXPECT_EQ(run(plain, {"copy", "say", "4", "0", "x"}).error, "x\n");
  EXPECT_THAT(run(plain, {"same", "say", "4", "0", "x"}).error, MatchesRegex(".* console_child.* x\n"));
  // Empty texts are identical.
  EXPECT_THAT(run(plain, {"copy", "say", "4", "0", ""}).error, MatchesRegex(".* console_child.*\\] \n"));
  EXPECT_EQ(run(plain, {"drop", "say", "4", "0", "x"}).error, "");
}

TEST(DDTTYLogger, ALineFeedIsAddedToOneThatIsThere) {
  EXPECT_EQ(run(plain, {"copy", "say", "4", "0", "x\n", "say", "4", "0", "y"}).error, "x\n\ny\n");
  EXPECT_EQ(run(plain, {"copy", "say", "4", "0", "\n"}).error, "\n\n");
}

TEST(DDTTYLogger, AZeroByteIsWritten) {
  EXPECT_EQ(run(plain, {"copy", "say-zero"}).error, std::string("a\0b\n", 4));
  EXPECT_TRUE(run(plain, {"say-zero"}).error.ends_with(std::string("] a\0b\n", 6)));
}

TEST(DDTTYLogger, ALineIsOneCallWhateverItsLength) {
  for (const std::size_t length : {1U, 4095U, 4096U, 4097U, 60'000U}) {
    const std::string number = std::to_string(length);
    const Result formatted = run(plain, {"copy", "say-long", number, "calls"});
    EXPECT_EQ(formatted.error, std::string(length, 'x') + "\n");
    EXPECT_EQ(formatted.output, "1 of 5\n") << length;
    const Result own = run(plain, {"say-long", number, "calls"});
    EXPECT_TRUE(own.error.ends_with("] " + std::string(length, 'x') + "\n")) << length;
    EXPECT_EQ(own.output, "1 of 13\n") << length;
  }
}

TEST(DDTTYLogger, ALineIsOneCallOnATerminalToo) {
  for (const std::size_t length : {1U, 4095U, 4096U, 4097U}) {
    const std::string number = std::to_string(length);
    const Result own = run(plain, {"say-long", number, "calls"}, Kind::terminal);
    EXPECT_TRUE(own.error.ends_with("] " + std::string(length, 'x') + "\n")) << length;
    EXPECT_EQ(own.output, "1 of 13\n") << length;
  }
}

TEST(DDTTYLogger, LinesOfARunAreOneCallEach) {
  for (const Kind kind : {Kind::pipe, Kind::terminal}) {
    const Result result = run(color16, {"colors", "on", "forget-calls", "say-run", "300", "calls"}, kind);
    EXPECT_EQ(result.output, "300 of 13\n");
    const std::vector<std::string> lines = linesOf(result.error);
    ASSERT_EQ(lines.size(), 300U);
    for (std::size_t i = 0; i < lines.size(); ++i) {
      EXPECT_TRUE(lines[i].ends_with("] " + std::to_string(i))) << lines[i];
    }
  }
}

// Standard error that does not accept a line

TEST(DDTTYLogger, AnInterruptedCallIsMadeAgain) {
  const Result result = run(plain, {"copy", "interrupt", "3", "say", "4", "0", "x", "calls", "say", "4", "0", "y"});
  EXPECT_EQ(result.error, "x\ny\n");
  EXPECT_EQ(result.output, "4 of 5\n");
}

TEST(DDTTYLogger, WhatIsTakenInPartIsFinished) {
  const Result result = run(color16, {"copy", "flag", "4", red, "-", "colors", "on", "take-at-most", "5", "say", "4",
                                      "0", "0123456789", "calls"});
  EXPECT_EQ(result.error, "\033[1;31m0123456789\n\033[0m");
  EXPECT_EQ(result.output, "5 of 1\n");  // 22 bytes; the last call writes the rest of the reset code
}

TEST(DDTTYLogger, ALineThatIsRefusedIsLostAndTheNextOneIsAttempted) {
  EXPECT_EQ(
      run(plain, {"copy", "fail", std::to_string(ENOSPC), "say", "4", "0", "x", "fail", "0", "say", "4", "0", "y"})
          .error,
      "y\n");
}

TEST(DDTTYLogger, AClosedStandardErrorDoesNoHarm) {
  EXPECT_EQ(run(plain, {"count-beside", "close", "say", "4", "0", "x", "say-run", "50", "counted"}).output, "51\n");
  EXPECT_EQ(run(plain, {"count-beside", "say-run", "50", "counted"}, Kind::pipeWithoutReader).output, "50\n");
  EXPECT_EQ(run(plain, {"count-beside", "say-run", "50", "counted"}, Kind::full).output, "50\n");
}

/// The lines 0 to count - 1 of "say-many".
std::string manyLines(std::size_t count) {
  std::string text;
  for (std::size_t i = 0; i < count; ++i) {
    std::string line = std::to_string(i);
    line.resize(99, '.');
    text += line + "\n";
  }
  return text;
}

TEST(DDTTYLogger, AFullPipeHoldsUpOthersForASecondAtMostAndLosesLines) {
  Console console(plain,
                  {"copy", "count-beside", "say-many", "5000", "counted", "meet", "say-until-taken", "after", "meet"},
                  Kind::smallPipe);
  EXPECT_EQ(console.readLine(), "5000");
  console.meet();
  // The pipe has room for 40 lines of 100 bytes; the 41st waits.
  EXPECT_EQ(console.readError(4100), manyLines(41));
  console.goOn();
  EXPECT_EQ(console.readError(6), "after\n");
  console.meet();
  console.goOn();
  EXPECT_EQ(console.readError(), "");
  EXPECT_EQ(console.wait(), 0);
}

TEST(DDTTYLogger, AFullPipeThatDoesNotBlockLosesWholeLines) {
  Console console(plain,
                  {"copy", "non-blocking", "count-beside", "say-many", "5000", "counted", "meet", "say-long", "6000",
                   "meet", "say-until-taken", "after", "meet"},
                  Kind::smallPipe);
  EXPECT_EQ(console.readLine(), "5000");
  console.meet();
  EXPECT_EQ(console.readError(4000), manyLines(40));
  console.goOn();
  console.meet();  // the pipe has 4096 of the 6001 bytes; the others are written before the next line
  EXPECT_EQ(console.readError(4096), std::string(4096, 'x'));
  console.goOn();
  EXPECT_EQ(console.readError(1911), std::string(1904, 'x') + "\nafter\n");
  console.meet();
  console.goOn();
  EXPECT_EQ(console.readError(), "");
  EXPECT_EQ(console.wait(), 0);
}

TEST(DDTTYLogger, TheRestOfALineIsNotWrittenByAForkedChildToo) {
  Console console(plain, {"copy", "non-blocking", "say-long", "6000", "meet", "fork", "say", "4", "0", "after"},
                  Kind::smallPipe);
  console.meet();  // the pipe has 4096 of the 6001 bytes
  EXPECT_EQ(console.readError(4096), std::string(4096, 'x'));
  console.goOn();
  EXPECT_THAT(console.readError(), MatchesRegex("child [0-9]+\n" + std::string(1904, 'x') + "\nafter\n"));
  EXPECT_EQ(console.wait(), 0);
}

TEST(DDTTYLogger, ALineWithoutMemoryForItIsLostAndTheNextOneIsWritten) {
  for (const Kind kind : {Kind::pipe, Kind::terminal}) {
    for (const char* formatter : {"copy", "same"}) {
      const std::string line(5000, 'x');
      const Result result = run(plain, {formatter, "say-with-less-memory", line, "say", "4", "0", "after"}, kind);
      const std::vector<std::string> lines = linesOf(result.error);
      ASSERT_GE(lines.size(), 2U) << formatter;
      for (std::size_t i = 0; i + 1 < lines.size(); ++i) EXPECT_TRUE(lines[i].ends_with(line)) << formatter;
      EXPECT_TRUE(lines.back().ends_with("after")) << formatter;
    }
  }
}

TEST(DDTTYLogger, ALineWithoutMemoryForItsRestIsEndedWhereItIs) {
  Console console(
      plain, {"copy", "non-blocking", "say-with-less-memory", std::string(6000, 'x'), "meet", "say", "4", "0", "after"},
      Kind::smallPipe);
  console.meet();
  EXPECT_EQ(console.readError(4096), std::string(4096, 'x'));
  console.goOn();
  EXPECT_EQ(console.readError(), "\nafter\n");
  EXPECT_EQ(console.wait(), 0);
}

TEST(DDTTYLogger, ATerminalThatNobodyReadsHoldsUpOthersForASecondAtMost) {
  Console console(plain,
                  {"copy", "count-beside", "say-many", "20000", "counted", "meet", "say-until-taken", "after", "meet"},
                  Kind::terminal);
  EXPECT_EQ(console.readLine(), "20000");
  console.meet();
  console.goOn();
  std::string text;
  while (!text.ends_with("after\n")) {
    const std::string more = console.readError(1);
    if (more.empty()) break;
    text += more;
  }
  ASSERT_TRUE(text.ends_with("after\n"));
  text.resize(text.size() - 6);
  ASSERT_GT(text.size(), 100U);
  ASSERT_LT(text.size(), 2'000'000U);  // some were lost
  EXPECT_EQ(text, manyLines(text.size() / 100));
  console.meet();
  console.goOn();
  EXPECT_EQ(console.wait(), 0);
}

}  // namespace
}  // namespace norvik
