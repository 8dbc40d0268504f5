// NorvikCore/Categories/NSData+Norvik.h - what image some data are, by how they begin.
//
//   nk_imageMimeTypeByIntrospection(*NSData::dataWithText("GIF89a"));      // "image/gif"
#pragma once

#include "NorvikCore/platform/collections/NSData.h"

namespace norvik {

/// The type of a bitmap (BMP), GIF, JPEG, PSD, IFF, WebP, icon, TIFF, PNG or JPEG 2000 image, by its first 12 bytes at
/// most; "application/octet-stream" for anything else. Data that end before the signature does are nothing else, also
/// where zeros are missing. Every RIFF container is "image/webp", deliberately.
[[nodiscard]] NK_EXPORT NSString nk_imageMimeTypeByIntrospection(const NSData& data);

}  // namespace norvik
