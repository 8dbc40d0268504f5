#include "Arguments.h"

#include <algorithm>
#include <charconv>
#include <functional>
#include <string_view>
#include <utility>

#include "LogLine.h"
#include "programs/common/CommandLine.h"

namespace norvik_log {

const char* const helpText = R"(norvik-log - finds, counts and follows the messages of logs

usage:
  norvik-log [OPTION...] SOURCE...

sources:
  FILE                  a log file; "-" is standard input
  FOLDER                a folder of rolling log files (log-3F2504.txt), read in the order in which they were begun
  FILE.sqlite           a log in an SQLite database; the file may have any name
  postgresql://...      a log in a PostgreSQL database; libpq reads the URL; put a password into ~/.pgpass or PGPASSWORD
  Several sources are merged by time.

which messages:
  -l, --level LEVEL     messages of this level and of more severe ones: error, warn, info, debug, verbose. A number
                        selects only that kind of message. Lines of the form without a level are not shown
      --since TIME      messages at this time or later
      --until TIME      messages before this time
      --thread THREAD   messages of a thread, by its number, its name, its queue's label, or "label:number"
  -t, --text TEXT       messages whose text contains TEXT as it was logged
  -e, --pattern REGEX   messages whose text matches the regular expression (PCRE2); ^ and $ match at the ends of lines
  -i, --ignore-case     compares TEXT and REGEX without regard to case

times:
  now, today, yesterday, monday, 14:00, "yesterday 14:00", "2 hours ago", 2021-05-10, "2021-05-10 13:30:12.045",
  2021-05-10T13:30:12.045Z, "2021-05-10 13:30 +01:00". A day alone is its first moment. A time without Z or an offset
  is in the machine's zone.
      --utc             times without an offset are UTC: those you write, and those of the chart and the page
      --log-zone ZONE   the zone of lines whose time has no offset, such as Europe/London (default: the machine's).
                        In an hour that the clocks showed twice, times count as the first pass until they step back
                        by more than a minute; each file of a folder begins with the first pass

what is shown:
  (nothing)             the lines as they are in the log
  -c, --count           a chart: the number of messages of each level in each hour
      --json            one JSON object per line
      --html FILE       a page with a search box; the file is written completely or not at all
  -H, --with-source     the source before each line
      --color WHEN      auto (on a terminal, unless NO_COLOR is set), always or never
  -f, --follow          the existing messages, then new ones; a folder is followed across rolls
      --patience N      gives up a server that has not answered for N seconds (default: 60)
  -h, --help            this text
      --version         the version of the program

exit status:
  0  messages were found
  1  no message was found
  2  something could not be read or written, or the command line is invalid; standard error has the reason
)";

namespace {

struct Option {
  std::string_view name;
  char letter;  // 0: none
  bool hasValue;
};

constexpr Option options[] = {
    {"--level", 'l', true},        {"--since", 0, true},     {"--until", 0, true},          {"--thread", 0, true},
    {"--text", 't', true},         {"--pattern", 'e', true}, {"--ignore-case", 'i', false}, {"--utc", 0, false},
    {"--log-zone", 0, true},       {"--count", 'c', false},  {"--json", 0, false},          {"--html", 0, true},
    {"--with-source", 'H', false}, {"--color", 0, true},     {"--colour", 0, true},         {"--follow", 'f', false},
    {"--patience", 0, true},       {"--help", 'h', false},   {"--version", 0, false}};

/// The options in order, with their values, and the sources.
struct Words {
  std::vector<std::pair<std::string_view, std::string>> options;
  std::vector<std::string> sources;
};

const Option& optionNamed(std::string_view name, const std::string& word) {
  const auto* const found =
      std::find_if(std::begin(options), std::end(options), [&](const Option& option) { return option.name == name; });
  if (found == std::end(options)) throw UsageError("there is no option \"" + programs::withoutValue(word) + "\"");
  return *found;
}

Words wordsOf(const std::vector<std::string>& words) {
  Words result;
  const auto add = [&](const Option& option, std::string value) {
    const auto spelling = [](std::string_view name) { return name == "--colour" ? "--color" : name; };
    const auto isSame = [&](const auto& other) { return spelling(other.first) == spelling(option.name); };
    if (option.hasValue && std::any_of(result.options.begin(), result.options.end(), isSame)) {
      throw UsageError(std::string(option.name) + " is given twice");
    }
    result.options.emplace_back(option.name, std::move(value));
  };
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::string& word = words[i];
    const auto valueBehind = [&](std::string_view name) {
      if (i + 1 == words.size()) throw UsageError(std::string(name) + " needs a value");
      return words[++i];
    };
    if (word == "--") {
      result.sources.insert(result.sources.end(), words.begin() + static_cast<std::ptrdiff_t>(i) + 1, words.end());
      break;
    }
    if (word.starts_with("--")) {
      const std::size_t equals = word.find('=');
      const Option& option = optionNamed(std::string_view(word).substr(0, equals), word);
      if (!option.hasValue && equals != word.npos) throw UsageError(std::string(option.name) + " takes no value");
      if (!option.hasValue) {
        add(option, "");
      } else {
        add(option, equals != word.npos ? word.substr(equals + 1) : valueBehind(option.name));
      }
    } else if (word.size() > 1 && word[0] == '-') {
      for (std::size_t at = 1; at < word.size(); ++at) {
        const auto* const option = std::find_if(std::begin(options), std::end(options),
                                                [&](const Option& other) { return other.letter == word[at]; });
        if (option == std::end(options)) {
          throw UsageError("there is no option \"" + programs::withoutValue("-" + word.substr(at)) + "\"");
        }
        if (!option->hasValue) {
          add(*option, "");
          continue;
        }
        add(*option, at + 1 < word.size() ? word.substr(at + 1) : valueBehind(option->name));
        break;
      }
    } else if (word.empty()) {
      throw UsageError("a source needs a name");
    } else {
      result.sources.push_back(word);
    }
  }
  return result;
}

int levelOf(const std::string& value) {
  if (const auto level = levelNamed(value)) return *level;
  throw UsageError("--level takes error, warn, info, debug, verbose or a number from 1, not \"" + value + "\"");
}

Arguments::Colour colourOf(const std::string& value) {
  if (value == "auto") return Arguments::Colour::Auto;
  if (value == "always") return Arguments::Colour::Always;
  if (value == "never") return Arguments::Colour::Never;
  throw UsageError("--color takes auto, always or never, not \"" + value + "\"");
}

std::chrono::seconds patienceOf(const std::string& value) {
  constexpr int longest = 86'400;
  int seconds = 0;
  const char* const end = value.data() + value.size();
  const auto [stop, error] = std::from_chars(value.data(), end, seconds);
  if (error != std::errc() || stop != end || seconds < 1 || seconds > longest) {
    throw UsageError("--patience takes a number of seconds from 1 to " + std::to_string(longest) + ", not \"" + value +
                     "\"");
  }
  return std::chrono::seconds(seconds);
}

void setForm(Arguments& arguments, Arguments::Form form) {
  if (arguments.form != Arguments::Form::Lines && arguments.form != form) {
    throw UsageError("--count, --json and --html exclude each other; give one of them");
  }
  arguments.form = form;
}

const std::string& notEmpty(std::string_view name, const std::string& value) {
  if (value.empty()) throw UsageError(std::string(name) + " needs a value");
  return value;
}

}  // namespace

Arguments parseArguments(const std::vector<std::string>& words) {
  Words split = wordsOf(words);
  Arguments arguments;
  for (const auto& [name, value] : split.options) {
    if (name == "--help") {
      arguments.task = Arguments::Task::Help;
      return arguments;
    }
    if (name == "--version") {
      arguments.task = Arguments::Task::Version;
      return arguments;
    }
    if (name == "--level") arguments.level = levelOf(value);
    if (name == "--since") arguments.since = value;
    if (name == "--until") arguments.until = value;
    if (name == "--thread") arguments.thread = notEmpty(name, value);
    if (name == "--text") arguments.text = notEmpty(name, value);
    if (name == "--pattern") arguments.pattern = notEmpty(name, value);
    if (name == "--ignore-case") arguments.ignoresCase = true;
    if (name == "--utc") arguments.isUtc = true;
    if (name == "--log-zone") arguments.logZone = notEmpty(name, value);
    if (name == "--count") setForm(arguments, Arguments::Form::Count);
    if (name == "--json") setForm(arguments, Arguments::Form::Json);
    if (name == "--html") {
      setForm(arguments, Arguments::Form::Html);
      arguments.html = notEmpty(name, value);
      if (programs::beginsWithTilde(value)) {
        throw UsageError(
            "--html \"" + value +
            "\" begins with ~, which the shell replaces only at the beginning of a word; write the whole path");
      }
    }
    if (name == "--with-source") arguments.hasSources = true;
    if (name == "--color" || name == "--colour") arguments.colour = colourOf(value);
    if (name == "--follow") arguments.follows = true;
    if (name == "--patience") arguments.patience = patienceOf(value);
  }
  arguments.sources = std::move(split.sources);
  if (arguments.sources.empty())
    throw UsageError("no source is given; name a file, a folder of log files or a database");
  const bool isAtOnce = arguments.form == Arguments::Form::Html || arguments.form == Arguments::Form::Count;
  if (arguments.follows && isAtOnce)
    throw UsageError("--follow never ends, so it cannot be combined with --count or --html");
  const bool isInputRead =
      std::find(arguments.sources.begin(), arguments.sources.end(), "-") != arguments.sources.end();
  if (arguments.follows && isInputRead) {
    throw UsageError("standard input cannot be followed; without --follow it is read to its end");
  }
  return arguments;
}

}  // namespace norvik_log
