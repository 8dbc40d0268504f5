// examples/payroll-desk/main.cpp - the payslips of an employer in a window.
//
//   payroll-desk [FOLDER]                                    opens the employer's folder, or the last one
//   payroll-desk --offscreen-demo DIR [FOLDER|PEOPLE]        a scripted session; pictures in DIR

#include <QApplication>

#include <charconv>
#include <cstdio>
#include <exception>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "Demo.h"
#include "DeskWindow.h"
#include "Generator.h"
#include "MainThreadWatch.h"
#include "NorvikCore/Categories/NSUserDefaults+Norvik.h"
#include "NorvikCore/logging/LogLevel.h"
#include "NorvikCore/platform/foundation/NSLocale.h"
#include "NorvikCore/qt/NKMainQueueRunner.h"

namespace {

using namespace norvik;

/// The session in DIR, with the employer's folder FOLDER, or with an invented employer of that many people.
int runDemoIn(desk::MainThreadWatch& application, const std::filesystem::path& target, const std::string& employer) {
  std::size_t people = 0;
  const char* const end = employer.data() + employer.size();
  if (std::from_chars(employer.data(), end, people).ptr != end) return desk::runDemo(application, employer, target);
  const std::filesystem::path invented = target / "invented";
  std::filesystem::remove_all(invented);
  payrun::generateEmployer(people, invented);
  return desk::runDemo(application, invented, target);
}

int runWindow(const std::vector<std::string>& arguments) {
  auto desk = make<desk::Desk>();
  desk::DeskWindow window(desk);
  window.show();
  const std::filesystem::path folder = arguments.empty() ? navLastRootDirectory().bytes() : arguments.front();
  if (!arguments.empty() || std::filesystem::exists(folder / "employer.ini")) desk->open(folder, 1);
  return QApplication::exec();
}

}  // namespace

int main(int argc, char** argv) {
  const bool isDemo = argc >= 3 && std::string_view(argv[1]) == "--offscreen-demo";
  if (isDemo) ::qputenv("QT_QPA_PLATFORM", "offscreen");
  desk::MainThreadWatch application(argc, argv);
  const NKMainQueueRunner runner;
  ddLogLevel = LOG_LEVEL_INFO;
  const std::vector<std::string> arguments(argv + std::min(argc, isDemo ? 3 : 1), argv + argc);
  try {
    if (isDemo) return runDemoIn(application, argv[2], arguments.empty() ? "10000" : arguments.front());
    return runWindow(arguments);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "payroll-desk: %s\n", error.what());
    return 1;
  }
}
