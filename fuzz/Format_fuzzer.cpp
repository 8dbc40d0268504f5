// fuzz/Format_fuzzer.cpp - run-time formats. Any format shows only its arguments, and a format that the check accepts
// never shows a complaint. The text of a number directive equals that of snprintf in the C locale.
#include "NorvikCore/platform/values/Format.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

namespace {

using namespace norvik;

void require(bool holds, const char* what, std::string_view format) {
  if (holds) return;
  std::fprintf(stderr, "%s: \"%.*s\"\n", what, static_cast<int>(format.size()), format.data());
  std::abort();
}

/// Removes bytes from the front of the input; returns zeros when the input is used up.
struct Input {
  const std::uint8_t* data;
  std::size_t size;

  std::uint8_t byte() {
    if (size == 0) return 0;
    --size;
    return *data++;
  }
  template <class T>
  T bits() {
    std::uint8_t bytes[sizeof(T)];
    for (std::uint8_t& b : bytes) b = byte();
    T value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
  }
};

void anyFormat(Input input) {
  const std::string format(reinterpret_cast<const char*>(input.data), input.size);
  const NSString word = "t\u00EBxt";
  const FormatArgumentList arguments(42, word, 2.5, "c text", nullptr, static_cast<const void*>(&input));
  const NSString asText(format);
  const NSString result = stringWithFormatArguments(asText.view(), arguments);
  using enum detail::FormatKind;
  const detail::FormatKind kinds[] = {signedInteger, string, floating, cText, absent, pointer};
  const bool accepted = detail::checkFormat(asText.view(), kinds, 6) == detail::FormatFault::none;
  if (accepted && format.find("(bad") == std::string::npos) {
    require(result.view().find("(bad") == std::string_view::npos, "an accepted format shows a complaint", format);
  }
  require(result.view().size() <= format.size() * 3 * (detail::formatFieldLimit + 400), "too long", format);
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored \
    "-Wformat-nonliteral"  // the directive is fuzzed; its argument has the right type by construction
template <class Number>
void compareWithPrintf(const std::string& directive, const std::string& printfDirective, Number number) {
  char expected[16384];
  const int length = std::snprintf(expected, sizeof expected, printfDirective.c_str(), number);
  const NSString ours = stringWithFormat(runtimeFormat(NSString(directive)), number);
  require(length >= 0 && ours.view() == std::string_view(expected, static_cast<std::size_t>(length)),
          "differs from printf", directive);
}
#pragma GCC diagnostic pop

void numberDirective(Input input) {
  const char conversion = "diuxXofFeEgGaA"[input.byte() % 14];
  const bool isSigned = conversion == 'd' || conversion == 'i';
  const bool isFloating = std::string_view("fFeEgGaA").find(conversion) != std::string_view::npos;
  const bool isGeneral = conversion == 'g' || conversion == 'G';
  std::string head = "%";
  const std::uint8_t flags = input.byte();
  if (flags & 1) head += '-';
  if ((flags & 2) && (isSigned || isFloating)) head += '+';
  if ((flags & 4) && (isSigned || isFloating)) head += ' ';
  // With # the peer drops zeros of numbers that round up to the next power of ten. For integers, # applies to x and o.
  if ((flags & 8) && !isGeneral && !isSigned && conversion != 'u') head += '#';
  if (flags & 16) head += '0';
  if (flags & 32) head += std::to_string(1 + input.byte() % 64);
  if (flags & 64) head += "." + std::to_string(input.byte() % 64);
  if (isFloating) {
    compareWithPrintf(head + conversion, head + conversion, input.bits<double>());
  } else if (isSigned) {
    compareWithPrintf(head + conversion, head + "ll" + conversion, input.bits<long long>());
  } else {
    compareWithPrintf(head + conversion, head + "ll" + conversion, input.bits<unsigned long long>());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0 || size > 512) return 0;
  const Input rest{data + 1, size - 1};
  data[0] % 2 == 0 ? anyFormat(rest) : numberDirective(rest);
  return 0;
}
