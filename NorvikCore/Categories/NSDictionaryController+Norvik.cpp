#include "NorvikCore/Categories/NSDictionaryController+Norvik.h"

#include "NorvikCore/platform/foundation/NSLog.h"

namespace norvik {

Ref<NSDictionaryControllerKeyValuePair> nk_arrangedObjectWithKey(const NSDictionaryController& receiver,
                                                                 const NSString& key) {
  for (auto& entry : receiver.arrangedObjects()->as<NSDictionaryControllerKeyValuePair>()) {
    const Value entryKey = entry.key();
    if (entryKey.isString() && *entryKey.string() == key) return ref(entry);
  }
  return nullptr;
}

void nk_selectObjectWithKey(NSDictionaryController& receiver, const NSString& key) {
  const auto entry = nk_arrangedObjectWithKey(receiver, key);
  if (!entry) {
    NSLog("Object for Key : not found in %s", "-[NSDictionaryController(Norvik) nk_selectObjectWithKey:]");
    return;
  }
  receiver.setSelectedObjects(NSArray::arrayWithObjects(entry));
}

}  // namespace norvik
