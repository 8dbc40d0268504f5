// NorvikCore/platform/appkit/internal/ByteSink.h - collects the bytes that Cairo writes for a document or picture.
//
//   ByteSink sink;
//   cairo_pdf_surface_create_for_stream(ByteSink::append, &sink, width, height);
#pragma once

#include "NorvikCore/platform/appkit/internal/PangoLibrary.h"

#include <string>

namespace norvik::detail {

class ByteSink {
 public:
  /// For Cairo; `closure` is the sink.
  static cairo_status_t append(void* closure, const unsigned char* bytes, unsigned int count) noexcept;

  /// Raises NSGenericException, on each call, if bytes were lost for lack of memory. Cairo does not report that.
  [[nodiscard]] const std::string& bytes() const;

 private:
  std::string bytes_;
  bool isCutShort_ = false;
};

}  // namespace norvik::detail
