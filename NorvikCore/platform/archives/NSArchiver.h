// NorvikCore/platform/archives/NSArchiver.h - values and objects, with all they hold, as bytes in the order in which
// they are encoded.
//
//   Ref<NSData> data = NSArchiver::archivedDataWithRootObject(NSColor::redColor());
//
//   auto archiver = make<NSArchiver>();
//   archiver->encodeObject(payslips);
//   archiver->encodeValue(2);
//   Ref<NSData> more = archiver->archiverData();      // NSUnarchiver reads it in the same order
//
// What can be encoded is what NSKeyedArchiver can, with the same guarantees: an object met again is written once, also
// where objects hold one another in a circle; mutable collections come back mutable; equal content met in the same
// order gives equal bytes, on every machine. Each value is written where it is encoded, so that these archives need no
// tables and are the shorter ones.
//
// Keys are welcome: a value encoded under a key is written in its turn, with its key in front, and can be decoded by
// that key within its object whatever the order. So a class that codes itself by keys alone works with both archivers,
// as does one that uses none; where a class uses both, values without a key are read back in their order among
// themselves.
//
// Raises NSInvalidArchiveOperationException for an object that cannot be encoded, for a key that is used twice for one
// object, and for objects that hold one another more than 512 deep. Confined: one thread at a time.
#pragma once

#include "NorvikCore/platform/collections/NSData.h"
#include "NorvikCore/platform/kernel/Hidden.h"
#include "NorvikCore/platform/object/NSCoder.h"

namespace norvik {

class NK_EXPORT NSArchiver : public NSCoder {
  NK_OBJECT(NSArchiver, NSCoder)

  NSArchiver();
  ~NSArchiver() override;

  /// The one value, which NSUnarchiver::unarchiveObjectWithData reads.
  [[nodiscard]] static Ref<NSData> archivedDataWithRootObject(const Value& root);

  void encodeObject(const Value& value) override;
  void encodeObject(const Value& value, const NSString& key) override;
  /// What was encoded so far.
  [[nodiscard]] Ref<NSData> archiverData() const;

  // An archiver only writes: these raise NSInvalidArchiveOperationException.
  [[nodiscard]] Value decodeObject() override;
  [[nodiscard]] bool containsValueForKey(const NSString& key) const override;
  [[nodiscard]] Value decodeObjectForKey(const NSString& key) override;

 private:
  class Writer;
  detail::Hidden<Writer> writer_;
};

}  // namespace norvik
