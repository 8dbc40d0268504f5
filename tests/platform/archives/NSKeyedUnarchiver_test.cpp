#include "NorvikCore/platform/archives/NSKeyedUnarchiver.h"

#include "NorvikCore/platform/archives/NSKeyedArchiver.h"
#include "NorvikCore/platform/collections/NSError.h"
#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "NorvikCore/platform/collections/NSMutableData.h"
#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/collections/NSSet.h"
#include "tests/support/ExpectRaises.h"
#include "tests/support/LeaksAllowed.h"

#include <gtest/gtest.h>

#include <string>

namespace norvik {
namespace {

using namespace std::string_literals;

class Choosy : public NSObject, public NSCoding {
  NK_OBJECT(Choosy, NSObject)
  NK_CODING
  void encodeWithCoder(NSCoder& coder) const override { coder.encodeObject(content, "content"); }
  bool initWithCoder(NSCoder& coder) override {
    content = coder.decodeObjectForKey("content");
    if (content == Value("raise")) NSException::raise(NSGenericException, "out of initWithCoder");
    if (content == Value("wrong")) (void)coder.decodeIntegerForKey("content");
    return content != Value("refuse");
  }
  Value content;
};

class NeverCoded : public NSObject {
  NK_OBJECT(NeverCoded, NSObject)
};

Ref<Choosy> choosy(const Value& content) {
  auto made = make<Choosy>();
  made->content = content;
  return made;
}

Ref<NSData> archive(const Value& root) { return NSKeyedArchiver::archivedDataWithRootObject(root); }

/// An archive with these bytes after the mark.
Ref<NSData> bytes(const std::string& text) { return NSData::dataWithText("NKARCH1\n" + text); }

std::string unarchivingRaises(const Ref<NSData>& data) {
  return norvik::test::nameOfWhatIsRaised([&] { (void)NSKeyedUnarchiver::unarchiveObjectWithData(*data); });
}

TEST(NSKeyedUnarchiver, HeaderExample) {
  Ref<NSError> error;
  const auto data = archive(NSArray::arrayWith({1, 2}));
  const Value slips = NSKeyedUnarchiver::unarchivedObjectOfClass(NSArray::staticClass(), *data, &error);
  EXPECT_EQ(slips, Value(NSArray::arrayWith({1, 2})));
  EXPECT_FALSE(error);
}

TEST(NSKeyedUnarchiver, AnotherClassThanAskedForIsAnError) {
  Ref<NSError> error;
  const auto data = archive("text");
  EXPECT_TRUE(NSKeyedUnarchiver::unarchivedObjectOfClass(NSArray::staticClass(), *data, &error).isAbsent());
  EXPECT_EQ(error->domain(), NSCoderErrorDomain);
  EXPECT_EQ(error->code(), NSCoderValueNotFoundError);
  EXPECT_EQ(error->localizedDescription(), "The data could not be read: there is no NSArray in it.");
  EXPECT_TRUE(NSKeyedUnarchiver::unarchivedObjectOfClass(NSArray::staticClass(), *data).isAbsent());
}

TEST(NSKeyedUnarchiver, DamagedDataAreAnErrorWhereOneIsAskedFor) {
  Ref<NSError> error;
  EXPECT_TRUE(NSKeyedUnarchiver::unarchivedObjectOfClass(NSArray::staticClass(), *NSData::dataWithText("pay"), &error)
                  .isAbsent());
  EXPECT_EQ(error->code(), NSCoderReadCorruptError);
  EXPECT_EQ(error->localizedFailureReason(), "the archive is damaged at byte 3: it does not begin like an archive");
}

TEST(NSKeyedUnarchiver, NothingUnderAKeyIsAbsent) {
  auto unarchiver = make<NSKeyedUnarchiver>(*bytes("\0\0\0"s));
  EXPECT_TRUE(unarchiver->decodeObjectForKey("root").isAbsent());
  EXPECT_FALSE(unarchiver->containsValueForKey("root"));
  EXPECT_EQ(unarchiver->decodeDoubleForKey("root"), 0.0);
  EXPECT_RAISES((void)unarchiver->decode<Decimal>("root"), "NSInvalidUnarchiveOperationException");
  EXPECT_RAISES(unarchiver->encodeBool(true, "x"), "NSInvalidUnarchiveOperationException");
}

TEST(NSKeyedUnarchiver, AnObjectThatRefusesIsAbsent) {
  EXPECT_TRUE(NSKeyedUnarchiver::unarchiveObjectWithData(*archive(choosy("refuse"))).isAbsent());
  EXPECT_EQ(unarchivingRaises(archive(NSArray::arrayWithObjects(choosy("refuse")))),
            "NSInvalidUnarchiveOperationException");
}

TEST(NSKeyedUnarchiver, AnExceptionOutOfDecodingBecomesTheUnarchivers) {
  EXPECT_EQ(unarchivingRaises(archive(choosy("raise"))), "NSInvalidUnarchiveOperationException");
  EXPECT_EQ(unarchivingRaises(archive(choosy("wrong"))), "NSInvalidUnarchiveOperationException");
}

TEST(NSKeyedUnarchiver, DamageRaises) {
  const struct {
    const char* why;
    std::string bytes;
  } rows[] = {
      {"nothing behind the mark", ""},
      {"more texts than bytes",
       "\x05\x01"
       "a"},
      {"a text that is not UTF-8", "\x01\x01\xff\0\0"s},
      {"a text cut short",
       "\x01\x09"
       "abc"},
      {"a huge count", "\xff\xff\xff\xff\xff\xff\xff\xff\x7f"},
      {"a number beyond 64 bits", "\xff\xff\xff\xff\xff\xff\xff\xff\xff\x7f"},
      {"a number that is too long", "\x80\0\0\0"s},
      {"no such kind of object", "\0\x01\x09\0"s},
      {"no such kind of value",
       "\x01\x01"
       "a\0\x01\0\x0a"s},
      {"no such text",
       "\x01\x01"
       "a\0\x01\x01\0"s},
      {"no such object",
       "\x01\x01"
       "a\0\x01\0\x09\0"s},
      {"an absent element", "\0\x01\x01\x01\0\0"s},
      {"a key used twice",
       "\x01\x01"
       "a\0\x02\0\x01\0\x01"s},
      {"a decimal with a wrong exponent",
       "\x01\x01"
       "a\0\x01\0\x06\0\xff\x7f\0\x01"s},
      {"bytes behind the end", "\0\0\0\0"s},
      {"data cut short",
       "\0\x01\x07\x09"
       "abc"s},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(unarchivingRaises(bytes(row.bytes)), "NSInvalidUnarchiveOperationException") << row.why;
  }
}

TEST(NSKeyedUnarchiver, EqualKeysInASetOrDictionaryRaise) {
  EXPECT_EQ(unarchivingRaises(bytes("\x01\x04root\x01\x05\x02\x02\x02\x01\0\x09\0"s)),
            "NSInvalidUnarchiveOperationException");
  EXPECT_EQ(unarchivingRaises(bytes("\x01\x04root\x01\x03\x02\x02\x03\x02\x03\x01\0\x09\0"s)),
            "NSInvalidUnarchiveOperationException");
}

TEST(NSKeyedUnarchiver, OnlyClassesThatStateItAreMade) {
  const auto withClass = [](const std::string& name) {
    return bytes("\x02\x04root"s + static_cast<char>(name.size()) + name + "\x01\0\x01\0\x01\0\x09\0"s);
  };
  EXPECT_EQ(unarchivingRaises(withClass("NeverCoded")), "NSInvalidUnarchiveOperationException");
  EXPECT_EQ(unarchivingRaises(withClass("NoSuchClass")), "NSInvalidUnarchiveOperationException");
  EXPECT_EQ(unarchivingRaises(withClass("NSString")), "NSInvalidUnarchiveOperationException");
  EXPECT_EQ(unarchivingRaises(withClass("Choosy")), "");
}

TEST(NSKeyedUnarchiver, EveryCutAndEveryChangedByteIsRefusedOrReadAsSomethingElse) {
  const auto whole = archive(NSArray::arrayWithObjects(
      choosy(NSSet::setWith({1, "two", 3.5_dec})), NSDictionary::dictionaryWith({{"key", Date()}}), 2.5, true,
      NSData::dataWithText("pay"), NSString::fromCodePoint(0x1F600).substringToIndex(1)));
  for (std::size_t length = 0; length < whole->length(); ++length) {
    EXPECT_EQ(unarchivingRaises(whole->subdataWithRange({0, length})), "NSInvalidUnarchiveOperationException")
        << length;
  }
  for (std::size_t at = 0; at < whole->length(); ++at) {
    for (const unsigned change : {0x01u, 0x02u, 0x80u, 0xffu}) {
      auto damaged = whole->mutableCopy();
      std::uint8_t& byte = damaged->mutableBytes()[at];
      byte = static_cast<std::uint8_t>(byte ^ change);
      const norvik::test::LeaksAllowed rings;  // because a changed byte may make an object hold itself
      const std::string name = unarchivingRaises(damaged->copy());
      EXPECT_TRUE(name.empty() || name == "NSInvalidUnarchiveOperationException") << name << " at " << at;
    }
  }
}

TEST(NSKeyedUnarchiver, ManyLevelsOfSharedElementsAreComparedOnce) {
  // One set contains two equal towers of arrays; each level contains the level below twice.
  std::string objects("\x79\x05\x02\x09\x01\x09\x3d", 7);
  for (int tower = 0; tower < 2; ++tower) {
    for (int level = 1; level <= 60; ++level) {
      const auto below = static_cast<char>(tower * 60 + level + 1);
      objects += level < 60 ? std::string("\x01\x02\x09") + below + "\x09" + below : "\x01\x02\x03\x03";
    }
  }
  EXPECT_EQ(unarchivingRaises(bytes("\x01\x04root" + objects + "\x01\0\x09\0"s)),
            "NSInvalidUnarchiveOperationException");
}

TEST(NSKeyedUnarchiver, ArraysThatHoldThemselvesCanBeElementsOfASet) {
  // A set of two arrays, each of which contains only itself: they cannot be distinguished.
  EXPECT_EQ(
      unarchivingRaises(bytes("\x01\x04root\x03\x05\x02\x09\x01\x09\x02\x01\x01\x09\x01\x01\x01\x09\x02\x01\0\x09\0"s)),
      "NSInvalidUnarchiveOperationException");
}

}  // namespace
}  // namespace norvik
