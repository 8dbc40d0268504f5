// The markup parser compared with its model, on random sources of tags, quotes, spaces, surrogate halves and escapes.
//
//   NORVIK_MARKUP_INPUTS=1000000 markup_property_tests
//
// compares that many sources in each test, with other seeds. Without the variable there are fewer.
#include "NorvikCore/platform/values/NSString.h"
#include "tests/support/MarkupComparison.h"
#include "tests/support/Sanitizers.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

namespace norvik {
namespace {

using Units = std::u16string;

class Source {
 public:
  explicit Source(std::uint32_t seed) : engine_(seed) {}

  std::size_t upTo(std::size_t most) { return std::uniform_int_distribution<std::size_t>(0, most)(engine_); }

  /// Any mixture, mostly invalid markup.
  Units mixture() {
    static const Units pieces[] = {u"<",  u">",  u"/",     u"b",     u"a",      u" ",    u"=",
                                   u"'",  u"\"", u"<b>",   u"</b>",  u"<A x=",  u"</a>", u"\x01",
                                   u"\t", u"\n", {0xD83D}, {0xDCB7}, u"\u00E9", u"<i q>"};
    Units source;
    for (std::size_t i = upTo(14); i > 0; --i) source += pieces[upTo(19)];
    return source;
  }
  /// Closed tags, nested to some depth.
  Units markup(std::size_t depth) {
    static const Units names[] = {u"b", u"I", u"a", u"other", u"\u00C9", u"u"};
    static const Units attributes[] = {u"", u" x=1", u" x='a b' y", u" =v", u"\tq=\"\"", u" z='"};
    Units source;
    for (std::size_t i = upTo(3); i > 0; --i) {
      source += words();
      if (depth == 0) continue;
      const Units& name = names[upTo(5)];
      source += u"<" + name + attributes[upTo(5)] + u">" + markup(depth - 1) + u"</" + name + u">";
    }
    return source + words();
  }

 private:
  Units words() {
    static const Units texts[] = {u"", u"", u"pay", u"x", {0xD83D}, {0xDCB7}, u"\u20AC", u"\x01<"};
    return texts[upTo(7)];
  }
  std::mt19937 engine_;
};

struct Comparisons {
  std::uint32_t seed;
  int count;
};

/// The comparisons of each run of the tests, unless the variable asks for another number.
Comparisons comparisons(Comparisons usual) {
  const char* const asked = std::getenv("NORVIK_MARKUP_INPUTS");
  if (asked) return {usual.seed + 1000, std::atoi(asked)};
  return test::isSanitized ? Comparisons{usual.seed, usual.count / 10} : usual;
}

void expectTheModelsAnswers(Comparisons wanted, Units (*make)(Source&)) {
  Source source(wanted.seed);
  for (int i = 0; i < wanted.count; ++i) {
    const Units text = make(source);
    ASSERT_EQ(test::differenceFromModel(text), "")
        << NSString::fromUtf16(text) << "\nseed " << wanted.seed << ", source " << i;
  }
}

}  // namespace

TEST(MRKStringParserProperty, AnyTextIsParsedAsTheModelDoes) {
  expectTheModelsAnswers(comparisons({1, 40'000}), [](Source& source) { return source.mixture(); });
}

TEST(MRKStringParserProperty, NestedTagsAreStyledAsTheModelDoes) {
  expectTheModelsAnswers(comparisons({2, 10'000}), [](Source& source) { return source.markup(source.upTo(4)); });
}

}  // namespace norvik
