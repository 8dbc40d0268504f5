#include "NorvikCore/platform/keyvalue/KeyValueCoding.h"

#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/collections/NSError.h"
#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/keyvalue/internal/KeyPathText.h"
#include "NorvikCore/platform/values/NSException.h"

#include <array>
#include <string>

namespace norvik {
namespace {

/// Searches by text, so that keys that name no operation are not added to the table of selectors.
const Method* methodNamed(const Class& theClass, std::string_view selector, std::size_t argumentCount) {
  for (const Class* c = &theClass; c; c = c->superclass()) {
    for (const Method& method : c->methods()) {
      if (method.argumentCount == argumentCount && method.selector.name() == selector) return &method;
    }
  }
  return nullptr;
}

std::string capitalised(const NSString& key) {
  std::string text = key.str();
  if (!text.empty() && text[0] >= 'a' && text[0] <= 'z') text[0] = static_cast<char>(text[0] - 'a' + 'A');
  return text;
}

bool isOneKey(const NSString& keyPath) noexcept { return keyPath.view().find('.') == std::string_view::npos; }

[[noreturn]] void raiseUndefinedKey(const Class& theClass, const NSString& key, const char* what) {
  NSException::raise(NSUndefinedKeyException,
                     "the class " + theClass.distinctName() + " has no key \"" + key + "\" that can be " + what);
}

template <class Content>
struct KeyOf {
  std::string_view key;
  Value (*read)(const Content&);
};

constexpr KeyOf<NSString> textKeys[] = {
    {"length", [](const NSString& text) -> Value { return text.length(); }},
    {"intValue", [](const NSString& text) -> Value { return text.intValue(); }},
    {"integerValue", [](const NSString& text) -> Value { return text.integerValue(); }},
    {"longLongValue", [](const NSString& text) -> Value { return text.longLongValue(); }},
    {"doubleValue", [](const NSString& text) -> Value { return text.doubleValue(); }},
    {"boolValue", [](const NSString& text) -> Value { return text.boolValue(); }},
    {"lastPathComponent", [](const NSString& text) -> Value { return text.lastPathComponent(); }},
    {"pathExtension", [](const NSString& text) -> Value { return text.pathExtension(); }},
};
constexpr KeyOf<NSNumber> numberKeys[] = {
    {"intValue", [](const NSNumber& number) -> Value { return number.intValue(); }},
    {"integerValue", [](const NSNumber& number) -> Value { return number.longLongValue(); }},
    {"longLongValue", [](const NSNumber& number) -> Value { return number.longLongValue(); }},
    {"doubleValue", [](const NSNumber& number) -> Value { return number.doubleValue(); }},
    {"boolValue", [](const NSNumber& number) -> Value { return number.boolValue(); }},
    {"decimalValue", [](const NSNumber& number) -> Value { return number.decimalValue(); }},
    {"stringValue", [](const NSNumber& number) -> Value { return number.stringValue(); }},
};
constexpr KeyOf<Date> dateKeys[] = {
    {"timeIntervalSinceReferenceDate", [](const Date& date) -> Value { return date.timeIntervalSinceReferenceDate(); }},
    {"timeIntervalSince1970", [](const Date& date) -> Value { return date.timeIntervalSince1970(); }},
};

template <class Content>
Value read(std::span<const KeyOf<Content>> keys, const Content& content, const Value& target, const NSString& key) {
  for (const auto& known : keys) {
    if (key == known.key) return known.read(content);
  }
  raiseUndefinedKey(target.classObject(), key, "read");
}

class PointerBox final : public NSObject {
 public:
  PointerBox(void* pointer, const std::type_info& type) : pointer_(pointer), type_(type) {}
  [[nodiscard]] void* pointer(const std::type_info& type) const { return type == type_ ? pointer_ : nullptr; }

 private:
  void* pointer_;
  const std::type_info& type_;
};

}  // namespace

Value valueForKey(const Value& target, const NSString& key) {
  if (const NSObject* object = target.object()) return object->valueForKey(key);
  if (target.isAbsent() || target.isNull()) return {};
  if (key == "self") return target;
  if (key == "description") return target.description();
  if (const NSString* text = target.string()) return read<NSString>(textKeys, *text, target, key);
  if (const Date* date = target.date()) return read<Date>(dateKeys, *date, target, key);
  return read<NSNumber>(numberKeys, target.number(), target, key);
}

Value valueForKeyPath(const Value& target, const NSString& keyPath) {
  if (const NSObject* object = target.object()) return object->valueForKeyPath(keyPath);
  const auto [key, rest] = detail::firstKey(keyPath);
  const Value next = valueForKey(target, key);
  return rest ? valueForKeyPath(next, *rest) : next;
}

Value NSObject::valueForKey(const NSString& key) const {
  const Class& c = classObject();
  auto& self = const_cast<NSObject&>(*this);
  if (const Property* property = c.property(key)) return property->get(*this);
  if (const Method* method = methodNamed(c, key.view(), 0)) return method->invoke(&self, {});
  if (key == "self") return ref(self);
  if (key == "description") return description();
  return valueForUndefinedKey(key);
}

void NSObject::setValue_forKey(const Value& value, const NSString& key) {
  const Class& c = classObject();
  const Property* property = c.property(key);
  if (property && property->set) {
    property->set(*this, value);
  } else if (const Method* setter = methodNamed(c, "set" + capitalised(key) + ":", 1)) {
    setter->invoke(this, {&value, 1});
  } else {
    setValue_forUndefinedKey(value, key);
  }
}

Value NSObject::valueForKeyPath(const NSString& keyPath) const {
  if (isOneKey(keyPath)) return valueForKey(keyPath);
  const auto [key, rest] = detail::firstKey(keyPath);
  return norvik::valueForKeyPath(valueForKey(key), *rest);
}

void NSObject::setValue_forKeyPath(const Value& value, const NSString& keyPath) {
  if (isOneKey(keyPath)) return setValue_forKey(value, keyPath);
  const auto [key, rest] = detail::firstKey(keyPath);
  const Value next = valueForKey(key);
  if (next.isAbsent() || next.isNull()) return;
  NSObject* object = next.object();
  if (!object) raiseUndefinedKey(next.classObject(), *rest, "set");
  object->setValue_forKeyPath(value, *rest);
}

Value NSObject::valueForUndefinedKey(const NSString& key) const { raiseUndefinedKey(classObject(), key, "read"); }

void NSObject::setValue_forUndefinedKey(const Value&, const NSString& key) {
  raiseUndefinedKey(classObject(), key, "set");
}

void NSObject::setNilValueForKey(const NSString& key) {
  NSException::raise(NSInvalidArgumentException, "the key \"" + key + "\" of the class " + classObject().name() +
                                                     " cannot be set to an absent value");
}

bool NSObject::validateValue_forKey_error(Value& value, const NSString& key, Ref<NSError>* error) {
  const Method* validator = methodNamed(classObject(), "validate" + capitalised(key) + ":error:", 2);
  if (!validator) return true;
  const std::array arguments{ValueConversion<Value*>::toValue(&value), ValueConversion<Ref<NSError>*>::toValue(error)};
  return validator->invoke(this, arguments).as<bool>();
}

bool NSObject::validateValue_forKeyPath_error(Value& value, const NSString& keyPath, Ref<NSError>* error) {
  const auto [key, rest] = detail::firstKey(keyPath);
  if (!rest) return validateValue_forKey_error(value, key, error);
  const Value next = valueForKey(key);
  NSObject* object = next.object();
  return !object || object->validateValue_forKeyPath_error(value, *rest, error);
}

Ref<NSDictionary> NSObject::dictionaryWithValuesForKeys(const NSArray& keys) const {
  auto values = NSMutableDictionary::dictionaryWithCapacity(keys.count());
  for (const Value& key : keys) {
    const Value value = valueForKey(key.as<NSString>());
    values->setObject(value.isAbsent() ? Value::null() : value, key);
  }
  return values->copy();
}

void NSObject::setValuesForKeysWithDictionary(const NSDictionary& keyedValues) {
  const Ref<NSDictionary> entries = keyedValues.copy();
  for (const auto& [key, value] : *entries) setValue_forKey(value.isNull() ? Value() : value, key.as<NSString>());
}

Value detail::boxPointer(void* pointer, const std::type_info& type) { return make<PointerBox>(pointer, type); }

void* detail::unboxPointer(const Value& value, const std::type_info& type) {
  const auto* box = value.object<PointerBox>();
  return box ? box->pointer(type) : nullptr;
}

}  // namespace norvik
