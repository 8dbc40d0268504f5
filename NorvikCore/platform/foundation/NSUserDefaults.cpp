#include "NorvikCore/platform/foundation/NSUserDefaults.h"

#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/dispatch/MainQueue.h"
#include "NorvikCore/platform/foundation/NSNotificationCenter.h"
#include "NorvikCore/platform/foundation/NSPathUtilities.h"
#include "NorvikCore/platform/foundation/internal/ApplicationFolder.h"
#include "NorvikCore/platform/foundation/internal/KeyedStore.h"
#include "NorvikCore/platform/foundation/internal/PropertyList.h"
#include "NorvikCore/platform/foundation/internal/SQLiteLibrary.h"
#include "NorvikCore/platform/kernel/Fork.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/kernel/Paths.h"
#include "NorvikCore/platform/object/Weak.h"
#include "NorvikCore/platform/values/NSException.h"

#include <algorithm>
#include <string>
#include <vector>

namespace norvik {

constexpr NSString NSUserDefaultsDidChangeNotification = "NSUserDefaultsDidChangeNotification";

namespace {

constexpr detail::KeyedStore::Kind preferences = {
    .table = {.format = {.applicationId = 0x4E6B5072,  // missing in files of the first versions
                         .version = 1,
                         .schema = "CREATE TABLE preference(key PRIMARY KEY, value BLOB NOT NULL) WITHOUT ROWID",
                         .sample = "SELECT key, value FROM preference"},
              .all = "SELECT key, value FROM preference",
              .put = "INSERT OR REPLACE INTO preference(key, value) VALUES(?, ?)",
              .remove = "DELETE FROM preference WHERE key = ?"},
    .plural = "preferences",
    .singular = "preference",
    .decode = [](const NSString&, std::string_view bytes) { return detail::decodePropertyList(bytes); },
};

/// Distinguishes stored URLs from stored paths, which begin with '/' or '~'.
bool beginsWithAScheme(std::string_view text) {
  const std::size_t end = text.find_first_of(":/~");
  return end != text.npos && end > 0 && text[end] == ':';
}

/// While an object exists, its thread reads this value for the key instead of the present one, so that observers are
/// notified with the former value.
struct FormerValue {
  FormerValue(const NSUserDefaults& defaults, const NSString& key, const Value& value);
  FormerValue(const FormerValue&) = delete;
  FormerValue& operator=(const FormerValue&) = delete;
  ~FormerValue();

  const NSUserDefaults& defaults;
  const NSString& key;
  const Value& value;
  const FormerValue* const outer;
};

thread_local const FormerValue* formerValue = nullptr;

FormerValue::FormerValue(const NSUserDefaults& ofDefaults, const NSString& forKey, const Value& former)
    : defaults(ofDefaults), key(forKey), value(former), outer(formerValue) {
  formerValue = this;
}
FormerValue::~FormerValue() { formerValue = outer; }

struct Standard {
  Mutex mutex;
  std::atomic<NSUserDefaults*> current{nullptr};
  std::vector<Ref<NSUserDefaults>> kept NK_GUARDED_BY(mutex);
  Ref<NSUserDefaults> usual NK_GUARDED_BY(mutex);
};

Standard& standard() {
  return kernel::madeOnce([] { return new Standard; });
}

}  // namespace

NSUserDefaults::NSUserDefaults(const NSString& databasePath)
    : store_(new detail::KeyedStore(detail::checkedDatabasePath(databasePath, "user defaults"), preferences)),
      registered_(NSDictionary::dictionary()) {}

NSUserDefaults::~NSUserDefaults() = default;

NSUserDefaults& NSUserDefaults::standardUserDefaults() {
  Standard& state = standard();
  if (NSUserDefaults* current = state.current.load(std::memory_order_acquire)) [[likely]]
    return *current;
  detail::sqlite::load();
  const MutexLock lock(state.mutex);
  if (NSUserDefaults* current = state.current.load(std::memory_order_relaxed)) return *current;
  if (!state.usual) state.usual = initWithSuiteName(detail::applicationName());
  state.current.store(state.usual.get(), std::memory_order_release);
  return *state.usual;
}

void NSUserDefaults::setStandardUserDefaults(const Ref<NSUserDefaults>& defaults) {
  Standard& state = standard();
  const MutexLock lock(state.mutex);
  if (defaults) state.kept.push_back(defaults);
  state.current.store(defaults ? defaults.get() : state.usual.get(), std::memory_order_release);
}

NSString NSUserDefaults::databasePathOfSuite(const NSString& suiteName) {
  return NSString::fromBytes(detail::pathInApplicationFolder("NORVIK_DEFAULTS_FOLDER", kernel::configurationDirectory(),
                                                             suiteName, "defaults.sqlite"));
}

Ref<NSUserDefaults> NSUserDefaults::initWithSuiteName(const NSString& suiteName) {
  return make<NSUserDefaults>(databasePathOfSuite(suiteName));
}

Value NSUserDefaults::registered(const NSString& key) const {
  const MutexLock lock(mutex_);
  return registered_->objectForKey(key);
}

Value NSUserDefaults::objectForKey(const NSString& key) const {
  for (const FormerValue* former = formerValue; former != nullptr; former = former->outer) {
    if (&former->defaults == this && former->key == key) return former->value;
  }
  Value value = store_->value(key);
  if (store_->hasChanges()) [[unlikely]]
    listenForOthers();
  return value.isAbsent() ? registered(key) : value;
}

std::optional<NSString> NSUserDefaults::stringForKey(const NSString& key) const {
  const Value value = objectForKey(key);
  if (value.isNumber()) return value.number().stringValue();
  return value.isString() ? std::optional(*value.string()) : std::nullopt;
}

bool NSUserDefaults::boolForKey(const NSString& key) const {
  const Value value = objectForKey(key);
  if (value.isNumber()) return value.number().boolValue();
  return value.isString() && value.string()->boolValue();
}

std::int64_t NSUserDefaults::integerForKey(const NSString& key) const {
  const Value value = objectForKey(key);
  if (value.isNumber()) return value.number().longLongValue();
  return value.isString() ? value.string()->longLongValue() : 0;
}

double NSUserDefaults::doubleForKey(const NSString& key) const {
  const Value value = objectForKey(key);
  if (value.isNumber()) return value.number().doubleValue();
  return value.isString() ? value.string()->doubleValue() : 0;
}

Ref<NSArray> NSUserDefaults::arrayForKey(const NSString& key) const { return Ref(objectForKey(key).object<NSArray>()); }

Ref<NSArray> NSUserDefaults::stringArrayForKey(const NSString& key) const {
  Ref<NSArray> array = arrayForKey(key);
  if (!array) return nullptr;
  return std::ranges::all_of(array->elements(), &Value::isString) ? array : nullptr;
}

Ref<NSDictionary> NSUserDefaults::dictionaryForKey(const NSString& key) const {
  return Ref(objectForKey(key).object<NSDictionary>());
}

Ref<NSData> NSUserDefaults::dataForKey(const NSString& key) const { return Ref(objectForKey(key).object<NSData>()); }

Ref<NSURL> NSUserDefaults::URLForKey(const NSString& key) const {
  const Value value = objectForKey(key);
  if (!value.isString()) return nullptr;
  if (beginsWithAScheme(value.string()->view())) {
    if (Ref<NSURL> url = NSURL::URLWithString(*value.string())) return url;
  }
  const NSString path = stringByExpandingTildeInPath(*value.string());
  return value.string()->hasSuffix("/") ? NSURL::fileURLWithPath(path, true) : NSURL::fileURLWithPath(path);
}

/// Makes a change and notifies observers. An exception raised by an observer leaves this function; the change stays.
template <class Change>
void NSUserDefaults::changing(const NSString& key, Change change) {
  const Ref<NSUserDefaults> kept = ref(*this);  // an observer may release it
  if (isObserved()) {
    willChangeValueForKey(key);
    change();
    didChangeValueForKey(key);
  } else {
    change();
  }
  postChange();
}

void NSUserDefaults::setObject(const Value& value, const NSString& key) {
  if (value.isAbsent()) {
    removeObjectForKey(key);
    return;
  }
  const Value copy = detail::propertyListCopy(value, "the preference \"" + key + "\"");
  std::string bytes = detail::encodePropertyList(copy);
  changing(key, [&] { store_->set(key, copy, std::move(bytes)); });
}

void NSUserDefaults::setURL(const Ref<NSURL>& url, const NSString& key) {
  if (!url) {
    removeObjectForKey(key);
    return;
  }
  if (!url->isFileURL()) {
    const NSString address = url->absoluteString();
    if (!beginsWithAScheme(address.view())) {
      NSException::raise(NSInvalidArgumentException, "the URL \"" + address + "\" has no scheme, such as https:");
    }
    setObject(address, key);
    return;
  }
  const NSString path = stringByAbbreviatingWithTildeInPath(url->path());
  setObject(url->hasDirectoryPath() && path != "/" ? path + "/" : path, key);
}

void NSUserDefaults::removeObjectForKey(const NSString& key) {
  changing(key, [&] { store_->remove(key); });
}

void NSUserDefaults::registerDefaults(const NSDictionary& defaults) {
  const NSString what = "the registered defaults";
  const Ref<NSDictionary> added =
      detail::propertyListCopy(ref(const_cast<NSDictionary&>(defaults)), what).as<Ref<NSDictionary>>();
  std::vector<NSString> changed;
  if (isObserved()) {
    for (const auto& [key, value] : *added) {
      if (store_->value(*key.string()).isAbsent()) changed.push_back(*key.string());
    }
  }
  for (const NSString& key : changed) willChangeValueForKey(key);
  Ref<NSDictionary> replaced;  // destroyed after the lock is released
  {
    const MutexLock lock(mutex_);
    const Ref<NSMutableDictionary> all = registered_->mutableCopy();
    all->addEntriesFromDictionary(*added);
    replaced = std::exchange(registered_, all->copy());
  }
  for (const NSString& key : changed) didChangeValueForKey(key);
}

Ref<NSDictionary> NSUserDefaults::dictionaryRepresentation() const {
  std::vector<NSDictionary::Entry> entries;
  {
    const MutexLock lock(mutex_);
    entries.assign(registered_->begin(), registered_->end());
  }
  for (auto& [key, value] : store_->all()) entries.push_back({key, std::move(value)});
  // Values that are set come after the registered ones of the same key, so that they take precedence.
  std::ranges::stable_sort(entries, {}, [](const NSDictionary::Entry& entry) { return *entry.key.string(); });
  return make<NSDictionary>(std::move(entries));
}

bool NSUserDefaults::synchronize() {
  const bool isDone = store_->synchronize();
  tellOfOthers();
  return isDone;
}

void NSUserDefaults::listenForOthers() const {
  const std::uint32_t generation = kernel::forkGeneration() + 1;
  if (awaitsMainQueue_.exchange(generation) == generation) return;
  dispatch_async(dispatch_get_main_queue(), [weak = Weak<NSUserDefaults>(const_cast<NSUserDefaults*>(this))] {
    if (const Ref<NSUserDefaults> defaults = weak.lock()) defaults->tellOfOthers();
  });
}

void NSUserDefaults::tellOfOthers() {
  awaitsMainQueue_.store(0);
  const auto changes = store_->takeChanges();
  if (changes.empty()) return;
  const Ref<NSUserDefaults> kept = ref(*this);
  for (const auto& [key, before] : changes) {
    if (!isObserved()) break;
    {
      const Value shown = before.isAbsent() ? registered(key) : before;
      const FormerValue former(*this, key, shown);
      willChangeValueForKey(key);
    }
    didChangeValueForKey(key);
  }
  postChange();
}

void NSUserDefaults::postChange() {
  NSNotificationCenter::defaultCenter().postNotificationName(NSUserDefaultsDidChangeNotification, ref(*this));
}

Value NSUserDefaults::valueForKey(const NSString& key) const { return objectForKey(key); }

void NSUserDefaults::setValue_forKey(const Value& value, const NSString& key) { setObject(value, key); }

}  // namespace norvik
