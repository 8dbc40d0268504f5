// NorvikCore/platform/archives/NSUnarchiver.h - values and objects from the bytes that NSArchiver wrote, in the same
// order.
//
//   Ref<NSColor> colour = NSUnarchiver::unarchiveObjectWithData(*data).as<Ref<NSColor>>();
//
//   auto unarchiver = make<NSUnarchiver>(*more);
//   Value payslips = unarchiver->decodeObject();
//   auto version = unarchiver->decodeValue<int>();
//   unarchiver->isAtEnd();                            // true
//
// Classes are looked up by their names. Data that NSArchiver did not write, or that were changed or cut since, raise
// NSInvalidUnarchiveOperationException: so do a class that is not there or states no way of decoding, an exception out
// of decoding an object, a value that is asked for and was not encoded, and objects that hold one another more than 512
// deep. What an object encoded and does not ask for is passed over. Memory stays within a small multiple of the data's
// size. Confined: one thread at a time.
//
// An object that holds itself by way of others is seen by them before its initWithCoder is done; they may keep it, not
// use it.
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

  /// What NSArchiver::archivedDataWithRootObject was given: the first value.
  [[nodiscard]] static Value unarchiveObjectWithData(const NSData& data);

  /// No value is left that was encoded without a key.
  [[nodiscard]] bool isAtEnd() const noexcept;
  [[nodiscard]] Value decodeObject() override;
  [[nodiscard]] bool containsValueForKey(const NSString& key) const override;
  [[nodiscard]] Value decodeObjectForKey(const NSString& key) override;

  // An unarchiver only reads: these raise NSInvalidUnarchiveOperationException.
  void encodeObject(const Value& value) override;
  void encodeObject(const Value& value, const NSString& key) override;

 private:
  detail::Hidden<detail::ArchiveReader> reader_;
};

}  // namespace norvik
