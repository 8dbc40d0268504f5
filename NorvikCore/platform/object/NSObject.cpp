#include "NorvikCore/platform/object/NSObject.h"

#include "NorvikCore/platform/object/internal/ObjectAccess.h"
#include "NorvikCore/platform/object/internal/SideRecord.h"
#include "NorvikCore/platform/values/NSException.h"

#include <array>
#include <cinttypes>
#include <cstdio>
#include <ostream>

namespace norvik {
namespace detail {

void retain(const NSObject* object) noexcept { ObjectAccess::count(*object).addRelaxed(1); }

// The count never becomes zero in passing. So a thread that releases a count other than the last one does not touch the
// object afterwards, and one that releases the last one has the record's lock.
void release(const NSObject* object) noexcept {
  // No other thread can retain an unshared object, so its count needs no atomic change.
  if (ObjectAccess::isUnshared(*object)) return ObjectAccess::destroy(object);
  auto& count = ObjectAccess::count(*object);
  std::uint32_t seen = count.loadAcquire();
  do {
    while (seen == 1) {
      if (ObjectAccess::releaseLast(object)) return;
      seen = count.loadAcquire();
    }
  } while (!count.compareExchange(seen, seen - 1));
}

bool initialise(NSObject* object) { return ObjectAccess::initialise(*object); }

void ObjectAccess::destroy(const NSObject* object) noexcept {
  // Refs that are taken and released while the object is destroyed must not destroy it again. So the count is set far
  // from zero.
  object->count_.storeRelaxed(dyingCount);
  delete object;
}

bool ObjectAccess::releaseLast(const NSObject* object) noexcept {
  SideRecord* record = SideRecord::find(*object);
  if (!record) {
    destroy(object);
    return true;
  }
  SideRecord::Remains remains;
  switch (record->releaseObject(const_cast<NSObject&>(*object), remains)) {
    case SideRecord::Release::Done:
      return true;
    case SideRecord::Release::NotLast:
      return false;
    case SideRecord::Release::Destroy:
      break;
  }
  remains.observers = record->observers.take();
  if (remains.observers) endObserving(const_cast<NSObject&>(*object), remains.observers);
  if (remains.associations) releaseAssociations(remains.associations);
  delete object;
  record->release();  // only now, because destructors remove observers by the record
  return true;
}

}  // namespace detail

NSObject::~NSObject() = default;

bool NSObject::init() { return true; }

const Class& NSObject::staticClass() {
  static constinit detail::ClassRecord record{
      []() -> const Class& { return detail::defineClass({.name = "NSObject", .type = &typeid(NSObject)}); }};
  return record.theClass();
}

const Class& NSObject::classObject() const { return staticClass(); }

bool NSObject::isKindOfClass(const Class& other) const { return classObject().isSubclassOf(other); }

bool NSObject::isEqual(const NSObject& other) const { return this == &other; }

std::size_t NSObject::hash() const { return std::hash<const void*>()(this); }

NSString NSObject::description() const {
  std::array<char, 24> address{};
  std::snprintf(address.data(), address.size(), ": 0x%" PRIxPTR ">", reinterpret_cast<std::uintptr_t>(this));
  return NSString("<" + classObject().name().str() + address.data());
}

bool NSObject::respondsToSelector(SEL selector) const {
  const Class& c = classObject();
  return c.instanceMethod(selector) || c.propertyWithAccessor(selector);
}

Value NSObject::performSelector(SEL selector, std::span<const Value> arguments) {
  const Class& c = classObject();
  if (const Method* method = c.instanceMethod(selector)) return method->invoke(this, arguments);
  if (const Property* property = c.propertyWithAccessor(selector)) {
    detail::checkArgumentCount(selector.argumentCount(), arguments.size());
    if (arguments.empty()) return property->get(*this);
    property->set(*this, arguments.front());
    return {};
  }
  NSException::raise(NSInvalidArgumentException,
                     "-[" + c.name().str() + " " + selector.name().str() + "]: unrecognised selector sent to instance");
}

Value NSObject::performSelector(SEL selector, const Value& first) {
  return performSelector(selector, std::span(&first, 1));
}

Value NSObject::performSelector(SEL selector, const Value& first, const Value& second) {
  const std::array both{first, second};
  return performSelector(selector, both);
}

std::ostream& operator<<(std::ostream& out, const NSObject& object) { return out << object.description(); }

}  // namespace norvik
