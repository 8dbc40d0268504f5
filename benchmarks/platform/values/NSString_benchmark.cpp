// Compares NSString with ICU's UTF-16 text and std::string: the cost of a copy, an index into long text, a search and a
// join.
//
// g++ 12.2 -O2, 2 virtual cores, very busy machine, 2026-11-23, CPU time, medians of 5:
//   copy 19 ns (std::string 16), index 15 ns (ICU 3: it keeps UTF-16), join 30 ns (std::string 27),
//   text from a literal of 33 bytes 15.6 ns (std::string 14.2), of 20 bytes 15.1 ns (13.5), of 12 bytes 14.5 ns (1.1,
//   without an allocation), of 3 bytes 15.9 ns (1.3, without an allocation); search 12 us (ICU 207 us, 2026-11-21).
// An NSString shares its bytes with its copies, so each new one allocates; ""_ns borrows a literal in no time.
// Before the index had a mark for every 16th unit, and literals were copied while they are checked, an index took 102
// ns and a literal 32 ns; before short literals were too, one of 3 bytes took 27 ns.
#include "NorvikCore/platform/values/NSString.h"

#include <benchmark/benchmark.h>
#include <unicode/unistr.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

using norvik::NSString;

void require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "wrong answer: %s\n", what);
  std::abort();
}

/// 300,000 UTF-16 units: accented letters and surrogate pairs, with a name at the end.
const std::string& longText() {
  static const auto& text = *new std::string([] {
    std::string made;
    for (int i = 0; i < 100'000; ++i) made += "\u00E9\U0001F4B7";
    return made + "Zo\u00EB";
  }());
  return text;
}

void copyOurs(benchmark::State& state) {
  const NSString name = std::string("a name of more than fifteen bytes");
  for (auto _ : state) benchmark::DoNotOptimize(NSString(name));
}
void copyStd(benchmark::State& state) {
  const std::string name = "a name of more than fifteen bytes";
  for (auto _ : state) benchmark::DoNotOptimize(std::string(name));
}

void indexOurs(benchmark::State& state) {
  const NSString text = longText();
  require(text.length() == 300'003 && text.characterAtIndex(299'999) == 0xDCB7, "characterAtIndex");
  std::size_t at = 0;
  for (auto _ : state) benchmark::DoNotOptimize(text.characterAtIndex(at = (at + 99'991) % 300'003));
}
void indexIcu(benchmark::State& state) {
  const icu::UnicodeString text = icu::UnicodeString::fromUTF8(longText());
  std::int32_t at = 0;
  for (auto _ : state) benchmark::DoNotOptimize(text.charAt(at = (at + 99'991) % 300'003));
}

void findOurs(benchmark::State& state) {
  const NSString text = longText(), name = "Zo\u00EB";
  require(text.rangeOfString(name).location == 300'000, "rangeOfString");
  for (auto _ : state) benchmark::DoNotOptimize(text.rangeOfString(name));
}
void findIcu(benchmark::State& state) {
  const icu::UnicodeString text = icu::UnicodeString::fromUTF8(longText()),
                           name = icu::UnicodeString::fromUTF8("Zo\u00EB");
  require(text.indexOf(name) == 300'000, "indexOf");
  for (auto _ : state) benchmark::DoNotOptimize(text.indexOf(name));
}

/// A line as in logs and files.
constexpr const char* line = "2021-05-28 09:30:00 payrun: payslip of employee 4711, Zoe Smith, net pay 1,234.50 GBP";

void findInLine(benchmark::State& state) {
  const NSString text = std::string(line), wanted = "net pay";
  require(text.rangeOfString(wanted).location == 65, "rangeOfString");
  for (auto _ : state) benchmark::DoNotOptimize(text.rangeOfString(wanted));
}
void findInLineBackwards(benchmark::State& state) {
  const NSString text = std::string(line), wanted = "payslip";
  require(text.rangeOfString(wanted, norvik::NSBackwardsSearch).location == 28, "rangeOfString backwards");
  for (auto _ : state) benchmark::DoNotOptimize(text.rangeOfString(wanted, norvik::NSBackwardsSearch));
}
void findInLineCaseAside(benchmark::State& state) {
  const NSString text = std::string(line), wanted = "NET PAY";
  require(text.rangeOfString(wanted, norvik::NSCaseInsensitiveSearch).location == 65, "rangeOfString, case aside");
  for (auto _ : state) benchmark::DoNotOptimize(text.rangeOfString(wanted, norvik::NSCaseInsensitiveSearch));
}
void findNothingInLine(benchmark::State& state) {
  const NSString text = std::string(line), wanted = "<b>";
  require(!text.containsString(wanted), "containsString");
  for (auto _ : state) benchmark::DoNotOptimize(text.containsString(wanted));
}
void findStd(benchmark::State& state) {
  const std::string text = line, wanted = "net pay";
  for (auto _ : state) benchmark::DoNotOptimize(text.find(wanted));
}
void splitLine(benchmark::State& state) {
  const NSString text = std::string(line), comma = ", ";
  require(text.componentsSeparatedBy(comma).size() == 3, "componentsSeparatedBy");
  for (auto _ : state) benchmark::DoNotOptimize(text.componentsSeparatedBy(comma));
}
void replaceInLine(benchmark::State& state) {
  const NSString text = std::string(line), from = "pay", to = "wage";
  for (auto _ : state) benchmark::DoNotOptimize(text.stringByReplacingOccurrencesOfString(from, to));
}
/// 160,000 units of one letter; the wanted text is half as many of them and another letter.
void findInRepetitiveText(benchmark::State& state) {
  const NSString text = std::string(160'000, 'a'), wanted = std::string(80'000, 'a') + "b";
  const auto options = static_cast<norvik::NSStringCompareOptions>(state.range(0));
  require(text.rangeOfString(wanted, options).length == 0, "rangeOfString in repetitive text");
  for (auto _ : state) benchmark::DoNotOptimize(text.rangeOfString(wanted, options));
}

void joinOurs(benchmark::State& state) {
  const NSString first = "Payslip of ", second = "Zo\u00EB Smith";
  require(first + second == "Payslip of Zo\u00EB Smith", "operator+");
  for (auto _ : state) benchmark::DoNotOptimize(first + second);
}
void joinStd(benchmark::State& state) {
  const std::string first = "Payslip of ", second = "Zo\u00EB Smith";
  for (auto _ : state) benchmark::DoNotOptimize(first + second);
}

template <class Text>
void literal(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(Text("a name of more than fifteen bytes"));
}
template <class Text>
void literalOf20(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(Text("twenty bytes of text"));
}
/// std::string stores such a text in itself, without an allocation.
template <class Text>
void literalOf12(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(Text("twelve bytes"));
}
template <class Text>
void literalOf3(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(Text("GBP"));
}

}  // namespace

BENCHMARK(copyOurs)->Name("text copy/ours");
BENCHMARK(copyStd)->Name("text copy/std::string");
BENCHMARK(indexOurs)->Name("index in 300,000 units/ours");
BENCHMARK(indexIcu)->Name("index in 300,000 units/icu (UTF-16)");
BENCHMARK(findOurs)->Name("search in 300,000 units/ours");
BENCHMARK(findIcu)->Name("search in 300,000 units/icu (UTF-16)");
BENCHMARK(findInLine)->Name("search in a line/ours");
BENCHMARK(findStd)->Name("search in a line/std::string");
BENCHMARK(findInLineBackwards)->Name("search in a line, backwards");
BENCHMARK(findInLineCaseAside)->Name("search in a line, case aside");
BENCHMARK(findNothingInLine)->Name("search in a line without effect");
BENCHMARK(splitLine)->Name("split a line");
BENCHMARK(replaceInLine)->Name("replace in a line");
BENCHMARK(findInRepetitiveText)
    ->Name("search in 160,000 repetitive units")
    ->Arg(norvik::NSLiteralSearch)
    ->Arg(norvik::NSBackwardsSearch)
    ->Arg(norvik::NSCaseInsensitiveSearch)
    ->Arg(norvik::NSCaseInsensitiveSearch | norvik::NSBackwardsSearch);
BENCHMARK(joinOurs)->Name("join two texts/ours");
BENCHMARK(joinStd)->Name("join two texts/std::string");
BENCHMARK(literal<NSString>)->Name("text from a literal/ours");
BENCHMARK(literal<std::string>)->Name("text from a literal/std::string");
BENCHMARK(literalOf20<NSString>)->Name("text from a literal of 20 bytes/ours");
BENCHMARK(literalOf20<std::string>)->Name("text from a literal of 20 bytes/std::string");
BENCHMARK(literalOf12<NSString>)->Name("text from a literal of 12 bytes/ours");
BENCHMARK(literalOf12<std::string>)->Name("text from a literal of 12 bytes/std::string");
BENCHMARK(literalOf3<NSString>)->Name("text from a literal of 3 bytes/ours");
BENCHMARK(literalOf3<std::string>)->Name("text from a literal of 3 bytes/std::string");

BENCHMARK_MAIN();
