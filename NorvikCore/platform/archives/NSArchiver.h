// NorvikCore/platform/archives/NSArchiver.h - archives values and objects, with all their content, as bytes in the
// order in which they are encoded.
//
//   Ref<NSData> data = NSArchiver::archivedDataWithRootObject(NSColor::redColor());
//
//   auto archiver = make<NSArchiver>();
//   archiver->encodeObject(payslips);
//   archiver->encodeValue(2);
//   Ref<NSData> more = archiver->archiverData();      // NSUnarchiver reads the values in the same order
//
// It encodes the same values and objects as NSKeyedArchiver, with the same guarantees: an object that occurs again is
// written once, also if objects hold one another in a cycle; mutable collections are decoded as mutable; equal content
// encoded in the same order gives equal bytes, on every machine. Each value is written where it is encoded, so that
// these archives need no tables and are shorter.
//
// Keys may be used: a value encoded under a key is written in its place in the order, after its key, and can be decoded
// by that key within its object in any order. A class that encodes all values with keys, or all without, therefore
// works with both archivers. If a class uses both, values without a key are decoded in their order among themselves.
//
// Raises NSInvalidArchiveOperationException for an object that cannot be encoded, for a key that is used twice for one
// object, and for objects nested more than 512 deep. Confined: one thread at a time.
#pragma once

#include "NorvikCore/platform/collections/NSData.h"
#include "NorvikCore/platform/kernel/Hidden.h"
#include "NorvikCore/platform/object/NSCoder.h"

namespace norvik {

class NK_EXPORT NSArchiver : public NSCoder {
  NK_OBJECT(NSArchiver, NSCoder)

  NSArchiver();
  ~NSArchiver() override;

  /// An archive of one value, for NSUnarchiver::unarchiveObjectWithData.
  [[nodiscard]] static Ref<NSData> archivedDataWithRootObject(const Value& root);

  void encodeObject(const Value& value) override;
  void encodeObject(const Value& value, const NSString& key) override;
  /// The archive of everything encoded so far.
  [[nodiscard]] Ref<NSData> archiverData() const;

  // An archiver cannot read: these raise NSInvalidArchiveOperationException.
  [[nodiscard]] Value decodeObject() override;
  [[nodiscard]] bool containsValueForKey(const NSString& key) const override;
  [[nodiscard]] Value decodeObjectForKey(const NSString& key) override;

 private:
  class Writer;
  detail::Hidden<Writer> writer_;
};

}  // namespace norvik
