// NorvikCore/platform/archives/NSUnarchiver.h - decodes values and objects from the bytes of NSArchiver, in the same
// order.
//
//   Ref<NSColor> colour = NSUnarchiver::unarchiveObjectWithData(*data).as<Ref<NSColor>>();
//
//   auto unarchiver = make<NSUnarchiver>(*more);
//   Value payslips = unarchiver->decodeObject();
//   auto version = unarchiver->decodeValue<int>();
//   unarchiver->isAtEnd();                            // true
//
// Classes are looked up by their names. NSInvalidUnarchiveOperationException is raised for data that NSArchiver did not
// write or that were changed or truncated, for a class that does not exist or does not declare how it is decoded, if
// decoding an object raises an NSException, for a value that is requested but was not encoded, and for objects nested
// more than 512 deep. Values that an object encoded but does not request are skipped. Memory use is within a small
// multiple of the data's size. Confined: one thread at a time.
//
// If an object indirectly holds itself, the objects between see it before its initWithCoder has returned. They may
// store it but must not use it.
#pragma once

#include "NorvikCore/platform/collections/NSData.h"
#include "NorvikCore/platform/kernel/Hidden.h"
#include "NorvikCore/platform/object/NSCoder.h"

namespace norvik {

namespace detail {
class ArchiveReader;
}

class NK_EXPORT NSUnarchiver : public NSCoder {
  NK_OBJECT(NSUnarchiver, NSCoder)

  explicit NSUnarchiver(const NSData& data);
  ~NSUnarchiver() override;

  /// The value that was given to NSArchiver::archivedDataWithRootObject: the first one.
  [[nodiscard]] static Value unarchiveObjectWithData(const NSData& data);

  /// True if no value that was encoded without a key is left.
  [[nodiscard]] bool isAtEnd() const noexcept;
  [[nodiscard]] Value decodeObject() override;
  [[nodiscard]] bool containsValueForKey(const NSString& key) const override;
  [[nodiscard]] Value decodeObjectForKey(const NSString& key) override;

  // An unarchiver cannot write: these raise NSInvalidUnarchiveOperationException.
  void encodeObject(const Value& value) override;
  void encodeObject(const Value& value, const NSString& key) override;

 private:
  detail::Hidden<detail::ArchiveReader> reader_;
};

}  // namespace norvik
