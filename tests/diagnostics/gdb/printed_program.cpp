// A program with a value of every type that gdb/norvikcore.py shows. printers.sh stops it in pay().
#include "NorvikCore/logging/LogLevel.h"
#include "NorvikCore/platform/values/Date.h"
#include "NorvikCore/platform/values/Date_literals.h"
#include "NorvikCore/platform/values/Decimal.h"
#include "NorvikCore/platform/values/Decimal_literal.h"
#include "NorvikCore/platform/values/NSMutableString.h"
#include "NorvikCore/platform/values/NSNumber.h"
#include "NorvikCore/platform/values/NSRange.h"
#include "NorvikCore/platform/values/NSString.h"

#include <cstring>
#include <limits>
#include <optional>
#include <string>
#include <vector>

using namespace norvik;

namespace {

struct Values {
  Decimal net = 1234.50_dec, zero, zeroPence = 0.00_dec, penny = -0.01_dec, thousands = *Decimal::parse("-12E3");
  Decimal zeroThousands = *Decimal::parse("0E3"), notANumber = Decimal::notANumber();
  Decimal greatest = *Decimal::parse("99999999999999999999999999999999999999");
  Decimal least = *Decimal::parse("1E-128");
  std::optional<Decimal> none, some = 2_dec;
  std::vector<Decimal> rates{0.20_dec, 0.40_dec};

  Date origin, payday = "2021-05-10"_date, leapDay = *Date::dateWithString("2024-02-29 23:59:59 +0000");
  Date before1970 = *Date::dateWithString("1899-12-31 12:30:45 +0000"), justBefore1970 = payday;
  Date distantPast = Date::distantPast(), distantFuture = Date::distantFuture(), noDate = origin;
  Date yearMinus1 = Date::fromReferenceSeconds(-63177062400.0), farFuture = origin, infinitePast = origin;

  NSString empty, literal = "Net pay", accented = "Zo\u00EB \"Smith\"\n", withNul = NSString(std::string("a\0b", 3));
  NSString loneHalf = NSString::fromCodePoint(0xDC80) + "x", fileName = NSString::fromBytes("caf\xE9");
  NSString longText = NSString(std::string(300, 'x'));
  NSMutableString line, emptyLine;

  NSNumber yes = true, no = false, whole = -40, large = std::numeric_limits<std::uint64_t>::max(), hours = 37.5;
  NSNumber tenth = 0.1, infinite = std::numeric_limits<double>::infinity(), rate = 12.21_dec;

  NSRange word{6, 5}, notFound{NSNotFound, 0};
  AtomicLogLevel level{LOG_LEVEL_WARN}, flags{LOG_FLAG_ERROR | LOG_FLAG_INFO}, odd{64};

  Decimal damaged;
  const Decimal& reference = net;
};

[[gnu::noinline]] void pay(const Values& values, Decimal amount, Date day) {
  asm volatile("" : : "r"(&values), "r"(&amount), "x"(day) : "memory");
}

}  // namespace

int main() {
  Values values;
  values.line.appendString("Net pay");
  values.justBefore1970 = Date::dateWithTimeIntervalSince1970(-0.5);
  values.noDate = Date::fromReferenceSeconds(std::numeric_limits<double>::quiet_NaN());
  values.farFuture = Date::fromReferenceSeconds(1e300);
  values.infinitePast = Date::fromReferenceSeconds(-std::numeric_limits<double>::infinity());
  std::memset(static_cast<void*>(&values.damaged), 0x5A, sizeof values.damaged);
  pay(values, 1234.50_dec, "2021-05-28"_date);
}
