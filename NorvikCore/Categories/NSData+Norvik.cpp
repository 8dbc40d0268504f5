#include "NorvikCore/Categories/NSData+Norvik.h"

#include <string_view>

namespace norvik {

using namespace std::string_view_literals;

NSString nk_imageMimeTypeByIntrospection(const NSData& data) {
  static constexpr struct {
    std::string_view signature, type;
  } kinds[] = {
      {"\x42\x4D"sv, "image/x-ms-bmp"},
      {"\x47\x49\x46"sv, "image/gif"},
      {"\xFF\xD8\xFF"sv, "image/jpeg"},
      {"\x38\x42\x50\x53"sv, "image/psd"},
      {"\x46\x4F\x52\x4D"sv, "image/iff"},
      {"\x52\x49\x46\x46"sv, "image/webp"},
      {"\x00\x00\x01\x00"sv, "image/vnd.microsoft.icon"},
      {"\x49\x49\x2A\x00"sv, "image/tiff"},
      {"\x4D\x4D\x00\x2A"sv, "image/tiff"},
      {"\x89\x50\x4E\x47\x0D\x0A\x1A\x0A"sv, "image/png"},
      {"\x00\x00\x00\x0C\x6A\x50\x20\x20\x0D\x0A\x87\x0A"sv, "image/jp2"},
  };
  for (const auto& kind : kinds) {
    if (data.text().starts_with(kind.signature)) return NSString::borrowing(kind.type);
  }
  return "application/octet-stream"_ns;
}

}  // namespace norvik
