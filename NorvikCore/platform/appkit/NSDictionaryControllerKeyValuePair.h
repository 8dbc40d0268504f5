// NorvikCore/platform/appkit/NSDictionaryControllerKeyValuePair.h - one entry of a dictionary as an object to which
// views can be bound.
//
//   entry->key();                        // "basic"
//   entry->setValue(0.25_dec);           // sets it in the dictionary
//   bind_toObject_withKeyPath_options(*field, NSValueBinding, *entry, "value", nullptr);
//
// NSDictionaryController creates them. "value" is read from the dictionary each time. Its observers are notified of
// values that are set here and, if the key is a text without full stops, of values that are set by key
// (setValue_forKey) on the dictionary. Confined to the thread of its controller.
#pragma once

#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/object/Weak.h"

namespace norvik {

class NSDictionaryController;

class NK_EXPORT NSDictionaryControllerKeyValuePair : public NSObject {
  NK_OBJECT(NSDictionaryControllerKeyValuePair, NSObject)
  NK_READONLY_PROPERTY(Value, key)
  NK_COMPUTED_PROPERTY_WITH_SETTER(Value, value, setValue)

  NSDictionaryControllerKeyValuePair(NSDictionaryController& controller, Ref<NSDictionary> dictionary, Value key);
  ~NSDictionaryControllerKeyValuePair() override;

  /// Absent once the key was removed from the dictionary.
  [[nodiscard]] Value value() const;
  /// An absent value removes the key, and with it this entry. Raises what setting a key of the dictionary raises; it
  /// therefore always raises if the dictionary is immutable.
  void setValue(const Value& value);

  void observeValueForKeyPath(const NSString& keyPath, NSObject& object, const KeyValueChange& change,
                              void* context) override;

 private:
  friend class NSDictionaryController;
  void follow();
  void stopFollowing();
  void didChange();

  const Weak<NSDictionaryController> controller_;
  const Ref<NSDictionary> dictionary_;
  bool follows_ = false;     ///< observes the dictionary under the key
  bool isChanging_ = false;  ///< has announced a change of the dictionary that is not complete yet
};

}  // namespace norvik
