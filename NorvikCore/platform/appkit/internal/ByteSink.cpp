#include "NorvikCore/platform/appkit/internal/ByteSink.h"

#include "NorvikCore/platform/appkit/internal/CairoContext.h"

#include <exception>

namespace norvik::detail {

cairo_status_t ByteSink::append(void* closure, const unsigned char* bytes, unsigned int count) noexcept {
  ByteSink& sink = *static_cast<ByteSink*>(closure);
  try {
    if (!sink.isCutShort_) sink.bytes_.append(reinterpret_cast<const char*>(bytes), count);  // NOLINT
  } catch (const std::exception&) {
    sink.isCutShort_ = true;
  }
  return sink.isCutShort_ ? CAIRO_STATUS_NO_MEMORY : CAIRO_STATUS_SUCCESS;
}

const std::string& ByteSink::bytes() const {
  if (isCutShort_) checkCairo(CAIRO_STATUS_NO_MEMORY);
  return bytes_;
}

}  // namespace norvik::detail
