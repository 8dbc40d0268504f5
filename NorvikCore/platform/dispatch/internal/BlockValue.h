// NorvikCore/platform/dispatch/internal/BlockValue.h - values that belong to one running block, not to its queue.
//
// Many blocks of a concurrent queue run at once; what is true of one of them cannot stand on the queue. While a
// BlockValue lives, dispatch_get_specific() finds it under its key in the block that made it, before any value of the
// queue and of its targets; blocks that run within that block see their own only.
#pragma once

#include "NorvikCore/platform/dispatch/Queue.h"
#include "NorvikCore/platform/dispatch/internal/ThreadFrames.h"

namespace norvik::detail {

/// Stands on the stack of a block. `Read` gives the value to who asks for it, which may be never.
class BlockValue {
 public:
  using Read = void* (*)(BlockValue& self);

  /// In a block of some queue.
  BlockValue(const void* key, Read read) noexcept
      : key_(key), read_(read), frame_(currentFrame), outer_(frame_->values) {
    frame_->values = this;
  }
  ~BlockValue() { frame_->values = outer_; }
  BlockValue(const BlockValue&) = delete;
  BlockValue& operator=(const BlockValue&) = delete;

  /// The running block's value for the key, or null.
  [[nodiscard]] static BlockValue* find(const void* key) noexcept {
    BlockValue* value = currentFrame == nullptr ? nullptr : currentFrame->values;
    while (value != nullptr && value->key_ != key) value = value->outer_;
    return value;
  }
  [[nodiscard]] void* get() { return read_(*this); }

 private:
  const void* const key_;
  const Read read_;
  Frame* const frame_;
  BlockValue* const outer_;
};

/// Takes a key away from a queue if its value is that one, which was set without a destructor.
void clearSpecific(const dispatch_queue_t& queue, const void* key, void* value) noexcept;

}  // namespace norvik::detail
