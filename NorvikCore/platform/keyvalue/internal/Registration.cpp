#include "NorvikCore/platform/keyvalue/internal/Registration.h"

#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/collections/NSSet.h"
#include "NorvikCore/platform/keyvalue/KeyValueCoding.h"
#include "NorvikCore/platform/keyvalue/internal/ChangeDelivery.h"
#include "NorvikCore/platform/keyvalue/internal/CollectionOperators.h"
#include "NorvikCore/platform/keyvalue/internal/KeyPathText.h"
#include "NorvikCore/platform/keyvalue/internal/ObserverList.h"
#include "NorvikCore/platform/object/Class.h"
#include "NorvikCore/platform/object/internal/ObjectAccess.h"
#include "NorvikCore/platform/object/internal/SideRecord.h"
#include "NorvikCore/platform/values/NSException.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <exception>
#include <span>
#include <string_view>
#include <utility>

namespace norvik::detail {
namespace {

bool hasOperation(const Class& theClass, const NSString& key) {
  for (const Class* c = &theClass; c; c = c->superclass()) {
    for (const Method& method : c->methods()) {
      if (method.argumentCount == 0 && method.selector.name() == key) return true;
    }
  }
  return key == "self" || key == "description";
}

/// True if visit(c) is true for the class or for a class below it.
template <class Visit>
bool anyOf(const Class& theClass, Visit&& visit) {
  if (visit(theClass)) return true;
  return std::ranges::any_of(Class::all(), [&](const Class* c) { return c->isSubclassOf(theClass) && visit(*c); });
}

/// Raises for a key that no object of the class, or of a class below it, can have. Continues with the class that the
/// key is declared to lead to.
void checkStated(const Class* theClass, std::span<const NSString> keys) {
  for (const NSString& key : keys) {
    if (!theClass || key.hasPrefix("@")) return;
    const Property* property = nullptr;
    const bool isKnown = anyOf(*theClass, [&](const Class& c) {
      property = c.property(key);
      return property || c.answersKeysItself() || hasOperation(c, key);
    });
    if (!isKnown) {
      NSException::raise(NSUndefinedKeyException,
                         "the class " + theClass->name() + " has no key \"" + key + "\" that can be observed");
    }
    theClass = property && property->objectClass ? &property->objectClass() : nullptr;
  }
}

/// A hash that depends on all bytes. Defined here so that it is inlined, because it is a large part of the cost of a
/// registration.
std::uint64_t mixed(std::string_view text) noexcept {
  std::uint64_t result = text.size();
  std::uint64_t word = 0;
  std::size_t at = 0;
  for (; at + sizeof word <= text.size(); at += sizeof word) {
    std::memcpy(&word, text.data() + at, sizeof word);
    result = std::rotl((result ^ word) * 0x9E3779B97F4A7C15u, 29);
  }
  for (word = 0; at < text.size(); ++at) word = word << 8 | static_cast<unsigned char>(text[at]);
  return (result ^ word) * 0xD6E8FEB86659FD93u;
}

/// The object in the value whose keys can be observed; null for arrays and sets, which announce no keys.
NSObject* observable(const Value& value) {
  NSObject* object = value.object();
  return object && !dynamic_cast<const NSArray*>(object) && !dynamic_cast<const NSSet*>(object) ? object : nullptr;
}

}  // namespace

Registration::Registration(NSObject& observer, NSString keyPath, NSKeyValueObservingOptions options, void* context)
    : observer_(&observer),
      keyPath_(std::move(keyPath)),
      context_(context),
      path_(makePath(keyPath_)),
      options_(static_cast<std::uint32_t>(options)),
      hash_(hashOf(observer, keyPath_, context)),
      isObserverPermanent_(ObjectAccess::isPermanent(observer)) {
  if (!isObserverPermanent_) observerRecord_ = weakRecord(&observer);  // last: nothing raises after it
}

Registration::Registration(NSObject& observer, SideRecord* receiver, NSString keyPath,
                           NSKeyValueObservingOptions options, void* context)
    : observer_(&observer),
      observerRecord_(receiver),
      keyPath_(std::move(keyPath)),
      context_(context),
      path_(makePath(keyPath_)),
      options_(static_cast<std::uint32_t>(options)),
      hash_(hashOf(observer, keyPath_, this)),
      isObserverPermanent_(true) {}

SideRecord* Registration::recordOf(const Weak<NSObject>& object) noexcept {
  SideRecord* record = object.retainedRecord();
  if (record) detail::release(record);  // the Weak retains it
  return record;
}

std::unique_ptr<Registration::Path> Registration::makePath(const NSString& keyPath) {
  if (keyPath.view().find('.') == std::string_view::npos) return nullptr;
  auto path = std::make_unique<Path>();
  path->keys = allKeys(keyPath);
  for (NSUInteger start = 0; const NSString& key : path->keys) {
    path->rests.push_back(keyPath.substringFromIndex(start));
    start += key.length() + 1;
  }
  MutexLock lock(path->mutex);
  path->places.resize(path->keys.size());
  return path;
}

Registration::~Registration() {
  if (observerRecord_ && !isObserverPermanent_) detail::release(observerRecord_);
}

std::uint32_t Registration::hashOf(const NSObject& observer, const NSString& keyPath, const void* context) noexcept {
  const std::uintptr_t all = reinterpret_cast<std::uintptr_t>(&observer) +
                             3 * reinterpret_cast<std::uintptr_t>(context) +
                             (ObjectAccess::isPermanent(observer) ? 0 : mixed(keyPath.view()));
  return static_cast<std::uint32_t>((all * 0x9E3779B97F4A7C15u) >> 32);
}

bool Registration::isOf(const NSObject& observer) const noexcept {
  return observer_ == &observer && (isObserverPermanent_ || observerRecord_ == SideRecord::find(observer));
}

NSObject* Registration::observer(Ref<NSObject>& kept) const noexcept {
  if (isObserverPermanent_) return observer_;
  kept = Ref<NSObject>::adopt(observerRecord_->retainedObject());
  return kept.get();
}

bool Registration::deliver(ChangeDelivery& delivery, NSObject& root) {
  NSObject* observer = isObserverPermanent_ ? observer_ : delivery.kept(observerRecord_);
  if (!observer) return false;
  observer->observeValueForKeyPath(keyPath_, root, delivery.change(), context_);
  return true;
}

// If the registration is active after the object was retained, the record was still the receiver's. Otherwise it may
// be the record of another object meanwhile; records are never freed.
NSObject* Registration::receiver(ChangeDelivery& delivery) const noexcept {
  NSObject* object = delivery.kept(observerRecord_);
  return isActive() ? object : nullptr;
}

void Registration::setRoot(NSObject& root) {
  if (path_) path_->root = Weak<NSObject>(&root);
}

Ref<NSObject> Registration::root(NSObject& here, std::size_t depth) const noexcept {
  return depth == 0 ? ref(here) : path_->root.lock();
}

Value Registration::valueFrom(const NSObject& object, std::size_t depth) const {
  Value value = isLast(depth) ? object.valueForKey(key(depth)) : object.valueForKeyPath(path_->rests[depth]);
  return value.isAbsent() ? Value::null() : value;
}

void Registration::check(const NSObject& root) const {
  if (isOperator(key(0)) &&
      (!observable(ref(const_cast<NSObject&>(root))) || dynamic_cast<const NSDictionary*>(&root))) {
    NSException::raise(NSInvalidArgumentException,
                       "\"" + keyPath_ +
                           "\" cannot be observed on the collection itself, which announces no change of " +
                           "its elements: observe it on the object that holds the collection");
  }
  if (!path_) {
    // If the class knows the key, that is sufficient; otherwise the object decides.
    if (!root.classObject().property(keyPath_) && !hasOperation(root.classObject(), keyPath_)) {
      (void)root.valueForKey(keyPath_);
    }
    return;
  }
  (void)root.valueForKeyPath(keyPath_);
  Value value = root.valueForKey(key(0));
  const Class* holder = &root.classObject();
  for (std::size_t depth = 0; depth + 1 < length(); ++depth) {
    if (value.isAbsent() || value.isNull()) return checkStated(holder, std::span(path_->keys).subspan(depth));
    const NSObject* next = observable(value);
    if (!next || key(depth + 1).hasPrefix("@")) return;
    holder = &next->classObject();
    value = next->valueForKey(key(depth + 1));
  }
}

/// Adds the objects at the second and later elements, as far as they exist.
void Registration::findObjectsBehind(const NSObject& root, std::vector<Ref<NSObject>>& objects) const {
  objects.reserve(length() - 1);
  const NSObject* current = &root;
  for (std::size_t depth = 0; !isLast(depth) && !key(depth + 1).hasPrefix("@"); ++depth) {
    const Value value = current->valueForKey(key(depth));
    NSObject* next = observable(value);
    if (!next) break;
    objects.push_back(ref(*next));
    current = next;
  }
}

void Registration::place(std::size_t depth, NSObject* object) {
  NSObject*& present = path_->places[depth];
  if (present == object) return;
  if (present) detach(present, *this, depth);
  present = object && attach(*object, ref(*this), depth) ? object : nullptr;
}

// Reading the path calls accessors, so it takes no lock. If another thread has updated the places meanwhile, this
// thread reads again. So the last thread that updates them has read after every announced change.
void Registration::follow(NSObject& root) {
  if (!path_) return;
  for (;;) {
    std::uint64_t version = 0;
    {
      MutexLock lock(path_->mutex);
      version = path_->version;
    }
    std::vector<Ref<NSObject>> objects;
    std::exception_ptr raised;
    try {
      findObjectsBehind(root, objects);
    } catch (...) {
      raised = std::current_exception();
    }
    if (!arrange(root, objects, version)) continue;
    if (raised) std::rethrow_exception(raised);
    return;
  }
}

/// False if the places were updated since that version.
bool Registration::arrange(const NSObject& root, const std::vector<Ref<NSObject>>& objects, std::uint64_t version) {
  MutexLock lock(path_->mutex);
  if (!isActive()) return true;
  if (path_->version != version) return false;
  ++path_->version;
  for (std::size_t depth = 1; depth < path_->places.size(); ++depth) {
    NSObject* object = depth <= objects.size() ? objects[depth - 1].get() : nullptr;
    const auto earlier = std::span(path_->places).subspan(1, depth - 1);
    if (object && (object == &root || std::ranges::find(earlier, object) != earlier.end())) path_->isCircular = true;
    place(depth, object);
  }
  return true;
}

void Registration::leavePath() {
  if (!path_) return;
  MutexLock lock(path_->mutex);
  for (std::size_t depth = 1; depth < path_->places.size(); ++depth) place(depth, nullptr);
}

void Registration::objectGoes(const NSObject& object, std::size_t depth) {
  if (depth == 0) {
    stop();
    leavePath();
  } else {
    MutexLock lock(path_->mutex);
    if (path_->places[depth] == &object) path_->places[depth] = nullptr;
  }
}

}  // namespace norvik::detail
