#include "NorvikCore/values/NKKeyValuePair.h"

#include "NorvikCore/linq/NSArray+LINQ_Filtering.h"
#include "NorvikCore/platform/values/Format.h"
#include "NorvikCore/platform/values/NSException.h"

namespace norvik {

NKKeyValuePair::~NKKeyValuePair() = default;

Ref<NKKeyValuePair> NKKeyValuePair::pairWithKey(const Class& receivingClass, const Value& key, const Value& value) {
  auto pair = refCast<NKKeyValuePair>(receivingClass.makeObject());
  if (!pair) {
    NSException::raise(NSInvalidArgumentException,
                       "the class " + receivingClass.distinctName() + " cannot create an NKKeyValuePair");
  }
  pair->setKey(key);
  pair->setValue(value);
  return pair;
}

Ref<NSMutableArray> NKKeyValuePair::pairsFromArray(const Class& receivingClass, const NSArray& array) {
  return pairsOf(array, [&](const Value& each) { return pairWithKey(receivingClass, each, each); });
}

Ref<NSMutableArray> NKKeyValuePair::pairsFromDictionary(const Class& receivingClass, const NSDictionary& dictionary) {
  return pairsOf(dictionary, [&](const auto& entry) { return pairWithKey(receivingClass, entry.key, entry.value); });
}

Ref<NKKeyValuePair> NKKeyValuePair::pairWithId(std::int32_t id, const NSArray& pairs) {
  return linq_firstOrNil(pairs, [id](const NKKeyValuePair& pair) { return pair.id() == id; }).as<Ref<NKKeyValuePair>>();
}

std::int32_t NKKeyValuePair::id() const {
  const Value itsKey = key();
  if (itsKey.isNumber()) return itsKey.number().intValue();
  if (const NSString* text = itsKey.string()) return text->intValue();
  NSObject* object = itsKey.object();
  if (!object || !object->respondsToSelector("intValue")) return 0;
  return object->performSelector("intValue").as<std::int32_t>();
}

NSString NKKeyValuePair::description() const { return stringWithFormat("%@ : %@", key(), value()); }

}  // namespace norvik
