// NorvikCore/platform/archives/NSKeyedArchiver.h - archives values and objects, with all their content, as bytes.
//
//   Ref<NSData> data = NSKeyedArchiver::archivedDataWithRootObject(payslips);
//
//   auto archiver = make<NSKeyedArchiver>();
//   archiver->encodeObject(payslips, "payslips");
//   archiver->encodeInteger(2, "version");
//   Ref<NSData> more = archiver->encodedData();
//
// Every kind of value can be encoded. Objects that can be encoded are the collections, NSData, and those of classes
// that implement NSCoding and declare how they are decoded (NSCoder.h). An object that occurs again is written once,
// also if objects hold one another in a cycle. Mutable collections are decoded as mutable. Equal content encoded in the
// same order gives equal bytes, on every machine.
//
// For an object, the name of its class is written. If several classes of the process share the name, it is the C++
// name, as in "pay::Row" (Class::distinctName()). Classes with the same name in anonymous namespaces cannot be encoded.
//
// Raises NSInvalidArchiveOperationException for an object that cannot be encoded, for a key that is used twice for one
// object, and for objects nested more than 512 deep. Confined: one thread at a time.
#pragma once

#include "NorvikCore/platform/collections/NSData.h"
#include "NorvikCore/platform/kernel/Hidden.h"
#include "NorvikCore/platform/object/NSCoder.h"

namespace norvik {

class NK_EXPORT NSKeyedArchiver : public NSCoder {
  NK_OBJECT(NSKeyedArchiver, NSCoder)

  NSKeyedArchiver();
  ~NSKeyedArchiver() override;

  /// An archive of the value under the key "root", for NSKeyedUnarchiver::unarchiveObjectWithData.
  [[nodiscard]] static Ref<NSData> archivedDataWithRootObject(const Value& root);

  /// Encodes under a generated key: "$0", "$1" and so on within one object.
  void encodeObject(const Value& value) override;
  void encodeObject(const Value& value, const NSString& key) override;
  /// The archive of everything encoded so far.
  [[nodiscard]] Ref<NSData> encodedData() const;

  // An archiver cannot read: these raise NSInvalidArchiveOperationException.
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
