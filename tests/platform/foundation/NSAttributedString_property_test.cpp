// Compares attributed texts with a model that has a dictionary for each unit, under random edits of texts with
// surrogate pairs and lone surrogates.
#include "NorvikCore/platform/foundation/NSAttributedString.h"

#include "tests/support/AttributedTextModel.h"
#include "tests/support/ThroughArchivers.h"

#include <gtest/gtest.h>

#include <random>

namespace norvik {
namespace {

using test::AttributedTextModel;

class Source {
 public:
  explicit Source(std::uint32_t seed) : engine_(seed) {}

  std::size_t upTo(std::size_t most) { return std::uniform_int_distribution<std::size_t>(0, most)(engine_); }
  std::u16string units(std::size_t most) {
    static constexpr char16_t alphabet[] = {u'a', u'b', u' ', 0x00E9, 0x20AC, 0xD83D, 0xDCB7, 0xDC00};
    std::u16string units;
    for (std::size_t length = upTo(most); units.size() < length;) units += alphabet[upTo(7)];
    return units;
  }
  AttributedTextModel::Attributes attributes() {
    AttributedTextModel::Attributes attributes;
    for (std::size_t i = upTo(2); i > 0; --i)
      attributes[std::string(1, static_cast<char>('p' + upTo(2)))] = int(upTo(1));
    return attributes;
  }
  AttributedTextModel text(std::size_t most) {
    AttributedTextModel text;
    for (std::size_t i = upTo(3); i > 0; --i) {
      const std::u16string part = units(most);
      text.replace(text.units.size(), 0, {part, std::vector(part.size(), attributes())});
    }
    return text;
  }

 private:
  std::mt19937 engine_;
};

Ref<NSAttributedString> textOf(const AttributedTextModel& model) {
  std::vector<AttributeRun> runs;
  for (const auto& attributes : model.attributes) runs.push_back({1, test::dictionaryOf(attributes)});
  return make<NSAttributedString>(NSString::fromUtf16(model.units), std::move(runs));
}

void expectSame(const NSAttributedString& text, const AttributedTextModel& model) {
  ASSERT_EQ(text.length(), model.units.size());
  ASSERT_EQ(text.string().toUtf16(), model.units);
  ASSERT_EQ(text.string(), NSString::fromUtf16(model.units));
  for (NSUInteger i = 0; i < model.units.size(); ++i) {
    NSRange run;
    ASSERT_EQ(test::attributesOf(*text.attributesAtIndex(i, &run)), model.attributes[i]) << "at " << i;
    ASSERT_EQ(run, model.runAt(i)) << "at " << i;
  }
  NSUInteger unit = 0;
  for (const auto& [range, attributes] : text) {
    ASSERT_EQ(range, model.runAt(unit));
    ASSERT_EQ(test::attributesOf(*attributes), model.attributes[unit]);
    unit += range.length;
  }
  ASSERT_EQ(unit, model.units.size());
}

void editOnce(Source& source, NSMutableAttributedString& text, AttributedTextModel& model) {
  const std::size_t from = source.upTo(model.units.size());
  std::size_t length = source.upTo(model.units.size() - from);
  if (source.upTo(2) > 0) length = std::min(length, source.upTo(3));
  const NSRange range{from, length};
  switch (source.upTo(9)) {
    case 0:
    case 1: {
      const auto added = source.attributes();
      model.add(from, length, added);
      text.addAttributes(*test::dictionaryOf(added), range);
      break;
    }
    case 2: {
      const auto only = source.attributes();
      model.set(from, length, only);
      text.setAttributes(test::dictionaryOf(only), range);
      break;
    }
    case 3:
      model.remove(from, length, "q");
      text.removeAttribute("q", range);
      break;
    case 4: {
      const AttributedTextModel added = source.text(6);
      model.replace(model.units.size(), 0, added);
      text.appendAttributedString(*textOf(added));
      break;
    }
    case 5: {
      const AttributedTextModel added = source.text(4);
      model.replace(from, 0, added);
      text.insertAttributedString(*textOf(added), from);
      break;
    }
    case 6: {
      const AttributedTextModel added = source.text(4);
      model.replace(from, length, added);
      text.replaceCharactersInRange(range, *textOf(added));
      break;
    }
    case 7: {
      const std::u16string added = source.units(5);
      model.replaceCharacters(from, length, added);
      text.replaceCharactersInRange(range, NSString::fromUtf16(added));
      break;
    }
    case 8:
      model.replace(from, length, {});
      text.deleteCharactersInRange(range);
      break;
    default:
      if (model.units.size() < 100) {
        model.replace(from, length, model);
        text.replaceCharactersInRange(range, text);
      }
      break;
  }
}

}  // namespace

TEST(NSAttributedStringProperty, AModelAndTheTextAgreeAfterAnyEdits) {
  for (std::uint32_t seed = 0; seed < 300; ++seed) {
    Source source(seed);
    AttributedTextModel model = source.text(8);
    const auto text = textOf(model)->mutableCopy();
    for (int edit = 0; edit < 40; ++edit) {
      editOnce(source, *text, model);
      ASSERT_NO_FATAL_FAILURE(expectSame(*text, model)) << "seed " << seed << ", edit " << edit;
    }
    const std::size_t from = source.upTo(model.units.size()), length = source.upTo(model.units.size() - from);
    ASSERT_NO_FATAL_FAILURE(expectSame(*text->attributedSubstringFromRange({from, length}), model.part(from, length)));
    EXPECT_TRUE(text->isEqual(*textOf(model)));
    EXPECT_TRUE(text->copy()->isEqual(*text->mutableCopy()));
    AttributedTextModel other = model;
    other.add(from, length, {{"p", 7}});
    EXPECT_EQ(text->isEqual(*textOf(other)), other == model);
    for (const auto archived : test::throughBothArchivers)
      ASSERT_NO_FATAL_FAILURE(expectSame(*archived(text).as<Ref<NSMutableAttributedString>>(), model));
  }
}

TEST(NSAttributedStringProperty, LongTextsOfManyRunsStayTheModel) {
  Source source(11);
  AttributedTextModel model;
  const auto text = make<NSMutableAttributedString>();
  while (model.units.size() < 3000) {
    const AttributedTextModel added = source.text(6);
    model.replace(model.units.size(), 0, added);
    text->appendAttributedString(*textOf(added));
  }
  for (int edit = 0; edit < 2000; ++edit) {
    const std::size_t from = source.upTo(model.units.size() - 4);
    const auto added = source.attributes();
    if (edit % 2 == 0) {
      model.set(from, 3, added);
      text->setAttributes(test::dictionaryOf(added), {from, 3});
    } else {
      model.replaceCharacters(from, 2, u"xy");
      text->replaceCharactersInRange({from, 2}, "xy");
    }
  }
  expectSame(*text, model);
}

}  // namespace norvik
