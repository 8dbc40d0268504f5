#include "NorvikCore/Categories/NSMutableDictionary+Norvik.h"

#include "NorvikCore/platform/collections/NSMutableArray.h"

namespace norvik {

void setArrayValue(NSMutableDictionary& dictionary, const Value& object, const NSString& key) {
  detail::checkPresent(object, "setArrayValue:forKey:, value");
  const Value present = dictionary.valueForKey(key);
  if (!present.isAbsent()) return detail::elementAs<NSMutableArray>(present).addObject(object);
  auto objects = NSMutableArray::arrayWithCapacity(2);
  objects->addObject(object);
  dictionary.setValue_forKey(objects, key);
}

}  // namespace norvik
