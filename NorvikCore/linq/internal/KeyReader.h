// NorvikCore/linq/internal/KeyReader.h - reads one key path from many values.
#pragma once

#include "NorvikCore/platform/keyvalue/KeyValueCoding.h"
#include "NorvikCore/platform/object/Class.h"

namespace norvik::detail {

/// Returns the same value as valueForKeyPath. For a path of one key, it looks the property up once for each series of
/// objects of one class, not once for each object.
class KeyReader {
 public:
  explicit KeyReader(const NSString& keyPath)
      : keyPath_(keyPath), isOneKey_(keyPath.view().find('.') == std::string_view::npos) {}

  Value operator()(const Value& target) {
    const NSObject* object = target.object();
    if (!object || !isOneKey_) return valueForKeyPath(target, keyPath_);
    const Class& itsClass = object->classObject();
    if (&itsClass != class_) {
      class_ = &itsClass;
      property_ = itsClass.answersKeysItself() ? nullptr : itsClass.property(keyPath_);
    }
    return property_ ? property_->get(*object) : object->valueForKeyPath(keyPath_);
  }

 private:
  const NSString keyPath_;
  const bool isOneKey_;
  const Class* class_ = nullptr;
  const Property* property_ = nullptr;
};

}  // namespace norvik::detail
