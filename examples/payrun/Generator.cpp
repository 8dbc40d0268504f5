#include "Generator.h"

#include <array>
#include <cstdint>
#include <string>
#include <system_error>
#include <vector>

#include "InputError.h"
#include "InputReader.h"
#include "NorvikCore/Categories/NSDate+Norvik.h"
#include "NorvikCore/Categories/NSDate+Norvik_Formatting.h"
#include "NorvikCore/platform/values/Decimal.h"
#include "OutputFile.h"
#include "ProgressBar.h"
#include "Report.h"

namespace payrun {

using namespace norvik;

namespace {

/// A sequence of numbers (splitmix64) that is the same on every platform. The standard library's distributions do not
/// promise that.
class Dice {
 public:
  /// A number from 0 to sides - 1.
  std::uint64_t roll(std::uint64_t sides) {
    state_ += 0x9E3779B97F4A7C15U;
    std::uint64_t mixed = state_;
    mixed = (mixed ^ (mixed >> 30U)) * 0xBF58476D1CE4E5B9U;
    mixed = (mixed ^ (mixed >> 27U)) * 0x94D049BB133111EBU;
    return (mixed ^ (mixed >> 31U)) % sides;
  }
  template <std::size_t n>
  const char* oneOf(const std::array<const char*, n>& texts) {
    return texts[roll(n)];
  }

 private:
  std::uint64_t state_ = 20240406;
};

constexpr std::array firstNames = {"Zoë",   "Łukasz", "Siân",  "Thomas", "Priya", "José",   "Aoife",  "Grace",
                                   "Yusuf", "Renée",  "Kwame", "Ffion",  "Noor",  "Jürgen", "Hannah", "Seán"};
constexpr std::array lastNames = {"O'Brien",  "Hughes",   "Wiśniewski", "Okafor",   "Fernández", "MacGregor",
                                  "Müller",   "Tregenza", "Llewellyn",  "Beaumont", "Wu",        "Hussain",
                                  "Nováková", "Fraser",   "Hardcastle", "Ó Conaill"};
constexpr std::array departments = {"OPS", "SAL", "WHS", "FIN", "ITS"};

constexpr const char* ini = R"(; An invented employer, tax year 2024-25.

[employer]
name           = Generated Employer Ltd
paye_reference = 999/GE999
tax_year       = 2024-25

[departments]
OPS = Operations
SAL = Sales
WHS = Warehouse
FIN = Finance
ITS = Information systems
)";

std::string padded(std::uint64_t number, std::size_t digits) {
  const std::string text = std::to_string(number);
  return std::string(text.size() < digits ? digits - text.size() : 0, '0') + text;
}

std::string numberOf(std::size_t person) { return "E" + padded(person + 1, 7); }

std::string employeesOf(std::size_t people, Dice& dice) {
  std::string text = "employee,name,department,sort_code,account\n";
  for (std::size_t person = 0; person < people; ++person) {
    text += numberOf(person) + "," + dice.oneOf(firstNames) + " " + dice.oneOf(lastNames) + "," +
            dice.oneOf(departments) + "," + padded(dice.roll(100), 2) + "-" + padded(dice.roll(100), 2) + "-" +
            padded(dice.roll(100), 2) + "," + padded(dice.roll(100'000'000), 8) + "\n";
  }
  return text;
}

void appendItem(std::string& text, std::size_t person, const std::string& date, const char* kindAndDescription,
                std::uint64_t pence) {
  text += numberOf(person) + "," + date + "," + kindAndDescription + ",\"" +
          amountText(Decimal::decimalNumberWithMantissa(pence, -2, false)) + "\"\n";
}

/// Pay and deductions on the 28th of each calendar month. Some people get a bonus in December, and one date in 500 has
/// a time of day.
std::string itemsOf(std::size_t people, Dice& dice) {
  constexpr int months = 12, firstMonth = 4, december = 8;
  std::vector<std::uint64_t> salaries(people);
  for (std::uint64_t& pence : salaries) pence = 180'000 + dice.roll(420'000);
  std::string text = "employee,date,kind,description,amount\n";
  ProgressBar progress("generating items", people * months);
  for (int month = 0; month < months; ++month) {
    const std::string day(
        nk_utcDateStringWithFormat(nk_dateWithYear(2024, firstMonth + month, 28), "yyyy-MM-dd").view());
    for (std::size_t person = 0; person < people; ++person) {
      const std::string date = dice.roll(500) == 0 ? day + " 14:30:00" : day;
      const std::uint64_t pay = salaries[person] + dice.roll(10'000);
      appendItem(text, person, date, "pay,Salary", pay);
      appendItem(text, person, day, "deduction,PAYE and National Insurance", pay * 24 / 100);
      if (month == december && dice.roll(4) == 0) {
        appendItem(text, person, day, "bonus,Christmas bonus", 5'000 + dice.roll(95'000));
      }
      progress.show(static_cast<std::size_t>(month) * people + person + 1);
    }
  }
  return text;
}

}  // namespace

void generateEmployer(std::size_t people, const std::filesystem::path& folder) {
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  if (error) throw std::system_error(error, folder.string() + " cannot be created");
  for (const char* name : inputFiles) {
    if (std::filesystem::exists(folder / name)) throw InputError((folder / name).string() + " already exists");
  }
  Dice dice;
  try {
    writeWhole(folder / "employer.ini", ini);
    writeWhole(folder / "employees.csv", employeesOf(people, dice));
    writeWhole(folder / "items.csv", itemsOf(people, dice));
  } catch (...) {
    for (const char* name : inputFiles) std::filesystem::remove(folder / name, error);
    throw;
  }
}

}  // namespace payrun
