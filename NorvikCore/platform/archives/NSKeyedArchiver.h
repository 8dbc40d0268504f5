// NorvikCore/platform/archives/NSKeyedArchiver.h - values and objects, with all they hold, as bytes.
//
//   Ref<NSData> data = NSKeyedArchiver::archivedDataWithRootObject(payslips);
//
//   auto archiver = make<NSKeyedArchiver>();
//   archiver->encodeObject(payslips, "payslips");
//   archiver->encodeInteger(2, "version");
//   Ref<NSData> more = archiver->encodedData();
//
// Every kind of value can be encoded; of objects, the collections, NSData, and those of classes that implement NSCoding
// and state how they are decoded (NSCoder.h). An object met again is written once, also where objects hold one another
// in a circle, and mutable collections come back mutable. Equal content met in the same order gives equal bytes, on
// every machine.
//
// Of an object's class the name is written. Where several classes of the process share it, it is the C++ name, as in
// "pay::Row" (Class::distinctName()); classes of one name in anonymous namespaces cannot be encoded.
//
// Raises NSInvalidArchiveOperationException for an object that cannot be encoded, for a key that is used twice for one
// object, and for objects that hold one another more than 512 deep. Confined: one thread at a time.
#pragma once

#include "NorvikCore/platform/collections/NSData.h"
#include "NorvikCore/platform/kernel/Hidden.h"
#include "NorvikCore/platform/object/NSCoder.h"

namespace norvik {

class NK_EXPORT NSKeyedArchiver : public NSCoder {
  NK_OBJECT(NSKeyedArchiver, NSCoder)

  NSKeyedArchiver();
  ~NSKeyedArchiver() override;

  /// The value under the key "root", which NSKeyedUnarchiver::unarchiveObjectWithData reads.
  [[nodiscard]] static Ref<NSData> archivedDataWithRootObject(const Value& root);

  /// Under a key that the archiver gives out: "$0", "$1" and so on within one object.
  void encodeObject(const Value& value) override;
  void encodeObject(const Value& value, const NSString& key) override;
  /// What was encoded so far.
  [[nodiscard]] Ref<NSData> encodedData() const;

  // An archiver only writes: these raise NSInvalidArchiveOperationException.
  [[nodiscard]] Value decodeObject() override;
  [[nodiscard]] bool containsValueForKey(const NSString& key) const override;
  [[nodiscard]] Value decodeObjectForKey(const NSString& key) override;

 private:
  class Writer;
  detail::Hidden<Writer> writer_;
};

/// The key of the root object.
NK_EXPORT extern const NSString NSKeyedArchiveRootObjectKey;

}  // namespace norvik
