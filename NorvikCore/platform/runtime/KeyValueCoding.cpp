#include "NorvikCore/platform/runtime/Class.h"
#include "NorvikCore/platform/runtime/NSObject.h"
#include "NorvikCore/platform/values/internal/raise.h"

namespace norvik {

Value NSObject::valueForKey(const NSString& key) const {
  const Class& c = classObject();
  if (const Property* property = c.property(key)) return property->get(*this);
  if (const Method* method = c.instanceMethod(key); method && method->argumentCount == 0) {
    return method->invoke(const_cast<NSObject*>(this), {});
  }
  return valueForUndefinedKey(key);
}

void NSObject::setValue_forKey(const Value& value, const NSString& key) {
  const Property* property = classObject().property(key);
  if (!property || !property->set) {
    setValue_forUndefinedKey(value, key);
  } else {
    property->set(*this, value);
  }
}

Value NSObject::valueForKeyPath(const NSString& keyPath) const {
  const auto dot = keyPath.rangeOfString(".");
  if (dot.length == 0) return valueForKey(keyPath);
  const Value next = valueForKey(keyPath.substringToIndex(dot.location));
  const NSObject* object = next.object();
  return object ? object->valueForKeyPath(keyPath.substringFromIndex(dot.location + 1)) : Value();
}

void NSObject::setValue_forKeyPath(const Value& value, const NSString& keyPath) {
  const auto dot = keyPath.rangeOfString(".");
  if (dot.length == 0) return setValue_forKey(value, keyPath);
  const Value next = valueForKey(keyPath.substringToIndex(dot.location));
  if (NSObject* object = next.object())
    object->setValue_forKeyPath(value, keyPath.substringFromIndex(dot.location + 1));
}

namespace {

[[noreturn]] void raiseUndefinedKey(const NSObject& object, const NSString& key) {
  detail::raise("NSUnknownKeyException", object.description().utf8() + ": the class " +
                                             object.classObject().name().str() +
                                             " is not key-value coding-compliant for the key \"" + key.utf8() + "\"");
}

}  // namespace

Value NSObject::valueForUndefinedKey(const NSString& key) const { raiseUndefinedKey(*this, key); }
void NSObject::setValue_forUndefinedKey(const Value&, const NSString& key) { raiseUndefinedKey(*this, key); }

}  // namespace norvik
