// The markup parser beside its model, on random sources of tags, quotes, blanks, halves and escapes.
#include "NorvikCore/platform/values/NSString.h"
#include "tests/support/MarkupComparison.h"

#include <gtest/gtest.h>

#include <random>

namespace norvik {
namespace {

using Units = std::u16string;

class Source {
 public:
  explicit Source(std::uint32_t seed) : engine_(seed) {}

  std::size_t upTo(std::size_t most) { return std::uniform_int_distribution<std::size_t>(0, most)(engine_); }

  /// Any mixture, most of it no markup.
  Units mixture() {
    static const Units pieces[] = {u"<",  u">",  u"/",     u"b",     u"a",      u" ",    u"=",
                                   u"'",  u"\"", u"<b>",   u"</b>",  u"<A x=",  u"</a>", u"\x01",
                                   u"\t", u"\n", {0xD83D}, {0xDCB7}, u"\u00E9", u"<i q>"};
    Units source;
    for (std::size_t i = upTo(14); i > 0; --i) source += pieces[upTo(19)];
    return source;
  }
  /// Tags that are closed, nested to some depth.
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

}  // namespace

TEST(MRKStringParserProperty, AnyTextIsParsedAsTheModelDoes) {
  Source source(1);
  for (int i = 0; i < 40'000; ++i) {
    const Units text = source.mixture();
    ASSERT_EQ(test::differenceFromModel(text), "") << NSString::fromUtf16(text);
  }
}

TEST(MRKStringParserProperty, NestedTagsAreStyledAsTheModelDoes) {
  Source source(2);
  for (int i = 0; i < 10'000; ++i) {
    const Units text = source.markup(source.upTo(4));
    ASSERT_EQ(test::differenceFromModel(text), "") << NSString::fromUtf16(text);
  }
}

}  // namespace norvik
