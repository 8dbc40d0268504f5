#include "Arguments.h"

#include <charconv>
#include <map>
#include <set>

namespace payrun {

const char* const helpText =
    R"(payrun - computes the payslips of an employer for one tax month, from files, with exact amounts

usage:
  payrun --input FOLDER --month N [--output FILE] [--payslips] [--html FOLDER] [--pdf FOLDER]
         [--template FILE] [--log LIST] [--logs FOLDER]
  payrun --input FOLDER --month N --watch [--output FILE] [--log LIST] [--logs FOLDER]
  payrun --generate N --input FOLDER
  payrun --diagnose | --help | --version

options:
  --input FOLDER    the folder with the employer's three files
  --month N         the tax month to pay: 1 is 6 April to 5 May, 12 is 6 March to 5 April
  --output FILE     write the report to the file instead of standard output. The file is written completely or not at
                    all, keeps the permissions of a file that it replaces, and must not be an input file
  --payslips        print each employee's payslip, in colour on a terminal unless NO_COLOR is set. The report is then
                    written only if --output is given
  --html FOLDER     write each employee's payslip as a page for browsers, phones and printers. The file's name has the
                    employee's number and name and the month. The folder is created if it does not exist
  --pdf FOLDER      write each employee's payslip on A4 pages, with the same names; one page if the items fit on one
  --template FILE   the form of the payslips: marked-up text with placeholders, see below (default: payslip.template,
                    which is installed with the program)
  --log LIST        where the log is written, separated by commas: console (standard error), file (the default),
                    sqlite=PATH (a database), postgres=URL (a server; libpq reads the URL; put the password into
                    ~/.pgpass), syslog (the system's log). norvik-log reads files and databases. If the log file
                    cannot be written, nothing is computed. Standard error reports entries that a database refuses
  --logs FOLDER     write the log files to the folder, a new one each day; today's and the last five are kept
                    (default: Logs/payrun in the user's library folder)
  --watch           continue after the report, and compute the pay again when one of the three files changes; SIGINT
                    (Ctrl-C) and SIGTERM end the program
  --generate N      write the three files of an invented employer of N people, 1 to 1000000, with a tax year of items
                    for each, to the folder of --input, which must not contain any of them; the same N gives the same
                    files
  --diagnose        print data for a support request: folders, versions, the machine, whether the open files are valid,
                    and the names of the preferences; values only of preferences that cannot be secret. Creates no
                    folder and stores nothing. With NORVIK_BUNDLE_IDENTIFIER=NAME the preferences are those of the
                    application of that name
  --help            this text
  --version         the version of the program

input, all UTF-8:
  employer.ini      [employer] with name, paye_reference and tax_year (such as 2024-25);
                    [departments] with one line CODE = Name for each department
  employees.csv     employee,name,department,sort_code,account
                    department is a code of employer.ini; sort_code is six digits, with or without hyphens or spaces
                    between the pairs; account is eight digits; a sixth column, address, is optional: parts separated
                    by commas, or empty
  items.csv         employee,date,kind,description,amount
                    employee is a number of employees.csv; date is 2024-05-28 or 2024-05-28 14:30:00; kind is pay,
                    bonus or deduction; amount is such as 1,234.50 or 1234.5, a correction with a minus sign,
                    999,999,999.99 at most

  The CSV files are comma-separated with the headings above; fields with commas, quotation marks or line ends are
  enclosed in quotation marks (RFC 4180). Texts that the report shows, numbers and names, must be one line without
  control characters. The amounts of the items are final; no tax is computed.

  An item counts on its day. An item with a time of day counts on the nearest start of day (up to 12:59:59 its own day,
  from 13:00:00 the next), which is logged. Days must be in the tax year. Each amount is rounded to the penny, a half
  away from zero, before the amounts are summed.

template:
  A line is a paragraph, "| cell | cell |" a row of a table, "---" a line across. Tags are <b>, <i>, <u>, <big>,
  <small>, <color value="#B00020">, <background value="#FFF0C0">, <a href="https://...">, <right> and, in rows,
  <heading>. Placeholders such as {employee} are replaced by values. Lines between <items>, <pay> or <deductions> and
  its closing tag are repeated for each item. docs/payslips.md describes templates.

output:
  A payslip summary for each employee (pay with bonuses, deductions, net, and the same to date since 6 April), totals
  for each department and for the employer, and the employer's net pay in words. Then what needs attention: the month's
  items that were moved to the next day by their time of day, with their line in items.csv, and net pays below zero.
  Standard error has their number; if no report is shown, it lists them.

  With --watch, each change of the files prints a line for every payslip that was changed, added or removed, and one
  with the employer's totals; FILE is written again. Files saved within 0.2 s of each other are read once. Invalid files
  are reported on standard error, and nothing changes until they are saved again.

  On a terminal a progress bar shows on standard error while large files are read.

exit status:
  0  the report or the files were written, whether or not something needs attention; --watch was ended by a signal;
     --diagnose printed its lines, whatever it found
  1  something outside of the input failed, such as a file that could not be written
  2  the command line, the input or the template is invalid; the message names file, line, column and the invalid text,
     and no output is written
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

/// Maps option names to their values. An option without a value has an empty one.
std::map<std::string, std::string> optionsIn(const std::vector<std::string>& words) {
  static const std::set<std::string> alone = {"--help", "--version", "--diagnose", "--watch", "--payslips"};
  static const std::set<std::string> valued = {"--input", "--month", "--output",   "--logs",    "--log",
                                               "--html",  "--pdf",   "--template", "--generate"};
  std::map<std::string, std::string> options;
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::size_t equals = words[i].find('=');
    const std::string name = words[i].substr(0, equals);
    std::string value;
    if (alone.contains(name)) {
      if (equals != std::string::npos) throw UsageError(name + " takes no value");
      options.emplace(name, value);
      continue;
    }
    if (!valued.contains(name)) throw UsageError("there is no option \"" + withoutValue(words[i]) + "\"");
    if (equals != std::string::npos) {
      value = words[i].substr(equals + 1);
    } else if (i + 1 < words.size()) {
      value = words[++i];
    }
    if (value.empty()) throw UsageError(name + " needs a value");
    if (name != "--month" && name != "--generate" && name != "--log") refuseTilde(name, value);
    if (!options.emplace(name, value).second) throw UsageError(name + " is given twice");
  }
  return options;
}

void refuseBeside(const std::string& option, const std::vector<std::string>& others,
                  const std::map<std::string, std::string>& options) {
  for (const std::string& other : others) {
    if (options.contains(other)) throw UsageError(option + " cannot be combined with " + other);
  }
}

}  // namespace

void refuseTilde(std::string_view option, std::string_view path) {
  if (!programs::beginsWithTilde(path)) return;
  throw UsageError(std::string(option) + " \"" + std::string(path) +
                   "\" begins with ~, which the shell replaces only at the beginning of a word; write the whole path");
}

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
  if (options.contains("--diagnose")) {
    refuseBeside("--diagnose",
                 {"--input", "--month", "--output", "--log", "--logs", "--watch", "--payslips", "--html", "--pdf",
                  "--template", "--generate"},
                 options);
    arguments.task = Arguments::Task::Diagnose;
    return arguments;
  }
  if (!value("--input")) throw UsageError("--input is missing");
  arguments.input = *value("--input");
  if (value("--generate")) {
    refuseBeside("--generate",
                 {"--month", "--output", "--log", "--logs", "--watch", "--payslips", "--html", "--pdf", "--template"},
                 options);
    arguments.task = Arguments::Task::Generate;
    arguments.people = numberIn("--generate", *value("--generate"), 1'000'000);
    return arguments;
  }
  if (!value("--month")) throw UsageError("--month is missing");
  arguments.month = static_cast<int>(numberIn("--month", *value("--month"), 12));
  arguments.output = value("--output");
  if (value("--log")) arguments.log = parseLogChoice(*value("--log"));
  arguments.log.folder = value("--logs");
  if (arguments.log.folder && !arguments.log.file) throw UsageError("--logs needs log files; add file to --log");
  arguments.payslips = options.contains("--payslips");
  arguments.html = value("--html");
  arguments.pdf = value("--pdf");
  arguments.form = value("--template");
  if (arguments.form && !arguments.wantsPayslips()) {
    throw UsageError("--template needs --payslips, --html or --pdf");
  }
  if (options.contains("--watch")) {
    refuseBeside("--watch", {"--payslips", "--html", "--pdf", "--template"}, options);
    arguments.task = Arguments::Task::Watch;
  }
  return arguments;
}

}  // namespace payrun
