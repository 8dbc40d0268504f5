#include <gtest/gtest.h>

#include <sstream>

#include "NorvikCore/Categories/NSObject+Norvik.h"
#include "NorvikCore/platform/appkit/NSApplication.h"
#include "NorvikCore/platform/archives/NSUnarchiver.h"
#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/object/NSCoder.h"
#include "tests/support/ExpectRaises.h"

namespace norvik {
namespace {

class PlainObject : public NSObject {
  NK_OBJECT(PlainObject, NSObject)
};

class Account : public NSObject, public NSCoding {
  NK_OBJECT(Account, NSObject)
  NK_CODING
  NK_PROPERTY(NSString, holder, setHolder)
  NK_PROPERTY(Ref<NSMutableArray>, entries, setEntries)
  void encodeWithCoder(NSCoder& coder) const override {
    coder.encodeObject(holder(), "holder");
    coder.encodeObject(entries(), "entries");
  }
  bool initWithCoder(NSCoder& coder) override {
    holder_ = coder.decode<NSString>("holder");
    entries_ = coder.decode<Ref<NSMutableArray>>("entries");
    return true;
  }
};

class SavingsAccount : public Account {
  NK_OBJECT(SavingsAccount, Account)
  NK_CODING
  NSString greet() { return "hello"; }
  NK_METHOD(greet)
  NSString greetName(const NSString& name) { return "hello " + name; }
  NK_METHOD(greetName)
};

class Responder : public NSObject {
  NK_OBJECT(Responder, NSObject)
  NK_WEAK_PROPERTY(NSObject, delegate, setDelegate)
};

class Closer : public Responder {
  NK_OBJECT(Closer, Responder)
  void closePayRun(const Value& sender) { closedBy = sender; }
  NK_METHOD(closePayRun)
  Value closedBy;
};

/// Its delegate is an operation, not a property.
class Forwarder : public NSObject {
  NK_OBJECT(Forwarder, NSObject)
  Ref<NSObject> delegate() { return next; }
  NK_METHOD(delegate)
  Ref<NSObject> next;
};

TEST(NSObjectNorvik, HeaderExample) {
  auto slip = make<SavingsAccount>();
  slip->setHolder("Sian");
  slip->setEntries(NSMutableArray::array());
  NSObject& object = *slip;
  EXPECT_EQ(nk_as<SavingsAccount>(object), slip);
  EXPECT_EQ(nk_valueForKeyPath(*slip, "holder", [](const Value& name) { return name.description() + "!"; }),
            Value("Sian!"));
  auto view = make<Responder>();
  auto closer = make<Closer>();
  view->setDelegate(closer);
  EXPECT_TRUE(nk_tryToPerformDelegateAction(*view, "closePayRun:", view));
  EXPECT_EQ(closer->closedBy, Value(view));
  Ref<SavingsAccount> copy = nk_cloneCodingObject(*slip);
  EXPECT_EQ(copy->holder(), "Sian");
}

TEST(NSObjectNorvik, ClosuresOfAnyParametersAreBlocks) {
  const Block<void()> plain = [] {};
  const Block<Decimal(const Value&, int)> other = [](const Value&, int) { return Decimal(0); };
  EXPECT_TRUE(nk_isBlock(plain));
  EXPECT_TRUE(nk_isBlock(other));
  EXPECT_TRUE(nk_isBlock(*plain.object()));
}

TEST(NSObjectNorvik, OtherObjectsAndValuesAreNoBlocks) {
  EXPECT_FALSE(nk_isBlock(*make<PlainObject>()));
  EXPECT_FALSE(nk_isBlock(Value("text")));
  EXPECT_FALSE(nk_isBlock(Value()));
  EXPECT_FALSE(nk_isBlock(Value::null()));
  EXPECT_FALSE(nk_isBlock(Value(Block<void()>())));
}

TEST(NSObjectNorvik, AnOperationIsPerformedByItsName) {
  auto account = make<SavingsAccount>();
  EXPECT_EQ(nk_performNonLeakySelector(*account, "greet"), Value("hello"));
  EXPECT_EQ(nk_performNonLeakySelector(*account, "greetName:", "Owen"), Value("hello Owen"));
  EXPECT_RAISES(nk_performNonLeakySelector(*account, "greetings"), "NSInvalidArgumentException");
}

// Delegates.

TEST(NSObjectNorvik, WhoRespondsGetsTheAction) {
  auto closer = make<Closer>(), delegate = make<Closer>();
  closer->setDelegate(delegate);
  EXPECT_TRUE(nk_tryToPerformDelegateAction(*closer, "closePayRun:", "menu"));
  EXPECT_EQ(closer->closedBy, Value("menu"));
  EXPECT_TRUE(delegate->closedBy.isAbsent());
}

TEST(NSObjectNorvik, TheChainOfDelegatesIsFollowed) {
  auto first = make<Responder>(), second = make<Responder>();
  auto forwarder = make<Forwarder>();
  auto closer = make<Closer>();
  first->setDelegate(second);
  second->setDelegate(forwarder);
  forwarder->next = closer;
  EXPECT_TRUE(nk_tryToPerformDelegateAction(*first, "closePayRun:", Value()));
  EXPECT_TRUE(closer->closedBy.isAbsent());
  EXPECT_TRUE(nk_tryToPerformDelegateAction(*first, "closePayRun:", "menu"));
  EXPECT_EQ(closer->closedBy, Value("menu"));
}

TEST(NSObjectNorvik, AnActionNobodyRespondsToIsFalse) {
  auto alone = make<Responder>();
  auto closer = make<Closer>();
  EXPECT_FALSE(nk_tryToPerformDelegateAction(*alone, "closePayRun:", Value()));
  EXPECT_FALSE(nk_tryToPerformDelegateAction(*make<PlainObject>(), "closePayRun:", Value()));
  alone->setDelegate(closer);
  EXPECT_FALSE(nk_tryToPerformDelegateAction(*alone, "openPayRun:", Value()));
}

TEST(NSObjectNorvik, AChainThatComesBackEnds) {
  auto first = make<Responder>(), second = make<Responder>();
  first->setDelegate(second);
  second->setDelegate(first);
  EXPECT_FALSE(nk_tryToPerformDelegateAction(*first, "closePayRun:", Value()));
  first->setDelegate(first);
  EXPECT_FALSE(nk_tryToPerformDelegateAction(*first, "closePayRun:", Value()));
}

// Values and classes.

TEST(NSObjectNorvik, TheValueAtAPathGoesThroughTheClosureWhereThereIsOne) {
  auto account = make<Account>();
  account->setHolder("Sian");
  EXPECT_EQ(nk_valueForKeyPath(*account, "holder.length", nullptr), Value(4));
  EXPECT_EQ(nk_valueForKeyPath(*account, "holder.length", [](const Value& n) -> Value { return n.as<int>() * 2; }),
            Value(8));
  EXPECT_EQ(
      nk_valueForKeyPath(*account, "entries.@count", [](const Value& v) { return v.isAbsent() ? Value("none") : v; }),
      Value("none"));
  EXPECT_RAISES(static_cast<void>(nk_valueForKeyPath(*account, "owner", nullptr)), "NSUnknownKeyException");
}

TEST(NSObjectNorvik, AnObjectIsOfItsClassAndThoseAbove) {
  auto savings = make<SavingsAccount>();
  auto account = make<Account>();
  EXPECT_EQ(nk_as<Account>(*savings), Ref<Account>(savings));
  EXPECT_FALSE(nk_as<SavingsAccount>(*account));
  EXPECT_EQ(nk_as(*savings, Account::staticClass()), Ref<NSObject>(savings));
  EXPECT_EQ(nk_as(*savings, SavingsAccount::staticClass()), Ref<NSObject>(savings));
  EXPECT_FALSE(nk_as(*account, SavingsAccount::staticClass()));
}

TEST(NSObjectNorvik, AValueIsOfItsClassOrAbsent) {
  const Class& numbers = *Class::named("NSNumber");
  EXPECT_EQ(nk_as(Value(5), numbers), Value(5));
  EXPECT_EQ(nk_as(Value(5.5_dec), numbers), Value(5.5_dec));
  EXPECT_TRUE(nk_as(Value("5"), numbers).isAbsent());
  EXPECT_TRUE(nk_as(Value(), numbers).isAbsent());
}

TEST(NSObjectNorvik, TheAddressIsHexadecimal) {
  auto account = make<Account>();
  std::ostringstream expected;
  expected << "0x" << std::hex << reinterpret_cast<std::uintptr_t>(account.get());
  EXPECT_EQ(nk_objAddress(*account), NSString(expected.str()));
}

// Archives.

TEST(NSObjectNorvik, ArchivedDataReadBack) {
  auto account = make<Account>();
  account->setHolder("Owen");
  account->setEntries(NSArray::arrayWithObjects(1, 2.50_dec)->mutableCopy());
  const auto data = nk_archivedData(*account);
  const auto back = NSUnarchiver::unarchiveObjectWithData(*data).as<Ref<Account>>();
  EXPECT_EQ(back->holder(), "Owen");
  EXPECT_EQ(Value(back->entries()), Value(NSArray::arrayWithObjects(1, 2.50_dec)));
  EXPECT_EQ(NSUnarchiver::unarchiveObjectWithData(*nk_archivedData(Value("text"))), Value("text"));
}

TEST(NSObjectNorvik, WhatCannotBeEncodedRaises) {
  const auto plain = make<PlainObject>();
  EXPECT_RAISES(static_cast<void>(nk_archivedData(*plain)), "NSInvalidArchiveOperationException");
  EXPECT_RAISES(static_cast<void>(nk_cloneCodingObject(*plain)), "NSInvalidArchiveOperationException");
}

TEST(NSObjectNorvik, ACloneSharesNothing) {
  auto account = make<SavingsAccount>();
  account->setHolder("Sian");
  account->setEntries(NSArray::arrayWithObjects(1)->mutableCopy());
  const Ref<Account> clone = nk_cloneCodingObject(static_cast<Account&>(*account));
  EXPECT_EQ(clone->classObject(), SavingsAccount::staticClass());
  EXPECT_NE(clone, Ref<Account>(account));
  clone->entries()->addObject(2);
  EXPECT_EQ(account->entries()->count(), 1U);
}

TEST(NSObjectNorvik, AnObjectByItsRefIsClonedAsItsKind) {
  const auto passedOn = [] {
    auto account = make<SavingsAccount>();
    account->setHolder("Owen");
    account->setEntries(NSMutableArray::array());
    return account;
  };
  const Ref<SavingsAccount> clone = nk_cloneCodingObject(passedOn());
  EXPECT_EQ(clone->holder(), "Owen");
  EXPECT_FALSE(nk_cloneCodingObject(Ref<SavingsAccount>()));
}

TEST(NSObjectNorvik, ACloneKeepsHowObjectsAreShared) {
  auto shared = NSMutableDictionary::dictionaryWith({{"a", 1}});
  const Value clone = nk_cloneCodingObject(Value(NSArray::arrayWithObjects(shared, shared)));
  const auto array = clone.as<Ref<NSArray>>();
  EXPECT_EQ(array->objectAtIndex(0).object(), array->objectAtIndex(1).object());
  EXPECT_NE(array->objectAtIndex(0).object(), shared.get());
  EXPECT_EQ(nk_cloneCodingObject(Value(5.00_dec)), Value(5));
}

}  // namespace
}  // namespace norvik
