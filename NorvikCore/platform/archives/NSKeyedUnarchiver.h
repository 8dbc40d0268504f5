// NorvikCore/platform/archives/NSKeyedUnarchiver.h - decodes values and objects from the bytes of an archive.
//
//   Value root = NSKeyedUnarchiver::unarchiveObjectWithData(*data);
//
//   Ref<NSError> error;
//   Value slips = NSKeyedUnarchiver::unarchivedObjectOfClass(NSArray::staticClass(), *data, &error);
//
//   auto unarchiver = make<NSKeyedUnarchiver>(*data);
//   Value payslips = unarchiver->decodeObjectForKey("payslips");
//
// NSInvalidUnarchiveOperationException is raised for data that NSKeyedArchiver did not write or that were changed or
// truncated, for a class that does not exist or does not declare how it is decoded, if decoding an object raises an
// NSException, and for objects nested more than 512 deep. Memory use is within a small multiple of the data's size.
// Confined: one thread at a time.
//
// A class is found by the name in the archive, also if that is its C++ name (Class::named()). A name that several
// classes of the process share, although only one had it when it was written, raises too: give the other classes
// another name with NK_CLASS_NAME.
//
// If an object indirectly holds itself, the objects between see it before its initWithCoder has returned. They may
// store it but must not use it.
#pragma once

#include "NorvikCore/platform/collections/NSData.h"
#include "NorvikCore/platform/kernel/Hidden.h"
#include "NorvikCore/platform/object/NSCoder.h"

namespace norvik {

class NSError;

namespace detail {
class ArchiveReader;
}

class NK_EXPORT NSKeyedUnarchiver : public NSCoder {
  NK_OBJECT(NSKeyedUnarchiver, NSCoder)

  explicit NSKeyedUnarchiver(const NSData& data);
  ~NSKeyedUnarchiver() override;

  /// The value that was given to NSKeyedArchiver::archivedDataWithRootObject.
  [[nodiscard]] static Value unarchiveObjectWithData(const NSData& data);
  /// The same if it is of that class or a subclass. Otherwise, and if unarchiveObjectWithData would raise
  /// NSInvalidUnarchiveOperationException, absent with an error of the domain NSCoderErrorDomain.
  [[nodiscard]] static Value unarchivedObjectOfClass(const Class& wanted, const NSData& data,
                                                     Ref<NSError>* error = nullptr);

  [[nodiscard]] Value decodeObject() override;
  [[nodiscard]] bool containsValueForKey(const NSString& key) const override;
  [[nodiscard]] Value decodeObjectForKey(const NSString& key) override;

  // An unarchiver cannot write: these raise NSInvalidUnarchiveOperationException.
  void encodeObject(const Value& value) override;
  void encodeObject(const Value& value, const NSString& key) override;

 private:
  detail::Hidden<detail::ArchiveReader> reader_;
};

/// The domain of decoding errors, and their codes.
NK_EXPORT extern const NSString NSCoderErrorDomain;
inline constexpr std::int64_t NSCoderReadCorruptError = 4864;    ///< the data are damaged
inline constexpr std::int64_t NSCoderValueNotFoundError = 4865;  ///< the data hold something else

}  // namespace norvik
