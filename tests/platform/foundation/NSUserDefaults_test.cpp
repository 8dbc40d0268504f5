#include "NorvikCore/platform/foundation/NSUserDefaults.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <limits>
#include <string>
#include <vector>

#include "NorvikCore/constants/PreferenceKeys.h"
#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "NorvikCore/platform/collections/NSSet.h"
#include "NorvikCore/platform/dispatch/MainQueue.h"
#include "NorvikCore/platform/foundation/NSBundle.h"
#include "NorvikCore/platform/foundation/NSNotificationCenter.h"
#include "NorvikCore/platform/keyvalue/KeyValueObserving.h"
#include "tests/support/DefaultsFolder.h"
#include "tests/support/ExpectRaises.h"
#include "tests/support/InChild.h"

namespace norvik {
namespace {

using norvik::test::DefaultsFolder;
using norvik::test::StandardDefaults;
using norvik::test::TemporaryFolder;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(NSUserDefaults, HeaderExample) {
  const StandardDefaults standard;
  NSUserDefaults& defaults = NSUserDefaults::standardUserDefaults();
  defaults.registerDefaults(*NSDictionary::dictionaryWith({{NKMaxAutoSnapshotCount, 20}}));
  EXPECT_EQ(defaults.integerForKey(NKMaxAutoSnapshotCount), 20);
  defaults.setObject(0.135_dec, "EmployerRate");
  EXPECT_EQ(defaults.objectForKey("EmployerRate").as<Decimal>(), 0.135_dec);
  EXPECT_FALSE(defaults.boolForKey(NKDeveloperMode));
}

TEST(NSUserDefaults, EveryKindComesBackFromTheDiskAsItWas) {
  const DefaultsFolder folder;
  const Value rows[] = {
      true,
      false,
      -7,
      std::numeric_limits<std::int64_t>::max(),
      std::numeric_limits<std::uint64_t>::max(),
      0.1,
      -0.0,
      -std::numeric_limits<double>::infinity(),
      5_dec,
      5.00_dec,
      Decimal::notANumber(),
      NSDate::dateWithTimeIntervalSinceReferenceDate(0.25),
      "",
      "\u00A3 \U0001F4B7",
      NSString::fromUtf16(u"\xDC00 alone"),
      "a\0b"_ns,
  };
  {
    const Ref<NSUserDefaults> writer = folder.open();
    for (std::size_t i = 0; i < std::size(rows); ++i) writer->setObject(rows[i], NSString(std::to_string(i)));
    writer->setDouble(std::numeric_limits<double>::quiet_NaN(), "nan");
    writer->setObject(NSData::dataWithText("\x01\xFF"), "data");
    writer->setObject(NSArray::arrayWithObjects(1, NSDictionary::dictionaryWith({{"a", NSArray::array()}})), "list");
  }
  const Ref<NSUserDefaults> reader = folder.open();
  for (std::size_t i = 0; i < std::size(rows); ++i) {
    const Value back = reader->objectForKey(NSString(std::to_string(i)));
    EXPECT_EQ(back.kind(), rows[i].kind()) << rows[i];
    EXPECT_EQ(back.description(), rows[i].description());
    EXPECT_EQ(back, rows[i]);
  }
  EXPECT_TRUE(std::signbit(reader->doubleForKey("6")));
  EXPECT_TRUE(std::isnan(reader->doubleForKey("nan")));
  EXPECT_EQ(reader->objectForKey("data"), Value(NSData::dataWithText("\x01\xFF")));
  EXPECT_EQ(reader->objectForKey("list"),
            Value(NSArray::arrayWithObjects(1, NSDictionary::dictionaryWith({{"a", NSArray::array()}}))));
}

TEST(NSUserDefaults, AnyTextIsAKey) {
  const DefaultsFolder folder;
  const NSString keys[] = {"",
                           "a",
                           "A",
                           "a\0b"_ns,
                           "\u00E9",
                           "e\u0301",
                           NSString::fromUtf16(u"\xD800"),
                           NSString::fromUtf16(u"\xD801x"),
                           NSString::fromBytes("\xE9")};
  {
    const Ref<NSUserDefaults> writer = folder.open();
    for (int i = 0; i < static_cast<int>(std::size(keys)); ++i) writer->setInteger(i, keys[i]);
  }
  const Ref<NSUserDefaults> reader = folder.open();
  for (int i = 0; i < static_cast<int>(std::size(keys)); ++i) EXPECT_EQ(reader->objectForKey(keys[i]), Value(i)) << i;
  for (const NSString& key : keys) reader->removeObjectForKey(key);
  EXPECT_EQ(folder.open()->dictionaryRepresentation()->count(), 0u);
}

TEST(NSUserDefaults, WhatIsStoredDoesNotChangeWithWhatItWasMadeOf) {
  const DefaultsFolder folder;
  const auto columns = NSMutableArray::array();
  columns->addObject("Name");
  const Ref<NSUserDefaults> defaults = folder.open();
  defaults->setObject(columns, "columns");
  columns->addObject("Pay");
  EXPECT_EQ(defaults->objectForKey("columns"), Value(NSArray::arrayWithObjects("Name")));
}

TEST(NSUserDefaults, WhatCannotBeStoredRaisesAndChangesNothing) {
  const DefaultsFolder folder;
  const Ref<NSUserDefaults> defaults = folder.open();
  defaults->setInteger(1, "key");
  const Value rows[] = {Value::null(), NSSet::setWithObjects(1), make<NSNotification>("a", nullptr, nullptr),
                        NSDictionary::dictionaryWith({{1, 2}}), NSArray::arrayWithObjects(Value::null())};
  for (const Value& row : rows) EXPECT_RAISES(defaults->setObject(row, "key"), "NSInvalidArgumentException") << row;
  EXPECT_EQ(defaults->integerForKey("key"), 1);
}

TEST(NSUserDefaults, AnAbsentValueRemoves) {
  const DefaultsFolder folder;
  const Ref<NSUserDefaults> defaults = folder.open();
  defaults->setInteger(1, "number");
  defaults->setObject(Value(), "number");
  EXPECT_TRUE(defaults->objectForKey("number").isAbsent());
  EXPECT_TRUE(folder.open()->objectForKey("number").isAbsent());
  defaults->removeObjectForKey("never there");
}

TEST(NSUserDefaults, WhatIsRegisteredShowsWhereNothingIsSet) {
  const DefaultsFolder folder;
  const Ref<NSUserDefaults> defaults = folder.open();
  defaults->registerDefaults(*NSDictionary::dictionaryWith({{"style", 2}, {"name", "Pat"}}));
  defaults->registerDefaults(*NSDictionary::dictionaryWith({{"style", 3}}));
  EXPECT_EQ(defaults->integerForKey("style"), 3);
  EXPECT_EQ(defaults->stringForKey("name"), NSString("Pat"));
  defaults->setInteger(7, "style");
  EXPECT_EQ(defaults->integerForKey("style"), 7);
  defaults->removeObjectForKey("style");
  EXPECT_EQ(defaults->integerForKey("style"), 3);
  EXPECT_TRUE(folder.open()->objectForKey("name").isAbsent());
}

TEST(NSUserDefaults, RegisteringWhatCannotBeStoredRaisesAndRegistersNothing) {
  const DefaultsFolder folder;
  const Ref<NSUserDefaults> defaults = folder.open();
  EXPECT_RAISES(defaults->registerDefaults(*NSDictionary::dictionaryWith({{"a", 1}, {"b", Value::null()}})),
                "NSInvalidArgumentException");
  EXPECT_RAISES(defaults->registerDefaults(*NSDictionary::dictionaryWith({{"a", 1}, {2, 2}})),
                "NSInvalidArgumentException");
  EXPECT_TRUE(defaults->objectForKey("a").isAbsent());
}

TEST(NSUserDefaults, TypedReadersConvertNumbersAndTexts) {
  const DefaultsFolder folder;
  const Ref<NSUserDefaults> defaults = folder.open();
  const struct {
    Value value;
    std::optional<NSString> text;
    bool boolean;
    std::int64_t integer;
    double real;
  } rows[] = {
      {Value(), std::nullopt, false, 0, 0},
      {true, "1", true, 1, 1},
      {false, "0", false, 0, 0},
      {-2, "-2", true, -2, -2},
      {2.75, "2.75", true, 2, 2.75},
      {0.0, "0", false, 0, 0},
      {1e300, "1e+300", true, std::numeric_limits<std::int64_t>::max(), 1e300},
      {12.50_dec, "12.50", true, 12, 12.5},
      {"YES", "YES", true, 0, 0},
      {"true", "true", true, 0, 0},
      {"no", "no", false, 0, 0},
      {"0", "0", false, 0, 0},
      {" 12.5 pounds", " 12.5 pounds", true, 12, 12.5},
      {"", "", false, 0, 0},
      {NSDate::dateWithTimeIntervalSinceReferenceDate(1), std::nullopt, false, 0, 0},
      {NSArray::arrayWithObjects(1), std::nullopt, false, 0, 0},
      {NSData::dataWithText("1"), std::nullopt, false, 0, 0},
  };
  for (const auto& row : rows) {
    defaults->setObject(row.value, "key");
    EXPECT_EQ(defaults->stringForKey("key"), row.text) << row.value;
    EXPECT_EQ(defaults->boolForKey("key"), row.boolean) << row.value;
    EXPECT_EQ(defaults->integerForKey("key"), row.integer) << row.value;
    EXPECT_EQ(defaults->doubleForKey("key"), row.real) << row.value;
  }
}

TEST(NSUserDefaults, ReadersOfCollectionsGiveNothingForAnythingElse) {
  const DefaultsFolder folder;
  const Ref<NSUserDefaults> defaults = folder.open();
  defaults->setObject(NSArray::arrayWithObjects("a", "b"), "texts");
  defaults->setObject(NSArray::arrayWithObjects("a", 1), "mixed");
  defaults->setObject(NSDictionary::dictionaryWith({{"a", 1}}), "dictionary");
  defaults->setObject(NSData::dataWithText("x"), "data");
  EXPECT_EQ(defaults->arrayForKey("mixed")->count(), 2u);
  EXPECT_EQ(defaults->stringArrayForKey("texts")->count(), 2u);
  EXPECT_FALSE(defaults->stringArrayForKey("mixed"));
  EXPECT_EQ(defaults->dictionaryForKey("dictionary")->objectForKey("a"), Value(1));
  EXPECT_EQ(defaults->dataForKey("data")->text(), "x");
  for (const char* key : {"data", "dictionary", "none"}) {
    EXPECT_FALSE(defaults->arrayForKey(key)) << key;
    EXPECT_FALSE(defaults->stringArrayForKey(key)) << key;
  }
  EXPECT_FALSE(defaults->dictionaryForKey("texts"));
  EXPECT_FALSE(defaults->dataForKey("texts"));
}

TEST(NSUserDefaults, AnAddressIsKeptAsAPathFromTheHomeFolder) {
  RUN_IN_CHILD({
    const DefaultsFolder folder;
    const Ref<NSUserDefaults> defaults = folder.open();
    setenv("HOME", "/home/pat", 1);
    defaults->setURL(NSURL::fileURLWithPath("/home/pat/Pay/a b.csv", false), "file");
    defaults->setURL(NSURL::fileURLWithPath("/home/pat/Pay", true), "folder");
    defaults->setURL(NSURL::fileURLWithPath("/", true), "root");
    EXPECT_EQ(defaults->stringForKey("file"), NSString("~/Pay/a b.csv"));
    setenv("HOME", "/home/sian", 1);
    EXPECT_EQ(defaults->URLForKey("file")->absoluteString(), "file:///home/sian/Pay/a%20b.csv");
    EXPECT_EQ(defaults->URLForKey("folder")->absoluteString(), "file:///home/sian/Pay/");
    EXPECT_EQ(defaults->URLForKey("root")->absoluteString(), "file:///");
    defaults->setURL(nullptr, "file");
    EXPECT_FALSE(defaults->URLForKey("file"));
    defaults->setInteger(1, "file");
    EXPECT_FALSE(defaults->URLForKey("file"));
  });
}

TEST(NSUserDefaults, AnAddressThatIsNoFilesIsStoredAsItsText) {
  const DefaultsFolder folder;
  const Ref<NSUserDefaults> defaults = folder.open();
  defaults->setURL(NSURL::URLWithString("https://pay.example.com/slips?month=4"), "service");
  EXPECT_EQ(defaults->stringForKey("service"), NSString("https://pay.example.com/slips?month=4"));
  EXPECT_EQ(folder.open()->URLForKey("service")->host(), NSString("pay.example.com"));
  EXPECT_RAISES(defaults->setURL(NSURL::URLWithString("slips/april"), "service"), "NSInvalidArgumentException");
  EXPECT_EQ(defaults->URLForKey("service")->path(), "/slips");
  defaults->setObject("/pay/a:b", "service");
  EXPECT_EQ(defaults->URLForKey("service")->absoluteString(), "file:///pay/a:b");
  defaults->setObject("~/a:b c", "service");
  EXPECT_TRUE(defaults->URLForKey("service")->isFileURL());
  defaults->setObject("/x/Pay: April", "service");
  EXPECT_EQ(defaults->URLForKey("service")->path(), "/x/Pay: April");
}

TEST(NSUserDefaults, ItsDictionaryHasEverythingInTheOrderOfTheKeys) {
  const DefaultsFolder folder;
  const Ref<NSUserDefaults> defaults = folder.open();
  defaults->registerDefaults(*NSDictionary::dictionaryWith({{"d", 1}, {"b", 1}}));
  defaults->setInteger(2, "c");
  defaults->setInteger(2, "b");
  defaults->setInteger(2, "a");
  std::vector<std::string> entries;
  const Ref<NSDictionary> all = defaults->dictionaryRepresentation();
  for (const auto& [key, value] : *all) {
    entries.push_back(key.description().str() + "=" + value.description().str());
  }
  EXPECT_THAT(entries, ElementsAre("a=2", "b=2", "c=2", "d=1"));
}

TEST(NSUserDefaults, KeyValueCodingFindsEveryKey) {
  const DefaultsFolder folder;
  const Ref<NSUserDefaults> defaults = folder.open();
  defaults->setValue_forKey(NSDictionary::dictionaryWith({{"name", "Pat"}}), "user");
  EXPECT_EQ(defaults->valueForKeyPath("user.name"), Value("Pat"));
  EXPECT_TRUE(defaults->valueForKey("nobody").isAbsent());
  defaults->setValue_forKey(Value(), "user");
  EXPECT_TRUE(defaults->valueForKey("user").isAbsent());
}

/// Records the changes that it is notified of, as "key: old > new".
class Watcher : public NSObject {
  NK_OBJECT(Watcher, NSObject)
  void observeValueForKeyPath(const NSString& path, NSObject& object, const KeyValueChange& change, void*) override {
    heard.push_back(path.str() + ": " + change.oldValue().description().str() + " > " +
                    change.newValue().description().str());
    if (onChange) onChange(object);
  }
  std::vector<std::string> heard;
  void (*onChange)(NSObject&) = nullptr;
};

constexpr auto oldAndNew = NSKeyValueObservingOptionOld | NSKeyValueObservingOptionNew;

TEST(NSUserDefaults, ObserversOfAKeyHearOfItsChanges) {
  const DefaultsFolder folder;
  const Ref<NSUserDefaults> defaults = folder.open();
  const auto watcher = make<Watcher>();
  defaults->addObserver(*watcher, "rate", oldAndNew);
  defaults->setInteger(1, "rate");
  defaults->setInteger(9, "another");
  defaults->setInteger(2, "rate");
  defaults->removeObjectForKey("rate");
  defaults->registerDefaults(*NSDictionary::dictionaryWith({{"rate", 5}}));
  defaults->removeObserver(*watcher, "rate");
  defaults->setInteger(3, "rate");
  EXPECT_THAT(watcher->heard, ElementsAre("rate: <null> > 1", "rate: 1 > 2", "rate: 2 > <null>", "rate: <null> > 5"));
}

TEST(NSUserDefaults, WhatIsRegisteredBehindAValueIsNoChange) {
  const DefaultsFolder folder;
  const Ref<NSUserDefaults> defaults = folder.open();
  const auto watcher = make<Watcher>();
  defaults->setInteger(1, "rate");
  defaults->addObserver(*watcher, "rate", oldAndNew);
  defaults->registerDefaults(*NSDictionary::dictionaryWith({{"rate", 5}}));
  EXPECT_THAT(watcher->heard, IsEmpty());
  defaults->removeObserver(*watcher, "rate");
}

TEST(NSUserDefaults, AnObserverMayChangeOtherKeysAndTheSameOne) {
  const DefaultsFolder folder;
  const Ref<NSUserDefaults> defaults = folder.open();
  const auto watcher = make<Watcher>();
  watcher->onChange = [](NSObject& object) {
    auto& changed = dynamic_cast<NSUserDefaults&>(object);
    changed.setBool(true, "wasTold");
    if (changed.integerForKey("rate") < 3) changed.setInteger(3, "rate");
  };
  defaults->addObserver(*watcher, "rate", oldAndNew);
  defaults->setInteger(1, "rate");
  defaults->removeObserver(*watcher, "rate");
  EXPECT_THAT(watcher->heard, ElementsAre("rate: <null> > 1", "rate: 1 > 3"));
  EXPECT_TRUE(folder.open()->boolForKey("wasTold"));
  EXPECT_EQ(folder.open()->integerForKey("rate"), 3);
}

/// Counts the NSUserDefaultsDidChangeNotification of these user defaults while it exists.
class ChangeCount {
 public:
  explicit ChangeCount(const Ref<NSUserDefaults>& defaults)
      : token_(NSNotificationCenter::defaultCenter().addObserverForName("NSUserDefaultsDidChangeNotification", defaults,
                                                                        [this](const NSNotification&) { ++count; })) {}
  ChangeCount(const ChangeCount&) = delete;
  ChangeCount& operator=(const ChangeCount&) = delete;
  ~ChangeCount() { NSNotificationCenter::defaultCenter().removeObserver(*token_); }
  int count = 0;

 private:
  Ref<NSObject> token_;
};

TEST(NSUserDefaults, EveryChangeIsNotified) {
  const DefaultsFolder folder;
  const Ref<NSUserDefaults> defaults = folder.open();
  const ChangeCount changes(defaults);
  defaults->setInteger(1, "rate");
  EXPECT_EQ(changes.count, 1);
  defaults->removeObjectForKey("rate");
  EXPECT_EQ(changes.count, 2);
  (void)defaults->integerForKey("rate");
  EXPECT_RAISES(defaults->setObject(Value::null(), "rate"), "NSInvalidArgumentException");
  EXPECT_EQ(changes.count, 2);
}

TEST(NSUserDefaults, ReadingMakesNoFile) {
  const DefaultsFolder folder;
  const Ref<NSUserDefaults> defaults = folder.open();
  EXPECT_EQ(defaults->integerForKey("rate"), 0);
  EXPECT_TRUE(defaults->synchronize());
  EXPECT_TRUE(std::filesystem::is_empty(folder.folder().path()));
}

TEST(NSUserDefaults, FolderAndFileAreForTheUserOnly) {
  const DefaultsFolder folder;
  const mode_t before = umask(022);
  folder.open()->setInteger(1, "rate");
  const Ref<NSUserDefaults> open = folder.open();
  open->setInteger(2, "rate");
  umask(before);
  const auto modeOf = [](const std::string& path) {
    struct stat status {};
    EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
    return status.st_mode & 0777U;
  };
  EXPECT_EQ(modeOf(folder.folder().path("pay")), 0700u);
  EXPECT_EQ(modeOf(folder.path()), 0600u);
  EXPECT_EQ(modeOf(folder.path() + "-wal"), 0600u);
}

TEST(NSUserDefaults, TheStandardOnesAreInTheConfigurationFolderUnderTheApplicationsName) {
  RUN_IN_CHILD({
    const TemporaryFolder folder;
    unsetenv("NORVIK_DEFAULTS_FOLDER");
    unsetenv("NORVIK_BUNDLE_IDENTIFIER");
    setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1);
    NSBundle::mainBundle().setObject_forInfoDictionaryKey("uk.co.norvik.pay", "CFBundleIdentifier");
    NSUserDefaults::standardUserDefaults().setInteger(1, "rate");
    EXPECT_EQ(&NSUserDefaults::standardUserDefaults(), &NSUserDefaults::standardUserDefaults());
    const NSString path = folder.path("uk.co.norvik.pay/defaults.sqlite");
    EXPECT_EQ(make<NSUserDefaults>(path)->integerForKey("rate"), 1);
    EXPECT_EQ(NSUserDefaults::initWithSuiteName("uk.co.norvik.pay")->integerForKey("rate"), 1);
  });
}

TEST(NSUserDefaults, WithoutAnIdentifierTheProcessGivesTheName) {
  RUN_IN_CHILD({
    const TemporaryFolder folder;
    unsetenv("NORVIK_BUNDLE_IDENTIFIER");
    setenv("NORVIK_DEFAULTS_FOLDER", folder.path().c_str(), 1);
    NSUserDefaults::standardUserDefaults().setInteger(1, "rate");
    EXPECT_TRUE(std::filesystem::exists(folder.path("foundation_preferences_tests/defaults.sqlite")));
  });
}

TEST(NSUserDefaults, AVariableTakesTheDatabasesElsewhere) {
  RUN_IN_CHILD({
    setenv("XDG_CONFIG_HOME", "/config", 1);
    unsetenv("NORVIK_DEFAULTS_FOLDER");
    EXPECT_EQ(NSUserDefaults::databasePathOfSuite("pay"), "/config/pay/defaults.sqlite");
    setenv("NORVIK_DEFAULTS_FOLDER", "/elsewhere", 1);
    EXPECT_EQ(NSUserDefaults::databasePathOfSuite("pay"), "/elsewhere/pay/defaults.sqlite");
    setenv("NORVIK_DEFAULTS_FOLDER", "relative", 1);
    EXPECT_EQ(NSUserDefaults::databasePathOfSuite("pay"), "/config/pay/defaults.sqlite");
  });
}

TEST(NSUserDefaults, WhatCannotNameAFolderOrAFileRaises) {
  for (const NSString& name : {""_ns, "."_ns, ".."_ns, "a/b"_ns, "a\0b"_ns}) {
    EXPECT_RAISES((void)NSUserDefaults::initWithSuiteName(name), "NSInvalidArgumentException") << name;
  }
  for (const NSString& path : {""_ns, "defaults.sqlite"_ns, "~/a"_ns, "/a\0b"_ns}) {
    EXPECT_RAISES((void)make<NSUserDefaults>(path), "NSInvalidArgumentException") << path;
  }
}

TEST(NSUserDefaults, AnotherObjectCanBeTheStandardOne) {
  const DefaultsFolder folder;
  const Ref<NSUserDefaults> mine = folder.open();
  NSUserDefaults::setStandardUserDefaults(mine);
  EXPECT_EQ(&NSUserDefaults::standardUserDefaults(), mine.get());
  NSUserDefaults::setStandardUserDefaults(nullptr);
  EXPECT_NE(&NSUserDefaults::standardUserDefaults(), mine.get());
}

TEST(NSUserDefaults, WhatAnotherHasSetIsThereAfterSynchronizing) {
  const DefaultsFolder folder;
  const Ref<NSUserDefaults> mine = folder.open(), others = folder.open();
  mine->setInteger(1, "rate");
  mine->setInteger(1, "gone");
  others->setInteger(2, "rate");
  others->removeObjectForKey("gone");
  others->setInteger(2, "new");
  EXPECT_TRUE(mine->synchronize());
  EXPECT_EQ(mine->integerForKey("rate"), 2);
  EXPECT_EQ(mine->integerForKey("new"), 2);
  EXPECT_TRUE(mine->objectForKey("gone").isAbsent());
}

TEST(NSUserDefaults, WhatAnotherHasSetIsReadBeforeLong) {
  const DefaultsFolder folder;
  const Ref<NSUserDefaults> mine = folder.open(), others = folder.open();
  EXPECT_EQ(mine->integerForKey("rate"), 0);
  others->setInteger(2, "rate");
  const auto start = std::chrono::steady_clock::now();
  auto spent = start - start;
  while (mine->integerForKey("rate") != 2 && spent < std::chrono::seconds(20)) {
    spent = std::chrono::steady_clock::now() - start;
  }
  EXPECT_LT(spent, std::chrono::seconds(10));  // a quarter of a second on an idle machine
}

TEST(NSUserDefaults, ObserversHearWhatAnotherHasChangedInSynchronize) {
  const DefaultsFolder folder;
  const Ref<NSUserDefaults> mine = folder.open(), others = folder.open();
  mine->registerDefaults(*NSDictionary::dictionaryWith({{"gone", 5}}));
  mine->setInteger(1, "rate");
  mine->setInteger(1, "gone");
  const auto watcher = make<Watcher>();
  mine->addObserver(*watcher, "rate", oldAndNew);
  mine->addObserver(*watcher, "gone", oldAndNew);
  const ChangeCount changes(mine);
  others->setInteger(2, "rate");
  others->setInteger(3, "rate");
  others->removeObjectForKey("gone");
  others->setInteger(7, "unobserved");
  EXPECT_THAT(watcher->heard, IsEmpty());
  EXPECT_TRUE(mine->synchronize());
  EXPECT_THAT(watcher->heard, ::testing::UnorderedElementsAre("rate: 1 > 3", "gone: 1 > 5"));
  EXPECT_EQ(changes.count, 1);
  EXPECT_TRUE(mine->synchronize());
  EXPECT_EQ(changes.count, 1);
  mine->removeObserver(*watcher, "rate");
  mine->removeObserver(*watcher, "gone");
}

TEST(NSUserDefaults, WithoutSynchronizeTheyHearOfItOnTheMainQueueAfterARead) {
  const DefaultsFolder folder;
  const Ref<NSUserDefaults> mine = folder.open(), others = folder.open();
  mine->setInteger(1, "rate");
  const auto watcher = make<Watcher>();
  mine->addObserver(*watcher, "rate", oldAndNew);
  others->setInteger(2, "rate");
  while (mine->integerForKey("rate") != 2) continue;  // the previous test limits the time that this takes
  EXPECT_THAT(watcher->heard, IsEmpty());
  dispatch_main_queue_drain();
  EXPECT_THAT(watcher->heard, ElementsAre("rate: 1 > 2"));
  dispatch_main_queue_drain();
  EXPECT_EQ(watcher->heard.size(), 1u);
  mine->removeObserver(*watcher, "rate");
}

TEST(NSUserDefaults, TheLastToSetAValueWins) {
  const DefaultsFolder folder;
  const Ref<NSUserDefaults> mine = folder.open(), others = folder.open();
  mine->setInteger(1, "rate");
  others->setInteger(2, "rate");
  mine->setInteger(1, "rate");
  EXPECT_EQ(folder.open()->integerForKey("rate"), 1);
}

}  // namespace
}  // namespace norvik
