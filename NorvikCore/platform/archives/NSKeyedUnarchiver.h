// NorvikCore/platform/archives/NSKeyedUnarchiver.h - values and objects from the bytes of an archive.
//
//   Value root = NSKeyedUnarchiver::unarchiveObjectWithData(*data);
//
//   Ref<NSError> error;
//   Value slips = NSKeyedUnarchiver::unarchivedObjectOfClass(NSArray::staticClass(), *data, &error);
//
//   auto unarchiver = make<NSKeyedUnarchiver>(*data);
//   Value payslips = unarchiver->decodeObjectForKey("payslips");
//
// Data that NSKeyedArchiver did not write, or that were changed or cut since, raise
// NSInvalidUnarchiveOperationException: so do a class that is not there or states no way of decoding, an exception
// out of decoding an object, and objects that hold one another more than 512 deep. Memory stays within a small multiple
// of the data's size. Confined: one thread at a time.
//
// A class is found by the name that was written, also by its C++ name (Class::named()). A name that several classes of
// the process share, written where only one had it, raises too: NK_CLASS_NAME gives the others another name.
//
// An object that holds itself by way of others is seen by them before its initWithCoder is done; they may keep it, not
// use it.
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

  /// What NSKeyedArchiver::archivedDataWithRootObject was given.
  [[nodiscard]] static Value unarchiveObjectWithData(const NSData& data);
  /// The same, where it is of that class or a subclass; otherwise, and where unarchiveObjectWithData would raise,
  /// absent with an error of the domain NSCoderErrorDomain.
  [[nodiscard]] static Value unarchivedObjectOfClass(const Class& wanted, const NSData& data,
                                                     Ref<NSError>* error = nullptr);

  [[nodiscard]] Value decodeObject() override;
  [[nodiscard]] bool containsValueForKey(const NSString& key) const override;
  [[nodiscard]] Value decodeObjectForKey(const NSString& key) override;

  // An unarchiver only reads: these raise NSInvalidUnarchiveOperationException.
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
