#include "NorvikCore/platform/collections/NSData.h"

#include "NorvikCore/platform/collections/NSMutableData.h"
#include "NorvikCore/platform/values/NSException.h"

#include <algorithm>
#include <string>

namespace norvik {

NSData::~NSData() = default;
NSMutableData::~NSMutableData() = default;

Ref<NSData> NSData::dataWithBytes(const void* bytes, std::size_t length) {
  return dataWithBytes(std::span(static_cast<const std::uint8_t*>(bytes), length));
}

Ref<NSData> NSData::dataWithBytes(std::span<const std::uint8_t> bytes) {
  return make<NSData>(std::vector<std::uint8_t>(bytes.begin(), bytes.end()));
}

Ref<NSData> NSData::subdataWithRange(NSRange range) const {
  checkRange("subdataWithRange:", range);
  return dataWithBytes(bytes().subspan(range.location, range.length));
}

Ref<NSData> NSData::copy() const { return ref(const_cast<NSData&>(*this)); }
Ref<NSData> NSMutableData::copy() const { return dataWithBytes(bytes()); }
Ref<NSMutableData> NSData::mutableCopy() const { return make<NSMutableData>(bytes_); }

bool NSData::isEqual(const NSObject& other) const {
  const auto* data = dynamic_cast<const NSData*>(&other);
  return data && bytes_ == data->bytes_;
}

std::size_t NSData::hash() const { return std::hash<std::string_view>()(text()); }

NSString NSData::description() const {
  static constexpr std::size_t greatestShown = 64;
  static constexpr char digits[] = "0123456789abcdef";
  std::string out = "<";
  for (std::size_t i = 0; i < std::min(length(), greatestShown); ++i) {
    if (i > 0 && i % 4 == 0) out += ' ';
    out += digits[bytes_[i] >> 4];
    out += digits[bytes_[i] & 15];
  }
  if (length() > greatestShown) out += " ... " + std::to_string(length()) + " bytes";
  return NSString(out + ">");
}

void NSData::checkRange(const char* operation, NSRange range) const {
  if (range.location <= length() && range.length <= length() - range.location) return;
  NSException::raise(NSRangeException, "-[" + classObject().name().str() + " " + operation + "]: range {" +
                                           std::to_string(range.location) + ", " + std::to_string(range.length) +
                                           "} beyond the length of " + std::to_string(length()));
}

Ref<NSMutableData> NSMutableData::dataWithCapacity(std::size_t capacity) {
  auto data = make<NSMutableData>();
  data->bytes_.reserve(capacity);
  return data;
}

Ref<NSMutableData> NSMutableData::dataWithLength(std::size_t length) {
  return make<NSMutableData>(std::vector<std::uint8_t>(length));
}

void NSMutableData::appendBytes(const void* bytes, std::size_t length) {
  replaceBytesInRange({this->length(), 0}, {static_cast<const std::uint8_t*>(bytes), length});
}

void NSMutableData::replaceBytesInRange(NSRange range, std::span<const std::uint8_t> bytes) {
  checkRange("replaceBytesInRange:withBytes:", range);
  if (!bytes.empty() && bytes.data() >= bytes_.data() && bytes.data() < bytes_.data() + bytes_.size()) {
    const std::vector<std::uint8_t> own(bytes.begin(), bytes.end());  // a copy, because these bytes are about to move
    return replaceBytesInRange(range, own);
  }
  const auto at = bytes_.begin() + static_cast<std::ptrdiff_t>(range.location);
  const auto common = static_cast<std::ptrdiff_t>(std::min(range.length, bytes.size()));
  std::copy(bytes.begin(), bytes.begin() + common, at);
  if (bytes.size() < range.length) {
    bytes_.erase(at + common, at + static_cast<std::ptrdiff_t>(range.length));
  } else {
    bytes_.insert(at + common, bytes.begin() + common, bytes.end());
  }
}

}  // namespace norvik
