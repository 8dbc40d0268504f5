#include "NorvikCore/platform/archives/NSUnarchiver.h"

#include "NorvikCore/platform/archives/NSArchiver.h"
#include "NorvikCore/platform/archives/NSKeyedArchiver.h"
#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "NorvikCore/platform/collections/NSMutableData.h"
#include "NorvikCore/platform/collections/NSSet.h"
#include "tests/support/ExpectRaises.h"
#include "tests/support/InChild.h"
#include "tests/support/LeaksAllowed.h"
#include "tests/support/Sanitizers.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cstdint>
#include <string>

namespace norvik {
namespace {

using namespace std::string_literals;

class PickyInOrder : public NSObject, public NSCoding {
  NK_OBJECT(PickyInOrder, NSObject)
  NK_CODING
  void encodeWithCoder(NSCoder& coder) const override { coder.encodeObject(content); }
  bool initWithCoder(NSCoder& coder) override {
    content = coder.decodeObject();
    if (content == Value("raise")) NSException::raise(NSGenericException, "out of initWithCoder");
    if (content == Value("more")) (void)coder.decodeObject();
    if (content == Value("throw")) throw 5;
    return content != Value("refuse");
  }
  Value content;
};

/// Decoded as a complete object that holds another one.
class DecodedWhole : public NSObject, public NSCoding {
  NK_OBJECT(DecodedWhole, NSObject)
  NK_DECODED_BY(holderWithCoder)
  void encodeWithCoder(NSCoder& coder) const override { coder.encodeObject(held); }
  static Ref<DecodedWhole> holderWithCoder(NSCoder& coder) {
    auto made = make<DecodedWhole>();
    made->held = coder.decodeObject();
    return made;
  }
  Value held;
};

class NeverDecoded : public NSObject {
  NK_OBJECT(NeverDecoded, NSObject)
};

Ref<PickyInOrder> picky(const Value& content) {
  auto made = make<PickyInOrder>();
  made->content = content;
  return made;
}

Ref<NSData> archiveInOrder(const Value& root) { return NSArchiver::archivedDataWithRootObject(root); }

/// An archive with these bytes after the mark.
Ref<NSData> bytesInOrder(const std::string& text) { return NSData::dataWithText("NKSEQU1\n" + text); }

std::string readingInOrderRaises(const Ref<NSData>& data) {
  return norvik::test::nameOfWhatIsRaised([&] { (void)NSUnarchiver::unarchiveObjectWithData(*data); });
}

TEST(NSUnarchiver, HeaderExample) {
  auto archiver = make<NSArchiver>();
  archiver->encodeObject(NSArray::arrayWith({1, 2}));
  archiver->encodeValue(3);
  auto unarchiver = make<NSUnarchiver>(*archiver->archiverData());
  EXPECT_EQ(unarchiver->decodeObject(), Value(NSArray::arrayWith({1, 2})));
  EXPECT_EQ(unarchiver->decodeValue<int>(), 3);
  EXPECT_TRUE(unarchiver->isAtEnd());
}

TEST(NSUnarchiver, AsksForValuesInTheirOrderAndRaisesBehindTheLast) {
  auto unarchiver = make<NSUnarchiver>(*archiveInOrder("text"));
  EXPECT_EQ(unarchiver->decodeObject(), Value("text"));
  EXPECT_RAISES((void)unarchiver->decodeObject(), "NSInvalidUnarchiveOperationException");
}

TEST(NSUnarchiver, AValueOfAnotherKindRaises) {
  auto unarchiver = make<NSUnarchiver>(*archiveInOrder("text"));
  EXPECT_RAISES((void)unarchiver->decodeValue<Decimal>(), "NSInvalidUnarchiveOperationException");
}

TEST(NSUnarchiver, NothingUnderAKeyIsAbsent) {
  auto unarchiver = make<NSUnarchiver>(*bytesInOrder(""));
  EXPECT_TRUE(unarchiver->decodeObjectForKey("root").isAbsent());
  EXPECT_FALSE(unarchiver->containsValueForKey("root"));
  EXPECT_TRUE(unarchiver->isAtEnd());
}

TEST(NSUnarchiver, OnlyReads) {
  auto unarchiver = make<NSUnarchiver>(*bytesInOrder(""));
  EXPECT_RAISES(unarchiver->encodeValue(true), "NSInvalidUnarchiveOperationException");
  EXPECT_RAISES(unarchiver->encodeBool(true, "x"), "NSInvalidUnarchiveOperationException");
}

TEST(NSUnarchiver, AnObjectThatRefusesIsAbsent) {
  EXPECT_TRUE(NSUnarchiver::unarchiveObjectWithData(*archiveInOrder(picky("refuse"))).isAbsent());
  EXPECT_EQ(readingInOrderRaises(archiveInOrder(NSArray::arrayWithObjects(picky("refuse")))),
            "NSInvalidUnarchiveOperationException");
}

TEST(NSUnarchiver, AnExceptionOutOfDecodingBecomesTheUnarchivers) {
  EXPECT_EQ(readingInOrderRaises(archiveInOrder(picky("raise"))), "NSInvalidUnarchiveOperationException");
  EXPECT_EQ(readingInOrderRaises(archiveInOrder(picky("more"))), "NSInvalidUnarchiveOperationException");
}

TEST(NSUnarchiver, ExceptionsOfOtherKindsPass) {
  EXPECT_THROW((void)NSUnarchiver::unarchiveObjectWithData(*archiveInOrder(picky("throw"))), int);
}

TEST(NSUnarchiver, AnObjectThatCouldNotBeDecodedIsNotGivenOutHalfMade) {
  auto archiver = make<NSArchiver>();
  const auto broken = NSArray::arrayWithObjects(1, picky("raise"));
  archiver->encodeObject(broken);
  archiver->encodeObject(broken);
  archiver->encodeObject("behind");
  auto unarchiver = make<NSUnarchiver>(*archiver->archiverData());
  EXPECT_RAISES((void)unarchiver->decodeObject(), "NSInvalidUnarchiveOperationException");
  EXPECT_RAISES((void)unarchiver->decodeObject(), "NSInvalidUnarchiveOperationException");
  EXPECT_EQ(unarchiver->decodeObject(), Value("behind"));
}

TEST(NSUnarchiver, AnObjectMadeWholeCannotHoldItself) {
  EXPECT_EQ(readingInOrderRaises(bytesInOrder("\x09\0\0\0\x0c"
                                              "DecodedWhole\x09\x01\x0b"s)),
            "NSInvalidUnarchiveOperationException");
  EXPECT_EQ(readingInOrderRaises(bytesInOrder("\x09\0\0\0\x0c"
                                              "DecodedWhole\x01\x0b"s)),
            "");
}

TEST(NSUnarchiver, AnArchiveOfTheOtherKindRaises) {
  EXPECT_EQ(readingInOrderRaises(NSKeyedArchiver::archivedDataWithRootObject(1)),
            "NSInvalidUnarchiveOperationException");
}

TEST(NSUnarchiver, DamageRaises) {
  const struct {
    const char* why;
    std::string bytes;
  } rows[] = {
      {"nothing behind the mark", ""},
      {"a text that is not UTF-8", "\x08\0\x01\xff"s},
      {"a text cut short", "\x08\0\x09pay"s},
      {"an unknown text", "\x08\x01"},
      {"an unknown object", "\x09\x01"},
      {"no such kind of object", "\x09\0\x09"s},
      {"no such kind of value", "\x0c"},
      {"an end outside of any object", "\x02\x0b"},
      {"a key without a value", "\x02\x0a\0\x01k"s},
      {"a key in place of a key's value", "\x02\x0a\0\x01k\x0a\0\x01m\x02"s},
      {"a key used twice", "\x02\x0a\0\x01k\x02\x0a\x01\x02"s},
      {"a key in a collection", "\x09\0\x01\x01\x0a\0\x01k\x02"s},
      {"an absent element", "\x09\0\x01\x01\0"s},
      {"an object without an end", "\x09\0\0\0\x0cPickyInOrder\x02"s},
      {"a huge count", "\x09\0\x01\xff\xff\xff\xff\xff\xff\xff\xff\x7f"s},
      {"data cut short", "\x09\0\x07\x09pay"s},
      {"a double cut short", "\x05pay"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(readingInOrderRaises(bytesInOrder(row.bytes)), "NSInvalidUnarchiveOperationException") << row.why;
  }
}

TEST(NSUnarchiver, NestingInTheBytesIsBounded) {
  std::string deep;
  for (int i = 0; i < 100'000; ++i) deep += "\x09\0\x01\x01"s;
  EXPECT_EQ(readingInOrderRaises(bytesInOrder(deep + '\x02')), "NSInvalidUnarchiveOperationException");
}

TEST(NSUnarchiver, ArraysThatEachClaimAllThatFollowsAreRefusedWithoutMakingRoomForIt) {
  const std::size_t claimed = 990'000;  // elements in each of 500 nested arrays
  std::string nested;
  for (int i = 0; i < 500; ++i) {
    nested += "\x09\0\x01"s;
    for (std::size_t left = claimed; left > 0; left >>= 7) {
      nested += static_cast<char>(left < 0x80 ? left : (left & 0x7F) | 0x80);
    }
  }
  const Ref<NSData> damaged = bytesInOrder(nested + std::string(1'000'000, '\xff'));
#if defined(NK_TEST_ADDRESS_SANITIZER)
  constexpr rlim_t greatestMemory = RLIM_INFINITY;  // the sanitizer needs terabytes of address space for itself
#else
  constexpr rlim_t greatestMemory = rlim_t{2} << 30;
#endif
  RUN_IN_CHILD({
    const rlimit limit{greatestMemory, greatestMemory};
    ASSERT_EQ(setrlimit(RLIMIT_AS, &limit), 0);
    EXPECT_EQ(readingInOrderRaises(damaged), "NSInvalidUnarchiveOperationException");
  });
}

TEST(NSUnarchiver, OnlyClassesThatStateItAreMade) {
  const auto withClass = [](const std::string& name) {
    return bytesInOrder("\x09\0\0\0"s + static_cast<char>(name.size()) + name + "\x02\x0b");
  };
  EXPECT_EQ(readingInOrderRaises(withClass("NeverDecoded")), "NSInvalidUnarchiveOperationException");
  EXPECT_EQ(readingInOrderRaises(withClass("NoSuchClass")), "NSInvalidUnarchiveOperationException");
  EXPECT_EQ(readingInOrderRaises(withClass("NSString")), "NSInvalidUnarchiveOperationException");
  EXPECT_EQ(readingInOrderRaises(withClass("PickyInOrder")), "");
}

TEST(NSUnarchiver, EveryCutAndEveryChangedByteIsRefusedOrReadAsSomethingElse) {
  const auto whole = archiveInOrder(NSArray::arrayWithObjects(
      picky(NSSet::setWith({1, "two", 3.5_dec})), NSDictionary::dictionaryWith({{"key", Date()}}), 2.5, true,
      NSData::dataWithText("pay"), NSString::fromCodePoint(0x1F600).substringToIndex(1)));
  for (std::size_t length = 0; length < whole->length(); ++length) {
    EXPECT_EQ(readingInOrderRaises(whole->subdataWithRange({0, length})), "NSInvalidUnarchiveOperationException")
        << length;
  }
  for (std::size_t at = 0; at < whole->length(); ++at) {
    for (const unsigned change : {0x01u, 0x02u, 0x80u, 0xffu}) {
      auto damaged = whole->mutableCopy();
      std::uint8_t& byte = damaged->mutableBytes()[at];
      byte = static_cast<std::uint8_t>(byte ^ change);
      const norvik::test::LeaksAllowed rings;  // because a changed byte may make an object hold itself
      const std::string name = readingInOrderRaises(damaged->copy());
      EXPECT_TRUE(name.empty() || name == "NSInvalidUnarchiveOperationException") << name << " at " << at;
    }
  }
}

}  // namespace
}  // namespace norvik
