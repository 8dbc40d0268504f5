#include "NorvikCore/Categories/NSData+Norvik.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace norvik {

TEST(NSDataNorvik, HeaderExample) {
  EXPECT_EQ(nk_imageMimeTypeByIntrospection(*NSData::dataWithText("GIF89a")), "image/gif");
}

TEST(NSDataNorvik, KnowsImagesByTheirFirstBytes) {
  const struct {
    std::vector<std::uint8_t> signature;
    const char* type;
  } rows[] = {
      {{0x42, 0x4D}, "image/x-ms-bmp"},
      {{0x47, 0x49, 0x46}, "image/gif"},
      {{0xFF, 0xD8, 0xFF}, "image/jpeg"},
      {{0x38, 0x42, 0x50, 0x53}, "image/psd"},
      {{0x46, 0x4F, 0x52, 0x4D}, "image/iff"},
      {{0x52, 0x49, 0x46, 0x46}, "image/webp"},
      {{0x00, 0x00, 0x01, 0x00}, "image/vnd.microsoft.icon"},
      {{0x49, 0x49, 0x2A, 0x00}, "image/tiff"},
      {{0x4D, 0x4D, 0x00, 0x2A}, "image/tiff"},
      {{0x89, 0x50, 0x4E, 0x47, 0x0D, 0x0A, 0x1A, 0x0A}, "image/png"},
      {{0x00, 0x00, 0x00, 0x0C, 0x6A, 0x50, 0x20, 0x20, 0x0D, 0x0A, 0x87, 0x0A}, "image/jp2"},
  };
  for (const auto& row : rows) {
    std::vector<std::uint8_t> bytes = row.signature;
    EXPECT_EQ(nk_imageMimeTypeByIntrospection(*NSData::dataWithBytes(bytes)), row.type);
    bytes.insert(bytes.end(), 20, 0x7A);
    EXPECT_EQ(nk_imageMimeTypeByIntrospection(*NSData::dataWithBytes(bytes)), row.type);
    bytes = row.signature;
    bytes.pop_back();
    EXPECT_EQ(nk_imageMimeTypeByIntrospection(*NSData::dataWithBytes(bytes)), "application/octet-stream") << row.type;
  }
}

// Missing zero bytes do not complete a signature.
TEST(NSDataNorvik, DataThatEndBeforeTheSignatureDoesAreNoImage) {
  const std::vector<std::uint8_t> icon = {0x00, 0x00, 0x01}, tiff = {0x49, 0x49, 0x2A}, png = {0x89, 0x50};
  for (const auto& bytes : {icon, tiff, png, std::vector<std::uint8_t>()})
    EXPECT_EQ(nk_imageMimeTypeByIntrospection(*NSData::dataWithBytes(bytes)), "application/octet-stream");
}

// Looks like a mistake but is deliberate: any container of that kind is reported as an image.
TEST(NSDataNorvik, ASoundInARiffContainerIsAWebpImage) {
  EXPECT_EQ(nk_imageMimeTypeByIntrospection(*NSData::dataWithText("RIFF....WAVE")), "image/webp");
}

}  // namespace norvik
