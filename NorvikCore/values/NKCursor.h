// NorvikCore/values/NKCursor.h - a position in a sequence, which moves forward and stops at the count.
//
//   auto cursor = NKCursor::cursorWithCount(3, 1);
//   cursor->increment();                               // the index is 2
//   cursor->increment();                               // and stays 2
//
// A cursor is a snapshot: later changes of the sequence do not affect it. Confined: one thread at a time.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/object/NSObject.h"

#include <cstdint>

namespace norvik {

class NK_EXPORT NKCursor : public NSObject {
  NK_OBJECT(NKCursor, NSObject)
  NK_PROPERTY(std::int64_t, count, setCount)
  NK_PROPERTY(std::int64_t, index, setIndex)
  ~NKCursor() override;

  [[nodiscard]] static Ref<NKCursor> cursorWithCount(std::int64_t count, std::int64_t index);
  /// Sets both values unchecked: an index beyond the count is kept.
  void initWithCount(std::int64_t count, std::int64_t index);

  /// Adds 1 to the index if it is below the count.
  void increment();
  NK_METHOD(increment)
};

}  // namespace norvik
