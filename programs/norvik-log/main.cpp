// programs/norvik-log/main.cpp - finds, counts and follows log messages. `norvik-log --help` explains the options.
#include <sys/resource.h>

#include <csignal>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "Arguments.h"
#include "EndBySignal.h"
#include "Filter.h"
#include "Follow.h"
#include "HtmlOutput.h"
#include "LogFolder.h"
#include "Merge.h"
#include "Output.h"
#include "Sources.h"
#include "Terminal.h"
#include "TimePhrase.h"
#include "Troubles.h"
#include "VisibleText.h"
#include "programs/common/OutputFile.h"

namespace {

using namespace norvik_log;

constexpr int found = 0, nothingFound = 1, troubled = 2;

norvik::Ref<norvik::NSTimeZone> zoneOf(const Arguments& arguments) {
  if (!arguments.isUtc) return norvik::NSTimeZone::systemTimeZone();
  return norvik::NSTimeZone::timeZoneForSecondsFromGMT(0);
}

norvik::Ref<norvik::NSTimeZone> logZoneOf(const Arguments& arguments) {
  if (!arguments.logZone) return norvik::NSTimeZone::systemTimeZone();
  auto zone = norvik::NSTimeZone::timeZoneWithName(norvik::NSString(*arguments.logZone));
  if (!zone) throw UsageError("there is no time zone \"" + *arguments.logZone + "\"");
  return zone;
}

Filter filterOf(const Arguments& arguments, const WallClock& clock) {
  const auto now = static_cast<std::int64_t>(norvik::Date::systemDate().timeIntervalSince1970() * 1000);
  Filter filter;
  filter.level = arguments.level;
  if (arguments.since) filter.since = instantOfPhrase(*arguments.since, clock, now, Pass::First);
  if (arguments.until) filter.until = instantOfPhrase(*arguments.until, clock, now, Pass::Second);
  filter.thread = arguments.thread;
  filter.text = arguments.text;
  filter.ignoresCase = arguments.ignoresCase;
  if (arguments.pattern) {
    filter.pattern = std::make_shared<Pattern>(*arguments.pattern, Pattern::Kind::Regular, arguments.ignoresCase);
  }
  return filter;
}

std::unique_ptr<Output> outputOf(const Arguments& arguments, const WallClock& clock) {
  const bool isColoured = hasColours(arguments.colour);
  switch (arguments.form) {
    case Arguments::Form::Json:
      return std::make_unique<JsonOutput>();
    case Arguments::Form::Count:
      return std::make_unique<CountOutput>(clock, outputWidth(), isColoured);
    case Arguments::Form::Html:
      return std::make_unique<HtmlOutput>(arguments.html, clock, zoneOf(arguments)->name().view());
    case Arguments::Form::Lines:
      break;
  }
  if (isColoured && isTerminal()) switchColoursOffAtEnd();
  return std::make_unique<LineOutput>(LineOutput::Style{isColoured, isTerminal(), arguments.hasSources});
}

std::unique_ptr<LogSource> sourceOf(const Arguments& arguments, const Reading& reading) {
  std::vector<std::unique_ptr<LogSource>> sources;
  for (const std::string& name : arguments.sources) sources.push_back(sourceNamed(name, reading));
  if (sources.size() == 1) return std::move(sources.front());
  return std::make_unique<Merge>(std::move(sources));
}

bool isSameFile(const std::filesystem::path& a, const std::filesystem::path& b) {
  std::error_code unknown;
  return std::filesystem::equivalent(a, b, unknown);
}

/// Refuses a page that would replace a source.
void refuseToReplaceASource(const Arguments& arguments) {
  if (arguments.form != Arguments::Form::Html) return;
  const std::filesystem::path& page = arguments.html;
  std::error_code unknown;
  const std::filesystem::path file = std::filesystem::weakly_canonical(page, unknown);
  for (const std::string& source : arguments.sources) {
    const bool isOfFolder = isLogFileName(file.filename().string()) && std::filesystem::exists(file, unknown) &&
                            isSameFile(source, file.parent_path());
    const bool isRegular = std::filesystem::is_regular_file(page, unknown);
    const bool isSource = isSameFile(source == "-" ? "/dev/stdin" : source, page);
    if (isRegular && (isOfFolder || isSource)) {
      throw UsageError("the page would replace " + page.string() + ", which is a source; give the page another name");
    }
  }
}

/// Raises the limit of open files, because each source and each followed file is open.
void allowManyFiles() {
  rlimit limit{};
  if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
  limit.rlim_cur = limit.rlim_max;
  ::setrlimit(RLIMIT_NOFILE, &limit);
}

int read(const Arguments& arguments) {
  allowManyFiles();
  const WallClock clock(zoneOf(arguments)), logClock(logZoneOf(arguments));
  const Filter filter = filterOf(arguments, clock);
  Troubles troubles;
  const Reading reading{filter, logClock, troubles, arguments.sources.size() > 1, arguments.patience};
  refuseToReplaceASource(arguments);
  const std::unique_ptr<Output> output = outputOf(arguments, clock);
  bool isAnyFound = false;
  const auto show = [&](const Batch& batch) {
    for (std::size_t i = 0; i < batch.size(); ++i) output->add(batch[i]);
    isAnyFound |= !batch.isEmpty();
  };
  if (arguments.follows) {
    follow(arguments.sources, reading, show, [&] { output->flush(); });
  } else {
    const std::unique_ptr<LogSource> source = sourceOf(arguments, reading);
    bool isMore = true;
    while (isMore) {
      Batch batch;
      isMore = source->next(batch);
      show(batch);
    }
  }
  output->finish();
  if (troubles.any()) return troubled;
  return isAnyFound ? found : nothingFound;
}

int runTask(const Arguments& arguments) {
  switch (arguments.task) {
    case Arguments::Task::Help:
      programs::printWhole(helpText);
      break;
    case Arguments::Task::Version:
      programs::printWhole("norvik-log " NORVIK_LOG_VERSION "\n");
      break;
    case Arguments::Task::Read:
      return read(arguments);
  }
  return found;
}

/// Writes one line, whatever the user typed.
int complain(std::string_view reason, std::string_view hint = "") {
  std::string line = "norvik-log: ";
  appendVisible(line, reason, LineFeeds::Escaped);
  line += hint;
  line += '\n';
  std::fwrite(line.data(), 1, line.size(), stderr);
  return troubled;
}

}  // namespace

int main(int argc, char** argv) {
  holdStandardStreams();
  endInOrderBySignals();
  std::signal(SIGXFSZ, SIG_IGN);  // a write beyond the size limit fails instead of ending the process
  try {
    return runTask(parseArguments({argv + 1, argv + argc}));
  } catch (const UsageError& error) {
    return complain(error.what(), "; see norvik-log --help");
  } catch (const std::bad_alloc&) {
    return complain("there is not enough memory");
  } catch (const std::exception& error) {
    return complain(error.what());
  }
}
