// Stored preferences, damaged and whole: a value that can be read at all can be stored again, and is read back
// unchanged.
//
// For any bytes, reading raises NSInvalidUnarchiveOperationException or gives a value. That value can be stored: it is
// copied, written, read, copied and written once more, and both written forms must have the same bytes.
#include "NorvikCore/platform/foundation/internal/PropertyList.h"
#include "NorvikCore/platform/values/NSException.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

using namespace norvik;

namespace {

[[noreturn]] void fail(const char* what, const char* why = "") {
  std::fprintf(stderr, "%s %s\n", what, why);
  std::abort();
}

/// Returns false if the bytes are refused; a refusal by another exception name is a failure.
bool read(std::string_view bytes, Value& value) {
  try {
    value = detail::decodePropertyList(bytes);
    return true;
  } catch (const NSException& e) {
    if (e.name() != NSInvalidUnarchiveOperationException) fail("refused by another name:", e.what());
    return false;
  }
}

std::string write(const Value& value) {
  try {
    return detail::encodePropertyList(detail::propertyListCopy(value, "it"));
  } catch (const NSException& e) {
    fail("what was read cannot be stored:", e.what());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Value value, again;
  if (!read({reinterpret_cast<const char*>(data), size}, value)) return 0;
  const std::string once = write(value);
  if (!read(once, again)) fail("what was stored cannot be read");
  if (write(again) != once) fail("it is not the same any more");
  return 0;
}
