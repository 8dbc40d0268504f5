#include "Arguments.h"

#include <charconv>
#include <map>
#include <set>

namespace payrun {

const char* const helpText =
    R"(payrun - the payslips of an employer for one tax month, from files, in exact decimals

usage:
  payrun --input FOLDER --month N [--watch] [--output FILE] [--logs FOLDER]
  payrun --generate N --input FOLDER
  payrun --help | --version

options:
  --input FOLDER    the folder that holds the employer's three files
  --month N         the tax month to pay: 1 is 6 April to 5 May, 12 is 6 March to 5 April
  --output FILE     write the report there instead of to standard output; the file is there in whole or not at all,
                    keeps the permissions of one that it replaces, and may not be one of the input's
  --logs FOLDER     write the log there, a new file each day; the last five and today's stay
                    (default: Logs/payrun in the user's library folder)
  --watch           stay after the report, and pay anew whenever one of the three files changes; SIGINT (Ctrl-C) and
                    SIGTERM end it
  --generate N      write the three files of an invented employer of N people, 1 to 1000000, with a tax year of items
                    each, to the folder of --input, which must not hold any of them; the same N gives the same files
  --help            this text
  --version         the program's version

input, all UTF-8:
  employer.ini      [employer] with name, paye_reference and tax_year (such as 2024-25);
                    [departments] with one line CODE = Name for each department
  employees.csv     employee,name,department,sort_code,account
                    department is a code of employer.ini; sort_code is six digits, in pairs or not; account is eight
  items.csv         employee,date,kind,description,amount
                    employee is a number of employees.csv; date is 2024-05-28 or 2024-05-28 14:30:00; kind is pay,
                    bonus or deduction; amount is as typed: 1,234.50 or 1234.5, a correction with a minus sign,
                    999,999,999.99 at most

  The CSV files are comma-separated with the headings above; fields with commas, quotation marks or line ends stand in
  quotation marks (RFC 4180). What the report shows, numbers and names, must be one line without control characters.
  What an item is worth was decided by the payroll; no tax is computed here.

  An item counts on its day. One with a time of day counts on the nearest start of day (up to 12:59:59 its own, from
  13:00:00 the next), and the log says so. Days must lie in the tax year. Amounts are rounded to the penny, a half
  away from zero, each on its own before they are summed.

output:
  A payslip summary for each employee (pay with bonuses, deductions, net, and the same to date since 6 April), totals
  for each department and for the employer, and the employer's net pay in words.

  With --watch, each change of the files prints a line for every payslip that changed, came or went, and one with the
  employer's totals; FILE is written anew. Files saved within 0.2 s of each other are read once. Files that cannot be
  followed are reported on standard error, and everything stays as it was until they change again.

  On a terminal a progress bar shows on standard error while large files are read.

exit status:
  0  the report or the files were written; a watch was ended by a signal
  1  something outside of the input failed, such as a file that could not be written
  2  the command line or the input cannot be followed; the message names file, line, column and the offending text, and
     no output is written
)";

namespace {

/// A whole number of at most `largest`; throws UsageError.
std::size_t numberIn(const std::string& option, const std::string& text, std::size_t largest) {
  std::size_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end || number < 1 || number > largest) {
    throw UsageError(option + " takes a number from 1 to " + std::to_string(largest) + ", not \"" + text + "\"");
  }
  return number;
}

/// Option names to their values; those that stand alone have an empty one.
std::map<std::string, std::string> optionsIn(const std::vector<std::string>& words) {
  static const std::set<std::string> alone = {"--help", "--version", "--watch"};
  static const std::set<std::string> valued = {"--input", "--month", "--output", "--logs", "--generate"};
  std::map<std::string, std::string> options;
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::size_t equals = words[i].find('=');
    const std::string name = words[i].substr(0, equals);
    std::string value;
    if (alone.contains(name) && equals == std::string::npos) {
      options.emplace(name, value);
      continue;
    }
    if (!valued.contains(name)) throw UsageError("there is no option \"" + words[i] + "\"");
    if (equals != std::string::npos) {
      value = words[i].substr(equals + 1);
    } else if (i + 1 < words.size()) {
      value = words[++i];
    }
    if (value.empty()) throw UsageError(name + " needs a value");
    if (!options.emplace(name, value).second) throw UsageError(name + " is there twice");
  }
  return options;
}

}  // namespace

Arguments parseArguments(const std::vector<std::string>& words) {
  const std::map<std::string, std::string> options = optionsIn(words);
  const auto value = [&](const char* name) -> std::optional<std::string> {
    const auto found = options.find(name);
    return found == options.end() ? std::nullopt : std::optional(found->second);
  };
  Arguments arguments;
  if (options.contains("--help")) {
    arguments.task = Arguments::Task::Help;
    return arguments;
  }
  if (options.contains("--version")) {
    arguments.task = Arguments::Task::Version;
    return arguments;
  }
  if (!value("--input")) throw UsageError("--input is missing");
  arguments.input = *value("--input");
  if (value("--generate")) {
    for (const char* other : {"--month", "--output", "--logs", "--watch"}) {
      if (options.contains(other)) throw UsageError(std::string("--generate does not go with ") + other);
    }
    arguments.task = Arguments::Task::Generate;
    arguments.people = numberIn("--generate", *value("--generate"), 1'000'000);
    return arguments;
  }
  if (!value("--month")) throw UsageError("--month is missing");
  arguments.month = static_cast<int>(numberIn("--month", *value("--month"), 12));
  arguments.output = value("--output");
  arguments.logs = value("--logs");
  if (options.contains("--watch")) arguments.task = Arguments::Task::Watch;
  return arguments;
}

}  // namespace payrun
