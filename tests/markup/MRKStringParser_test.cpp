#include "NorvikCore/markup/MRKStringParser.h"

#include "NorvikCore/markup/MRKEscapedStringForString.h"
#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/collections/NSSet.h"
#include "NorvikCore/platform/values/Decimal_literal.h"
#include "tests/support/ExpectRaises.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace norvik {
namespace {

Ref<NSDictionary> bold() { return NSDictionary::dictionaryWithObject("bold", NSFontAttributeName); }

Ref<MRKTaggedStringOptions> boldForB() {
  const auto options = MRKTaggedStringOptions::options();
  options->setAttributes(bold(), "b");
  return options;
}

std::optional<NSString> plain(const NSString& source) {
  return MRKTaggedString::stringWithString(source)->stringWithOptions(*MRKTaggedStringOptions::options());
}

Ref<NSAttributedString> styled(const NSString& source, const MRKTaggedStringOptions& options) {
  return MRKTaggedString::stringWithString(source)->attributedStringWithOptions(options);
}

/// The message of the error, which must be the same for plain and attributed text.
NSString fault(const NSString& source) {
  const auto tagged = MRKTaggedString::stringWithString(source);
  const auto options = MRKTaggedStringOptions::options();
  Ref<NSError> error, other;
  EXPECT_FALSE(tagged->stringWithOptions(*options, &error)) << source;
  EXPECT_FALSE(tagged->attributedStringWithOptions(*options, &other)) << source;
  if (!error || !other) return "no error";
  EXPECT_TRUE(error->isEqual(*other));
  EXPECT_EQ(error->domain(), "MRKTaggedStringErrorDomain");
  EXPECT_EQ(error->code(), 100);
  EXPECT_EQ(error->userInfo()->count(), 1u);
  return error->userInfo()->objectForKey("developerError").as<NSString>();
}

/// The arguments of the calls of a closure for every tag: "name {attributes} {present}".
struct Calls {
  std::vector<std::string> texts;
  Ref<MRKTaggedStringOptions> options = MRKTaggedStringOptions::options();

  Calls() {
    options->setUnknownTagDynamicAttributes(
        [this](const NSString& name, const NSDictionary& written, const NSDictionary& present) {
          std::string text = name.utf8();
          for (const auto& [key, value] : written)
            text += " " + key.description().utf8() + "=" + value.description().utf8();
          for (const auto& [key, value] : present) text += " +" + key.description().utf8();
          texts.push_back(text);
          return NSDictionary::dictionaryWithObject(1, name);
        });
  }
};

}  // namespace

TEST(MRKStringParser, HeaderExample) {
  const auto source = MRKTaggedString::stringWithString("Pay <b>now</b>");
  const auto options = MRKTaggedStringOptions::options();
  Ref<NSError> error;
  Value text = MRKStringParser::stringWithTaggedString(*source, *options, NSAttributedString::staticClass(), &error);
  EXPECT_EQ(text.as<Ref<NSAttributedString>>()->string(), "Pay now");
  EXPECT_FALSE(error);
}

TEST(MRKStringParser, GivesTheRangeOfATagItsAttributes) {
  const auto text = styled("a <b>bold</b> c", *boldForB());
  EXPECT_EQ(text->string(), "a bold c");
  NSRange run;
  EXPECT_TRUE(text->attributesAtIndex(2, &run)->isEqual(*bold()));
  EXPECT_EQ(run, (NSRange{2, 4}));
  EXPECT_EQ(text->attributesAtIndex(0)->count(), 0u);
  EXPECT_EQ(text->attributesAtIndex(6)->count(), 0u);
}

TEST(MRKStringParser, NamesOfTagsMatchWhateverTheirCase) {
  EXPECT_EQ(plain("<B>x</b>"), "x");
  EXPECT_EQ(plain("<b>x</B>"), "x");
  EXPECT_EQ(plain("<\u00C9t\u00E9>x</\u00E9T\u00C9>"), "x");
  EXPECT_EQ(styled("<B>x</b>", *boldForB())->attribute_atIndex(NSFontAttributeName, 0), Value("bold"));
}

TEST(MRKStringParser, LowerCaseIsFullSoThatOneLetterMayBecomeTwo) {
  EXPECT_EQ(plain("<\u0130>x</i\u0307>"), "x");  // capital I with a dot is i and a dot above
  EXPECT_EQ(plain("<\u03A3>x</\u03C3>"), "x");
  EXPECT_EQ(fault("<STRASSE>x</stra\u00DFe>"),
            "String had ending tag /stra\u00DFe when we expected ending tag STRASSE or new tag");
}

TEST(MRKStringParser, AnEndingTagThatDoesNotCloseTheInnermostIsAFault) {
  EXPECT_EQ(fault("<b>x</i>"), "String had ending tag /i when we expected ending tag b or new tag");
  EXPECT_EQ(fault("<b><i>x</b>"), "String had ending tag /b when we expected ending tag i or new tag");
  EXPECT_EQ(fault("x</b>"), "String had ending tag /b when we expected ending tag (null) or new tag");
}

TEST(MRKStringParser, ATagThatIsNotClosedIsAFault) {
  EXPECT_EQ(fault("<b>x"), "Reached end of string with 1 tags remaining (b)");
  EXPECT_EQ(fault("<b>x<I>y<br/>"), "Reached end of string with 3 tags remaining (b, I, br/)");
}

TEST(MRKStringParser, WithoutAnErrorToFillAFaultIsAnAbsentTextAlone) {
  EXPECT_FALSE(plain("<b>x"));
  EXPECT_FALSE(styled("<b>x", *boldForB()));
}

TEST(MRKStringParser, ALessWithoutAGreaterLosesItselfAlone) {
  EXPECT_EQ(plain("5 < 6"), "5  6");
  EXPECT_EQ(plain(MRKEscapedStringForString("5 < 6")), "5 < 6");
  EXPECT_EQ(plain("x<"), "x");
  EXPECT_EQ(plain("<<<"), "");
  EXPECT_EQ(plain("a > b"), "a > b");
}

TEST(MRKStringParser, ARunOfLessesOrGreatersIsOne) {
  EXPECT_EQ(plain("<<b>x</b>"), "x");
  EXPECT_EQ(plain("<b>>>x<</b>>"), "x");
  EXPECT_EQ(plain("\001<<b>x"), "<b>x");
}

TEST(MRKStringParser, EscapedTextComesBackWhateverItHolds) {
  for (const char* text : {"<b>", "a << b", "\001<", "x\001", "</b><", "a>", "\001\001<<\001"}) {
    const NSString escaped = MRKEscapedStringForString(text);
    EXPECT_EQ(plain(escaped), text);
    EXPECT_EQ(plain("<b>" + escaped + ".</b>"), NSString(text) + ".");
  }
  EXPECT_EQ(MRKEscapedStringForString("5 < 6"), "5 \001< 6");
}

// Escaping does not help in these two cases: a program must not put a text that begins or ends so beside a tag.
TEST(MRKStringParser, ATextBesideATagLosesGreatersAtItsStartAndEscapesByItsEnd) {
  EXPECT_EQ(plain("<b>" + MRKEscapedStringForString(">> x") + "</b>"), " x");
  EXPECT_EQ(plain(MRKEscapedStringForString("x\001") + "<b>"), "x<b>");
}

TEST(MRKStringParser, ReadsAttributesOfTagsForClosures) {
  Calls calls;
  (void)styled("<a href='x' target=y flag>t</a><a title=''>t</a>", *calls.options);
  EXPECT_EQ(calls.texts, (std::vector<std::string>{"a title=", "a href=x target=y flag=<null>"}));
}

TEST(MRKStringParser, PlainTextHasNoUseForAttributesButTagsMustMatch) {
  Calls calls;
  EXPECT_EQ(MRKTaggedString::stringWithString("<b>x</b>")->stringWithOptions(*calls.options), "x");
  EXPECT_TRUE(calls.texts.empty());
  EXPECT_EQ(fault("<a href='>'>x</b>"), "String had ending tag /b when we expected ending tag a or new tag");
}

TEST(MRKStringParser, AGreaterEndsATagAlsoWithinQuotes) { EXPECT_EQ(plain("<a x='>'>t</a>"), "'>t"); }

// A line break in a tag does not end its name; only spaces and tabs do. White space beyond ASCII does not end it
// either.
TEST(MRKStringParser, OnlySpacesAndTabsEndTheNameOfATag) {
  Calls calls;
  (void)styled("<a\nx=1>t</a\nx=1>", *calls.options);
  (void)styled("<a\u00A0x=1>t</a\u00A0x=1>", *calls.options);
  (void)styled("<a\tx=1>t</a>", *calls.options);
  EXPECT_EQ(calls.texts, (std::vector<std::string>{"a\nx=1", "a\u00A0x=1", "a x=1"}));
}

TEST(MRKStringParser, BlanksAndLineBreaksBeforeANameAreSkipped) {
  EXPECT_EQ(plain("< \t\r\n\v\f b>x</b>"), "x");
  EXPECT_EQ(fault("<\u00A0b>x</b>"), "String had ending tag /b when we expected ending tag \u00A0b or new tag");
  EXPECT_EQ(fault("<b>x< / b>"), "String had ending tag / when we expected ending tag b or new tag");
}

// A tag without a name can be opened but not closed, so it is always an error.
TEST(MRKStringParser, ATagWithoutANameIsNeverClosed) {
  EXPECT_EQ(fault("<>x"), "Reached end of string with 1 tags remaining ((null))");
  EXPECT_EQ(fault("< \n>x</>"), "String had ending tag / when we expected ending tag (null) or new tag");
  EXPECT_EQ(fault("</>"), "String had ending tag / when we expected ending tag (null) or new tag");
  EXPECT_EQ(fault("<b><>x</b>"), "String had ending tag /b when we expected ending tag (null) or new tag");
}

TEST(MRKStringParser, InnerTagsWinOverOuterOnes) {
  const auto options =
      MRKTaggedStringOptions::optionsWithBaseAttributes(NSDictionary::dictionaryWith({{"font", "body"}, {"size", 10}}));
  options->setAttributes(NSDictionary::dictionaryWithObject("bold", "font"), "b");
  options->setAttributes(NSDictionary::dictionaryWith({{"font", "italic"}, {"size", 12}}), "i");
  const auto text = styled("w<b>x<i>y</i></b><i><b>z</b></i>", *options);
  EXPECT_EQ(text->string(), "wxyz");
  const struct {
    NSUInteger at;
    const char* font;
    int size;
  } rows[] = {{0, "body", 10}, {1, "bold", 10}, {2, "italic", 12}, {3, "bold", 12}};
  for (const auto& row : rows) {
    EXPECT_EQ(text->attribute_atIndex("font", row.at), Value(row.font)) << row.at;
    EXPECT_EQ(text->attribute_atIndex("size", row.at), Value(row.size)) << row.at;
  }
}

// 5 and 5.00 are equal, but a reader can tell them apart.
TEST(MRKStringParser, EqualAttributesOfTwoTagsKeepTheirDigitsUnlessTheyMeet) {
  const auto options = MRKTaggedStringOptions::options();
  options->setAttributes(NSDictionary::dictionaryWithObject(5_dec, "size"), "b");
  options->setAttributes(NSDictionary::dictionaryWithObject(5.00_dec, "size"), "i");
  const auto digits = [](const NSAttributedString& text, NSUInteger unit) {
    return text.attribute_atIndex("size", unit).description();
  };
  const auto apart = styled("<b>x</b>-<i>y</i>-<b>z</b>", *options);
  EXPECT_EQ(digits(*apart, 0), "5");
  EXPECT_EQ(digits(*apart, 2), "5.00");
  EXPECT_EQ(digits(*apart, 4), "5");
  const auto together = styled("<i>y</i><b>x</b>", *options);
  NSRange run;
  (void)together->attributesAtIndex(1, &run);
  EXPECT_EQ(run, (NSRange{0, 2}));
  EXPECT_EQ(digits(*together, 1), "5.00");
  const auto nested = styled("<i>y<b>x</b></i>", *options);
  EXPECT_EQ(digits(*nested, 1), "5.00");
}

TEST(MRKStringParser, AFixedDictionaryCountsAsItIsWhenTheTextIsParsed) {
  const auto options = MRKTaggedStringOptions::options();
  const auto dictionary = NSMutableDictionary::dictionary();
  dictionary->setObject(1, "size");
  options->setAttributes(dictionary, "b");
  const auto before = styled("<b>x</b>", *options);
  dictionary->setObject(2, "size");
  EXPECT_EQ(before->attribute_atIndex("size", 0), Value(1));
  EXPECT_EQ(styled("<b>x</b>", *options)->attribute_atIndex("size", 0), Value(2));
}

TEST(MRKStringParser, ATextMadeOfMarkupCanBeEdited) {
  const auto text = styled("a<b>bc</b>d<b>e</b>", *boldForB())->mutableCopy();
  text->addAttributes(*bold(), {3, 1});
  NSRange run;
  (void)text->attributesAtIndex(3, &run);
  EXPECT_EQ(run, (NSRange{1, 4}));
  text->deleteCharactersInRange({0, 2});
  EXPECT_EQ(text->string(), "cde");
  EXPECT_EQ(text->attribute_atIndex(NSFontAttributeName, 0), Value("bold"));
}

TEST(MRKStringParser, EachTagKeepsItsOwnOfValuesThatAreEqual) {
  const auto options = MRKTaggedStringOptions::options();
  const auto first = NSMutableDictionary::dictionary(), second = NSMutableDictionary::dictionary();
  options->setAttributes(NSDictionary::dictionaryWith({{"size", 5}, {"notes", first}}), "a");
  options->setAttributes(NSDictionary::dictionaryWith({{"size", 5.00_dec}, {"notes", second}}), "b");
  const auto text = styled("<a>x</a>y<b>z</b>", *options);
  EXPECT_EQ(text->attribute_atIndex("size", 0).description(), "5");
  EXPECT_EQ(text->attribute_atIndex("size", 2).description(), "5.00");
  EXPECT_EQ(text->attribute_atIndex("notes", 0).object(), first.get());
  EXPECT_EQ(text->attribute_atIndex("notes", 2).object(), second.get());
}

TEST(MRKStringParser, ClosuresAreCalledFromTheTagClosedLastWithWhatIsThere) {
  Calls calls;
  (void)styled("<o>1<p>2</p><q>3</q></o><r>4</r>", *calls.options);
  EXPECT_EQ(calls.texts, (std::vector<std::string>{"r", "o", "q +o", "p +o"}));
}

TEST(MRKStringParser, AClosureOfAnEmptyTagSeesTheUnitBehindItAndAtTheEndNothing) {
  Calls calls;
  calls.options->setBaseAttributes(NSDictionary::dictionaryWithObject(1, "base"));
  const auto text = styled("<o><e></e><p>x</p></o><f></f>", *calls.options);
  EXPECT_EQ(calls.texts, (std::vector<std::string>{"f", "o +base", "p +base +o", "e +base +o +p"}));
  EXPECT_EQ(text->attributesAtIndex(0)->count(), 3u);
  EXPECT_TRUE(text->attribute_atIndex("e", 0).isAbsent());
}

TEST(MRKStringParser, ATextThatIsEmptyWithoutTagsAsksForNoAttributes) {
  Calls calls;
  EXPECT_EQ(styled("<a></a>", *calls.options)->length(), 0u);
  EXPECT_TRUE(calls.texts.empty());
}

TEST(MRKStringParser, RangesCountUtf16UnitsBesidePairsAndLoneHalves) {
  NSRange run;
  const auto pair = styled("\U0001F4B7<b>x</b>", *boldForB());
  (void)pair->attributesAtIndex(2, &run);
  EXPECT_EQ(run, (NSRange{2, 1}));

  const std::u16string units{0xD83D, u'<', u'b', u'>', 0xDCB7, u'y', u'<', u'/', u'b', u'>'};
  const auto halves = styled(NSString::fromUtf16(units), *boldForB());
  EXPECT_EQ(halves->string(), "\U0001F4B7y");
  EXPECT_EQ(halves->attributesAtIndex(0)->count(), 0u);
  (void)halves->attributesAtIndex(1, &run);
  EXPECT_EQ(run, (NSRange{1, 2}));
}

TEST(MRKStringParser, AClosureThatRaisesEndsTheParsing) {
  const auto options = MRKTaggedStringOptions::options();
  options->setDynamicAttributes(
      [](const NSString&, const NSDictionary&, const NSDictionary&) -> Ref<NSDictionary> { throw 7; }, "a");
  EXPECT_THROW((void)styled("<a>x</a>", *options), int);
}

TEST(MRKStringParser, AClosureMayGiveNothingOrADictionaryThatItChangesLater) {
  const auto options = MRKTaggedStringOptions::options();
  const auto growing = NSMutableDictionary::dictionary();
  options->setDynamicAttributes(
      [&](const NSString&, const NSDictionary&, const NSDictionary&) -> Ref<NSDictionary> {
        growing->setObject(growing->count(), "n");
        growing->setObject(0, NSString("k" + std::to_string(growing->count())));
        return growing;
      },
      "a");
  options->setDynamicAttributes(
      [](const NSString&, const NSDictionary&, const NSDictionary&) { return Ref<NSDictionary>(); }, "n");
  const auto text = styled("<a>x</a><a>y</a><n>z</n>", *options);
  EXPECT_EQ(text->attribute_atIndex("n", 1), Value(0));
  EXPECT_EQ(text->attribute_atIndex("n", 0), Value(2));
  EXPECT_EQ(text->attributesAtIndex(2)->count(), 0u);
}

TEST(MRKStringParser, AnotherKindOfResultRaises) {
  const auto source = MRKTaggedString::stringWithString("x");
  const auto options = MRKTaggedStringOptions::options();
  try {
    (void)MRKStringParser::stringWithTaggedString(*source, *options, NSSet::staticClass());
    FAIL();
  } catch (const NSException& exception) {
    EXPECT_EQ(exception.name(), "NSInternalInconsistencyException");
    EXPECT_EQ(exception.reason(), "Somehow asked for class type NSSet for parsed string");
  }
}

TEST(MRKStringParser, AppendsPlainTextWithoutAttributes) {
  const auto text = NSMutableAttributedString::attributedStringWithString("a", bold());
  MRKStringParser::appendString("b", *text);
  MRKStringParser::appendString("", *text);
  MRKStringParser::appendString(std::nullopt, *text);
  EXPECT_EQ(text->string(), "ab");
  EXPECT_EQ(text->attributesAtIndex(1)->count(), 0u);
}

// Each of these takes hours if an algorithm is quadratic, and exhausts the stack if one is recursive.
TEST(MRKStringParser, TenMegabytesOfAnythingTakeLinearTime) {
  constexpr std::size_t size = 10'000'000;
  const auto repeated = [](const std::string& piece, std::size_t bytes) {
    std::string text;
    while (text.size() < bytes) text += piece;
    return text;
  };
  EXPECT_EQ(plain(NSString(std::string(size, '<'))), "");
  EXPECT_EQ(plain(NSString(repeated("< ", size)))->length(), size - 1);
  EXPECT_EQ(plain(NSString(repeated("\001<", size)))->length(), size / 2);
  EXPECT_TRUE(
      fault(NSString(repeated("<b>", size))).hasPrefix("Reached end of string with 3333334 tags remaining (b, b"));
  const std::size_t depth = size / 8;
  const auto nested = styled(NSString(repeated("<b>", depth * 3) + "x" + repeated("</b>", depth * 4)), *boldForB());
  EXPECT_EQ(nested->string(), "x");
  EXPECT_EQ(nested->attribute_atIndex(NSFontAttributeName, 0), Value("bold"));
  EXPECT_EQ(styled(NSString(repeated("<b>x</b>y", size)), *boldForB())->length(), 2u * 1'111'112);

  std::size_t attributes = 0;
  const auto options = MRKTaggedStringOptions::options();
  options->setDynamicAttributes(
      [&](const NSString&, const NSDictionary& written, const NSDictionary&) {
        attributes = written.count();
        return Ref<NSDictionary>();
      },
      "a");
  std::string many = "<a";
  for (int i = 0; many.size() < size / 10; ++i) many += " n" + std::to_string(i) + "='v'";
  EXPECT_TRUE(styled(NSString(many + ">x</a>"), *options));
  EXPECT_GT(attributes, 70'000u);
  EXPECT_TRUE(styled(NSString("<a" + repeated(" =", size) + ">x</a>"), *options));
  EXPECT_EQ(attributes, 0u);
  EXPECT_TRUE(styled(NSString("<a x='" + repeated("\"'", size) + ">x</a>"), *options));

  options->setDynamicAttributes(
      [](const NSString&, const NSDictionary&, const NSDictionary&) {
        return NSDictionary::dictionaryWithObject(NSMutableDictionary::dictionary(), "equal, but another one");
      },
      "a");
  EXPECT_TRUE(styled(NSString(repeated("<a>x</a>y", size / 10)), *options));
}

}  // namespace norvik
