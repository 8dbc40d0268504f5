// examples/payrun/main.cpp - pays an employer's people for one tax month, from files. `payrun --help` says how.
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "Arguments.h"
#include "Generator.h"
#include "InputError.h"
#include "InputReader.h"
#include "NorvikCore/logging/DDLogMacros.h"
#include "OutputFile.h"
#include "PayRun.h"
#include "Report.h"
#include "RunLog.h"
#include "StopSignals.h"
#include "Watch.h"

namespace {

using namespace payrun;

constexpr int succeeded = 0, failed = 1, refused = 2;

/// The report must not take the place of what it was made from.
void checkOutput(const Arguments& arguments) {
  for (const char* name : inputFiles) {
    std::error_code error;
    if (arguments.output && std::filesystem::equivalent(*arguments.output, arguments.input / name, error)) {
      throw UsageError("--output " + payrun::quoted(arguments.output->string()) + " is a file of the input");
    }
  }
}

void pay(const Arguments& arguments) {
  const Employer employer = readEmployer(arguments.input);
  PayRun run(employer, arguments.month);
  const std::size_t items = readItems(arguments.input, employer, [&](const PayItem& item) { run.add(item); });
  DDLogInfo("%s: %zu employees, %zu items", arguments.input.c_str(), employer.employees().size(), items);
  const std::string text = report(run);
  if (arguments.output) {
    writeWhole(*arguments.output, text);
  } else {
    printWhole(text);
  }
}

template <class Task>
void runLogged(const Arguments& arguments, Task&& task) {
  checkOutput(arguments);
  const RunLog log(arguments.logs);
  try {
    task();
  } catch (const std::exception& error) {
    DDLogError("%s", error.what());
    throw;
  }
}

int complain(const std::exception& error, int status) {
  std::fprintf(stderr, "payrun: %s\n", error.what());
  return status;
}

int runTask(const Arguments& arguments) {
  switch (arguments.task) {
    case Arguments::Task::Help:
      printWhole(helpText);
      break;
    case Arguments::Task::Version:
      printWhole("payrun " PAYRUN_VERSION "\n");
      break;
    case Arguments::Task::Generate:
      generateEmployer(arguments.people, arguments.input);
      break;
    case Arguments::Task::PayRun:
      runLogged(arguments, [&] { pay(arguments); });
      break;
    case Arguments::Task::Watch: {
      StopSignals signals;  // before the log starts a thread: a signal goes to any that has not blocked it
      runLogged(arguments, [&] { watch(arguments, signals); });
      break;
    }
  }
  return succeeded;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return runTask(parseArguments({argv + 1, argv + argc}));
  } catch (const UsageError& error) {
    std::fprintf(stderr, "payrun: %s; payrun --help tells more\n", error.what());
    return refused;
  } catch (const InputError& error) {
    return complain(error, refused);
  } catch (const std::exception& error) {
    return complain(error, failed);
  }
}
