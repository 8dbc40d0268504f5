// NorvikCore/platform/dispatch/internal/BlockValue.h - values that belong to one running block, not to its queue.
//
// Many blocks of a concurrent queue run at once, so a value of one block cannot be stored on the queue. While a
// BlockValue lives, dispatch_get_specific() finds it under its key in the block that made it, before any value of the
// queue and of its targets. Blocks that run within that block find only their own values.
#pragma once

#include "NorvikCore/platform/dispatch/Queue.h"
#include "NorvikCore/platform/dispatch/internal/ThreadFrames.h"

namespace norvik::detail {

/// An object on the stack of a block. `Read` returns the value when it is asked for, which may be never.
class BlockValue {
 public:
  using Read = void* (*)(BlockValue& self);

  /// Construct it in a block of a queue.
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

/// Removes a key from a queue if its value is `value`, which was set without a destructor.
void clearSpecific(const dispatch_queue_t& queue, const void* key, void* value) noexcept;

}  // namespace norvik::detail
