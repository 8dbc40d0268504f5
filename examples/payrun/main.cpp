// examples/payrun/main.cpp - computes the pay of an employer's people for one tax month, from files. See `payrun
// --help`.
#include <cstdio>
#include <exception>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "Arguments.h"
#include "Diagnosis.h"
#include "DocumentHTML.h"
#include "DocumentPDF.h"
#include "DocumentTerminal.h"
#include "Generator.h"
#include "InputError.h"
#include "InputReader.h"
#include "NorvikCore/logging/DDLogMacros.h"
#include "Notices.h"
#include "OutputFile.h"
#include "PayRun.h"
#include "PayslipFiles.h"
#include "PayslipTemplate.h"
#include "Report.h"
#include "RunLog.h"
#include "StopSignals.h"
#include "Terminal.h"
#include "Watch.h"

namespace {

using namespace payrun;

constexpr int succeeded = 0, failed = 1, refused = 2;

/// Refuses an output file that is an input file, the template, or a file of the log's database.
void checkOutput(const Arguments& arguments) {
  if (!arguments.output) return;
  const auto isOutput = [&](const std::filesystem::path& path) {
    std::error_code error;
    if (std::filesystem::equivalent(*arguments.output, path, error)) return true;
    // Files that do not exist yet are compared by path.
    const auto placeOf = [&](const auto& name) { return std::filesystem::weakly_canonical(behindLink(name), error); };
    return placeOf(*arguments.output) == placeOf(path);
  };
  const std::string option = "--output " + payrun::quoted(arguments.output->string());
  for (const char* name : inputFiles) {
    if (isOutput(arguments.input / name)) throw UsageError(option + " is a file of the input");
  }
  if (arguments.form && isOutput(*arguments.form)) throw UsageError(option + " is the template");
  if (!arguments.log.sqlite) return;
  for (const char* suffix : {"", "-wal", "-shm", "-journal"}) {
    if (isOutput(arguments.log.sqlite->string() + suffix))
      throw UsageError(option + " is a file of the log's database");
  }
}

void printPayslips(const PayRun& run, const PayslipTemplate& form) {
  const norvik::TerminalColors colors = outputColors();
  const std::size_t width = outputWidth();
  std::string text;
  for (std::size_t i = 0; i < run.payslips().size(); ++i) {
    if (i > 0) text += "\n" + std::string(width, '=') + "\n\n";
    text += terminalDocument(form.payslip(run, i), width, colors);
    constexpr std::size_t chunk = 1 << 16;
    if (text.size() >= chunk) printWhole(std::exchange(text, {}));
  }
  printWhole(text);
}

void pay(const Arguments& arguments) {
  std::optional<PayslipTemplate> form;  // read first, so that an error in it ends the run before anything is written
  if (arguments.wantsPayslips()) form.emplace(arguments.form ? TextFile(*arguments.form) : installedTemplate());
  const Employer employer = readEmployer(arguments.input);
  PayRun run(employer, arguments.month);
  const std::size_t items = readItems(arguments.input, employer, [&](const PayItem& item) { run.add(item); });
  DDLogInfo("%s: %zu employees, %zu items", arguments.input.c_str(), employer.employees().size(), items);
  if (arguments.html) writePayslips(run, *form, *arguments.html, "html", htmlDocument);
  if (arguments.pdf) writePayslips(run, *form, *arguments.pdf, "pdf", pdfDocument);
  const bool isReportShown = arguments.output || !arguments.payslips;
  if (arguments.output) {
    writeWhole(*arguments.output, report(run));
  } else if (isReportShown) {
    printWhole(report(run));
  }
  if (arguments.payslips) printPayslips(run, *form);
  tellNotices(run, isReportShown);
}

template <class Task>
void runLogged(const Arguments& arguments, Task&& task) {
  checkOutput(arguments);
  const RunLog log(arguments.log);
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
    case Arguments::Task::Diagnose:
      printWhole(diagnosis(PAYRUN_VERSION));
      break;
    case Arguments::Task::Generate:
      generateEmployer(arguments.people, arguments.input);
      break;
    case Arguments::Task::PayRun:
      runLogged(arguments, [&] { pay(arguments); });
      break;
    case Arguments::Task::Watch: {
      StopSignals signals;  // before the log starts a thread, because any thread may get a signal
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
    std::fprintf(stderr, "payrun: %s; see payrun --help\n", error.what());
    return refused;
  } catch (const InputError& error) {
    return complain(error, refused);
  } catch (const std::exception& error) {
    return complain(error, failed);
  }
}
