// fuzz/NSDateFormatter_fuzzer.cpp - dates as people type them. A text that strict reading accepts equals what the
// pattern writes for the date that was read, and lenient reading accepts it too.
#include "NorvikCore/platform/foundation/NSDateFormatter.h"
#include "NorvikCore/platform/values/CivilDate.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <vector>

namespace {

using namespace norvik;

struct Readers {
  Ref<NSDateFormatter> strict, lenient;
};

const std::vector<Readers>& readers() {
  static const auto& all = *new std::vector<Readers>([] {
    std::vector<Readers> made;
    for (const char* locale : {"en_GB", "ja_JP", "ar_EG"}) {
      for (const char* pattern :
           {"dd/MM/yyyy", "d.M.y H:m:s", "yyyyMMddHHmmss", "EEEE d MMMM yyyy", "EEE dd MMM yyyy h:mm:ss a",
            "YYYY-'W'ww-e", "yyyy-DDD HH:mm:ss.SSS", "d MMM y G", "d MMM y h B", "EEEEE d/M/yy", "EEE W MM yyyy"}) {
        Readers both;
        for (const bool isLenient : {false, true}) {
          auto formatter = make<NSDateFormatter>();
          formatter->setLocale(NSLocale::localeWithLocaleIdentifier(locale));
          formatter->setTimeZone(NSTimeZone::timeZoneWithName("UTC"));
          formatter->setDateFormat(pattern);
          formatter->setLenient(isLenient);
          (isLenient ? both.lenient : both.strict) = formatter;
        }
        made.push_back(both);
      }
    }
    return made;
  }());
  return all;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0 || size > 1000) return 0;
  const Readers& both = readers()[data[0] % readers().size()];
  const NSString text = NSString::fromBytes({reinterpret_cast<const char*>(data) + 1, size - 1});
  const std::optional<Date> strict = both.strict->dateFromString(text), lenient = both.lenient->dateFromString(text);
  if (!strict || civilDate(*strict).year > 9999) return 0;  // far from now a double is too coarse for milliseconds
  if (both.strict->stringFromDate(*strict) != text || lenient != strict) std::abort();
  return 0;
}
