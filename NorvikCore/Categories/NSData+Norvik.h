// NorvikCore/Categories/NSData+Norvik.h - the kind of image in some data, found from the first bytes.
//
//   nk_imageMimeTypeByIntrospection(*NSData::dataWithText("GIF89a"));      // "image/gif"
#pragma once

#include "NorvikCore/platform/collections/NSData.h"

namespace norvik {

/// The MIME type of a bitmap (BMP), GIF, JPEG, PSD, IFF, WebP, icon, TIFF, PNG or JPEG 2000 image, found from the first
/// 12 bytes at most; "application/octet-stream" for anything else. Data shorter than a signature do not match it, even
/// if only zero bytes are missing. Every RIFF container is "image/webp", deliberately.
[[nodiscard]] NK_EXPORT NSString nk_imageMimeTypeByIntrospection(const NSData& data);

}  // namespace norvik
