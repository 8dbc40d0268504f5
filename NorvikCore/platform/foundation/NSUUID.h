// NorvikCore/platform/foundation/NSUUID.h - a universally unique identifier as an object.
//
//   NSUUID::UUID()->UUIDString();                                          // "3F2504E0-4F89-41D3-9A0C-0305E82C3301"
//   NSUUID::initWithUUIDString("3f2504e0-4f89-41d3-9a0c-0305e82c3301");    // an empty Ref for any other form
//
// Immutable, safe on any thread.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/kernel/UUID.h"
#include "NorvikCore/platform/object/NSCoder.h"

namespace norvik {

class NK_EXPORT NSUUID : public NSObject, public NSCoding {
  NK_OBJECT(NSUUID, NSObject)
  NK_DECODED_BY(UUIDWithCoder)

  explicit NSUUID(const kernel::UUID& uuid) noexcept : uuid_(uuid) {}
  ~NSUUID() override;

  /// A new random one.
  [[nodiscard]] static Ref<NSUUID> UUID();
  [[nodiscard]] static Ref<NSUUID> initWithUUIDString(const NSString& text);

  /// 36 characters, upper-case hexadecimal.
  [[nodiscard]] NSString UUIDString() const;
  NK_METHOD(UUIDString)

  /// Equal if the 16 bytes are equal.
  [[nodiscard]] bool isEqual(const NSObject& other) const override;
  [[nodiscard]] std::size_t hash() const override;
  [[nodiscard]] NSString description() const override;

  void encodeWithCoder(NSCoder& coder) const override;
  [[nodiscard]] static Ref<NSUUID> UUIDWithCoder(NSCoder& coder);

 private:
  kernel::UUID uuid_;
};

}  // namespace norvik
