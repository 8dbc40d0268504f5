#include "NorvikCore/values/NKCursor.h"

#include <limits>

namespace norvik {

NKCursor::~NKCursor() = default;

Ref<NKCursor> NKCursor::cursorWithCount(std::int64_t count, std::int64_t index) {
  auto cursor = make<NKCursor>();
  cursor->initWithCount(count, index);
  return cursor;
}

void NKCursor::initWithCount(std::int64_t count, std::int64_t index) {
  setCount(count);
  setIndex(index);
}

void NKCursor::increment() {
  const std::int64_t at = index();
  if (at < std::numeric_limits<std::int64_t>::max() && at + 1 < count()) setIndex(at + 1);
}

}  // namespace norvik
