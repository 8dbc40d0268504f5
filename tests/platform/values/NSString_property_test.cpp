// Texts compared with a model, a std::u16string, on random texts of ASCII, accented letters, pairs and lone halves.
#include "NorvikCore/platform/values/NSMutableString.h"
#include "NorvikCore/platform/values/NSString.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace norvik {
namespace {

using Units = std::u16string;

class Source {
 public:
  explicit Source(std::uint32_t seed) : engine_(seed) {}

  std::size_t upTo(std::size_t most) { return std::uniform_int_distribution<std::size_t>(0, most)(engine_); }

  /// Only a few different characters, so that searches find something.
  Units units(std::size_t most) {
    const std::size_t length = upTo(most);
    const bool asciiOnly = upTo(5) == 0;
    Units units;
    while (units.size() < length) {
      switch (asciiOnly ? 0 : upTo(7)) {
        case 0:
        case 1:
          units += static_cast<char16_t>(u'a' + upTo(2));
          break;
        case 2:
          units += char16_t{0x00E9};
          break;
        case 3:
          units += char16_t{0x20AC};
          break;
        case 4:
          units += {0xD83D, 0xDCB7};
          break;
        case 5:
          units += static_cast<char16_t>(0xE000 + upTo(0x1FFF));
          break;
        case 6:
          units += static_cast<char16_t>(0xD800 + upTo(0x3FF));
          break;
        default:
          units += static_cast<char16_t>(0xDC00 + upTo(0x3FF));
          break;
      }
    }
    return units;
  }

 private:
  std::mt19937 engine_;
};

void expectSame(const NSString& text, const Units& model) {
  ASSERT_EQ(text.toUtf16(), model);
  ASSERT_EQ(text.length(), model.size());
  ASSERT_EQ(text, NSString::fromUtf16(model));
  ASSERT_EQ(std::hash<NSString>{}(text), std::hash<NSString>{}(NSString::fromUtf16(model)));
}

TEST(NSStringProperty, EveryIndexGivesTheModelsUnit) {
  Source source(1);
  for (int round = 0; round < 200; ++round) {
    const Units model = source.units(round % 10 == 0 ? 3000 : 60);
    const NSString text = NSString::fromUtf16(model);
    ASSERT_EQ(text.length(), model.size());
    for (std::size_t i = 0; i < model.size(); ++i) ASSERT_EQ(text.characterAtIndex(i), model[i]) << i;
  }
}

TEST(NSStringProperty, CuttingAnywhereAndJoiningGivesTheTextBack) {
  Source source(2);
  for (int round = 0; round < 3000; ++round) {
    const Units model = source.units(round % 50 == 0 ? 2000 : 40);
    const NSString text = NSString::fromUtf16(model);
    const std::size_t cut = source.upTo(model.size());
    const NSString head = text.substringToIndex(cut), tail = text.substringFromIndex(cut);
    expectSame(head, model.substr(0, cut));
    expectSame(tail, model.substr(cut));
    expectSame(head + tail, model);
    const std::size_t length = source.upTo(model.size() - cut);
    expectSame(text.substringWithRange({cut, length}), model.substr(cut, length));
  }
}

TEST(NSStringProperty, OrderAndEqualityAreTheModels) {
  Source source(3);
  for (int round = 0; round < 20'000; ++round) {
    const Units a = source.units(4), b = source.units(4);
    ASSERT_EQ(NSString::fromUtf16(a) <=> NSString::fromUtf16(b), a <=> b);
    ASSERT_EQ(NSString::fromUtf16(a) == NSString::fromUtf16(b), a == b);
  }
}

TEST(NSStringProperty, SearchFindsWhatTheModelFinds) {
  Source source(4);
  for (int round = 0; round < 20'000; ++round) {
    const Units model = source.units(round % 100 == 0 ? 1000 : 30), wanted = source.units(3);
    if (wanted.empty()) continue;
    const std::size_t from = source.upTo(model.size()), length = source.upTo(model.size() - from);
    const Units within = model.substr(from, length);
    const NSString text = NSString::fromUtf16(model), part = NSString::fromUtf16(wanted);
    const auto range = [&](std::size_t at) {
      return at == Units::npos ? NSRange{NSNotFound, 0} : NSRange{from + at, wanted.size()};
    };
    const NSRange searched{from, length};
    ASSERT_EQ(text.rangeOfString(part, NSLiteralSearch, searched), range(within.find(wanted)));
    ASSERT_EQ(text.rangeOfString(part, NSBackwardsSearch, searched), range(within.rfind(wanted)));
    ASSERT_EQ(text.rangeOfString(part, NSAnchoredSearch, searched),
              range(within.starts_with(wanted) ? 0 : Units::npos));
    ASSERT_EQ(text.rangeOfString(part, NSAnchoredSearch | NSBackwardsSearch, searched),
              range(within.ends_with(wanted) ? within.size() - wanted.size() : Units::npos));
    ASSERT_EQ(text.hasPrefix(part), model.starts_with(wanted));
    ASSERT_EQ(text.hasSuffix(part), model.ends_with(wanted));
  }
}

/// Folds the letters that repetitiveUnits() makes. Lone halves are unchanged.
Units folded(const Units& units) {
  Units result = units;
  for (std::size_t i = 0; i < result.size(); ++i) {
    if (result[i] == u'A') result[i] = u'a';
    if (result[i] == 0x212A) result[i] = u'k';
    if (i > 0 && result[i - 1] == 0xD801 && result[i] == 0xDC00) result[i] = 0xDC28;
  }
  return result;
}

/// Few letters and much repetition, so that texts are periodic: A, a, the Kelvin sign and its letter, a letter of two
/// halves in both cases, and its halves alone.
Units repetitiveUnits(Source& source, std::size_t most) {
  const Units letters[] = {u"a", u"A", u"k", u"\u212A", u"\U00010400", u"\U00010428", {0xDC00}, {0xD801}, {0xDC28}};
  const std::size_t kinds = source.upTo(3) == 0 ? 8 : source.upTo(2), first = source.upTo(8 - kinds);
  Units block, units;
  for (std::size_t left = 1 + source.upTo(4); left > 0; --left) block += letters[first + source.upTo(kinds)];
  for (const std::size_t length = source.upTo(most); units.size() < length;) {
    if (source.upTo(20) == 0)
      units += letters[source.upTo(8)];
    else
      units += block;
  }
  return units;
}

TEST(NSStringProperty, SearchInRepetitiveTextFindsWhatTheModelFinds) {
  Source source(8);
  int found = 0;
  for (int round = 0; round < 6'000; ++round) {
    const Units model = repetitiveUnits(source, round % 5 == 0 ? 1500 : 60);
    Units wanted = repetitiveUnits(source, round % 5 == 0 ? 200 : 8);
    if (round % 3 == 0 && !model.empty()) {
      const std::size_t at = source.upTo(model.size() - 1);
      wanted = model.substr(at, 1 + source.upTo(round % 5 == 0 ? 300 : 10));
    }
    if (wanted.empty()) continue;
    const std::size_t from = source.upTo(model.size()), length = source.upTo(model.size() - from);
    const NSString text = NSString::fromUtf16(model), part = NSString::fromUtf16(wanted);
    for (const bool ignoresCase : {false, true}) {
      // A position is an occurrence if the units there, as a text of their own, equal the wanted ones.
      const auto occursAt = [&](std::size_t at) {
        const Units there = model.substr(at, wanted.size());
        return ignoresCase ? folded(there) == folded(wanted) : there == wanted;
      };
      std::vector<std::size_t> places;
      for (std::size_t at = from; at + wanted.size() <= from + length; ++at) {
        if (occursAt(at)) places.push_back(at);
      }
      found += places.empty() ? 0 : 1;
      const auto range = [&](bool occurs, std::size_t at) {
        return occurs ? NSRange{at, wanted.size()} : NSRange{NSNotFound, 0};
      };
      const NSRange searched{from, length};
      const NSStringCompareOptions folding = ignoresCase ? NSCaseInsensitiveSearch : NSLiteralSearch;
      const std::size_t last = from + length - wanted.size();
      ASSERT_EQ(text.rangeOfString(part, folding, searched),
                range(!places.empty(), places.empty() ? 0 : places.front()));
      ASSERT_EQ(text.rangeOfString(part, folding | NSBackwardsSearch, searched),
                range(!places.empty(), places.empty() ? 0 : places.back()));
      ASSERT_EQ(text.rangeOfString(part, folding | NSAnchoredSearch, searched),
                range(!places.empty() && places.front() == from, from));
      ASSERT_EQ(text.rangeOfString(part, folding | NSAnchoredSearch | NSBackwardsSearch, searched),
                range(!places.empty() && places.back() == last, last));
      Units replaced;
      std::size_t end = 0;
      for (std::size_t at = 0; at + wanted.size() <= model.size(); ++at) {
        if (at < end || !occursAt(at)) continue;
        replaced += model.substr(end, at - end) + u"-";
        end = at + wanted.size();
      }
      replaced += model.substr(end);
      ASSERT_EQ(text.stringByReplacingOccurrencesOfString(part, "-", folding).toUtf16(), replaced);
    }
    ASSERT_EQ(text.hasPrefix(part), model.starts_with(wanted));
    ASSERT_EQ(text.hasSuffix(part), model.ends_with(wanted));
  }
  EXPECT_GT(found, 1'500);
}

TEST(NSStringProperty, ReplacingAndSplittingDoWhatTheModelDoes) {
  Source source(5);
  for (int round = 0; round < 5'000; ++round) {
    const Units model = source.units(30), target = source.units(2), replacement = source.units(3);
    if (target.empty()) continue;
    Units replaced;
    std::vector<NSString> pieces;
    std::size_t from = 0;
    for (std::size_t at = model.find(target); at != Units::npos; at = model.find(target, from)) {
      pieces.push_back(NSString::fromUtf16(model.substr(from, at - from)));
      replaced += model.substr(from, at - from) + replacement;
      from = at + target.size();
    }
    pieces.push_back(NSString::fromUtf16(model.substr(from)));
    replaced += model.substr(from);
    const NSString text = NSString::fromUtf16(model);
    ASSERT_EQ(text.componentsSeparatedBy(NSString::fromUtf16(target)), pieces);
    expectSame(text.stringByReplacingOccurrencesOfString(NSString::fromUtf16(target), NSString::fromUtf16(replacement)),
               replaced);
  }
}

TEST(NSStringProperty, TheBuilderAndTheModelAgreeAfterAnyChanges) {
  Source source(6);
  for (int round = 0; round < 100; ++round) {
    Units model;
    NSMutableString text;
    for (int change = 0; change < 60; ++change) {
      const Units added = source.units(6);
      const std::size_t at = source.upTo(model.size()), length = source.upTo(model.size() - at) % 8;
      switch (source.upTo(3)) {
        case 0:
          text.appendString(NSString::fromUtf16(added));
          model += added;
          break;
        case 1:
          text.insertString(NSString::fromUtf16(added), at);
          model.insert(at, added);
          break;
        case 2:
          text.deleteCharactersInRange({at, length});
          model.erase(at, length);
          break;
        default:
          text.replaceCharactersInRange({at, length}, NSString::fromUtf16(added));
          model.replace(at, length, added);
          break;
      }
      expectSame(text.string(), model);
      ASSERT_EQ(text.length(), model.size());
    }
  }
}

TEST(NSStringProperty, AnyBytesComeBack) {
  Source source(7);
  for (int round = 0; round < 20'000; ++round) {
    std::string bytes;
    for (std::size_t left = source.upTo(12); left > 0; --left) {
      const bool likelyText = source.upTo(1) == 0;
      bytes += likelyText ? std::string("\xF0\x9F\x92\xB7\xC3\xA9").substr(source.upTo(5), 1 + source.upTo(4))
                          : std::string(1, static_cast<char>(source.upTo(255)));
    }
    const NSString text = NSString::fromBytes(bytes);
    ASSERT_EQ(text.bytes(), bytes);
    ASSERT_EQ(NSString::fromUtf8(bytes).has_value(), text.isWellFormed());
    ASSERT_TRUE(utf8::isValid(text.utf8()));
  }
}

}  // namespace
}  // namespace norvik
