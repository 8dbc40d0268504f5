// NorvikCore/platform/values/internal/FormatCopy.h - copies of a format's arguments, so that the text can be formed
// later and on another thread.
//
//   FormatArgument* copies = ...;                                          // memory for arguments.size() copies
//   Room room(memory, size);
//   if (copyFormatArguments(copies, arguments, room)) ...                  // false: the room is too small
//   appendFormatArguments(text, format, {copies, arguments.size()});
//   releaseFormatCopies({copies, arguments.size()});
//
// Only for formats that can wait (FormatString::canWait). Numbers, plain values and text are copied; a longer NSString
// is shared. The copies refer to their room, which must not move.
//
// Every log call copies its arguments, so all of the code is in this header, small, and calls no other function.
#pragma once

#include "NorvikCore/platform/values/Format.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <string_view>

namespace norvik::detail {

/// Memory that is used from its start to its end.
class Room {
 public:
  Room(char* memory, std::size_t size) noexcept : at_(memory), end_(memory + size) {}

  /// Null if that much is not left. `alignment` is a power of two.
  [[nodiscard]] char* take(std::size_t size, std::size_t alignment = 1) noexcept {
    const std::size_t gap = (0 - reinterpret_cast<std::uintptr_t>(at_)) & (alignment - 1);
    if (static_cast<std::size_t>(end_ - at_) < gap + size) [[unlikely]]
      return nullptr;
    char* const taken = at_ + gap;
    at_ = taken + size;
    return taken;
  }

  [[nodiscard]] char* copy(std::string_view text) noexcept {
    char* const copied = take(text.size());
    if (copied) copyBytes(copied, text.data(), text.size());
    return copied;
  }

  /// Copies up to the terminating zero, which is not copied, or up to `limit` bytes. Null if the room is too small.
  [[nodiscard]] char* copyUntilZero(const char* text, std::size_t limit, std::size_t& length) noexcept {
    char* const to = at_;  // a local, because the compiler must assume that the writes change at_
    const auto left = static_cast<std::size_t>(end_ - to);
    std::size_t count = 0;
    for (; count < limit && text[count] != '\0'; ++count) {
      if (count == left) [[unlikely]]
        return nullptr;
      to[count] = text[count];
    }
    length = count;
    return take(count);
  }

 private:
  /// Copies a few bytes without a function call.
  static void copyBytes(char* to, const char* from, std::size_t count) noexcept {
    if (count >= 8) {
      std::size_t at = 0;
      for (; at + 8 <= count; at += 8) std::memcpy(to + at, from + at, 8);
      std::memcpy(to + count - 8, from + count - 8, 8);
    } else {
      for (std::size_t at = 0; at < count; ++at) to[at] = from[at];
    }
  }

  char* at_;
  char* end_;
};

/// NSStrings up to this size are copied, because counting references would share a cache line between processors.
inline constexpr std::size_t copiedStringLimit = 64;

inline void releaseFormatCopies(FormatArguments copies) noexcept {
  for (std::size_t i = 0; i < copies.size(); ++i) {
    if (copies.data()[i].kind() == FormatKind::string)
      static_cast<const NSString*>(copies.data()[i].pointer)->~NSString();
  }
}

/// If the argument refers to something, copies that into the room and refers to the copy. False if the room is too
/// small.
[[nodiscard]] inline bool copyReferred(FormatArgument& argument, Room& room) noexcept {
  switch (argument.kind()) {
    case FormatKind::cText: {
      argument.pointer =
          room.copyUntilZero(static_cast<const char*>(argument.pointer), argument.length, argument.length);
      argument.setKind(FormatKind::text);
      return argument.pointer != nullptr;
    }
    case FormatKind::text:
      argument.pointer = room.copy({static_cast<const char*>(argument.pointer), argument.length});
      return argument.pointer != nullptr;
    case FormatKind::string: {
      const auto& string = *static_cast<const NSString*>(argument.pointer);
      if (const std::string_view text = string.view(); text.size() <= copiedStringLimit && string.isWellFormed()) {
        argument.setKind(FormatKind::text);
        argument.length = text.size();
        argument.pointer = room.copy(text);
        return argument.pointer != nullptr;
      }
      char* const memory = room.take(sizeof(NSString), alignof(NSString));
      if (!memory) return false;
      argument.pointer = ::new (memory) NSString(string);
      return true;
    }
    case FormatKind::described:
    case FormatKind::decimal:
    case FormatKind::number: {
      char* const memory = room.take(argument.bytes(), alignof(std::max_align_t));
      if (!memory) return false;
      std::memcpy(memory, argument.pointer, argument.bytes());
      argument.pointer = memory;
      return true;
    }
    default:
      return true;  // a number, or an address that is shown as such
  }
}

/// Releases the copies that were made before the room was full. Returns false.
[[nodiscard, gnu::cold, gnu::noinline]] inline bool giveUp(FormatArguments copies) noexcept {
  releaseFormatCopies(copies);
  return false;
}

/// Makes the copies in `copies`, which has memory for all of them, and copies in the room what they refer to. False,
/// with nothing to release, if the room is too small.
[[nodiscard]] inline bool copyFormatArguments(FormatArgument* copies, FormatArguments arguments, Room& room) noexcept {
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    // Member by member. A load that is wider than the call site's recent stores would have to wait until those are in
    // the cache.
    FormatArgument* const copy = ::new (copies + i) FormatArgument;
    const FormatArgument& argument = arguments.data()[i];
    copy->kindAndBytes = argument.kindAndBytes;
    std::memcpy(&copy->integer, &argument.integer, sizeof copy->integer);
    std::memcpy(&copy->length, &argument.length, sizeof copy->length);
    if (argument.kind() >= FormatKind::text && !copyReferred(*copy, room)) [[unlikely]]
      return giveUp({copies, i});
  }
  return true;
}

/// Writes the text as UTF-8 into memory of that size and returns its length. Returns more than `size` if the text does
/// not fit, or if a single argument is already longer.
[[nodiscard]] std::size_t formText(char* memory, std::size_t size, std::string_view format, FormatArguments arguments);

/// The size of a room that is sufficient for the copies.
[[nodiscard]] inline std::size_t roomForFormatArguments(FormatArguments arguments) noexcept {
  constexpr std::size_t most = sizeof(FormatArgument) + 2 * alignof(std::max_align_t) + copiedStringLimit;
  std::size_t size = 0;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const FormatArgument& argument = arguments.data()[i];
    size += most;
    if (argument.kind() == FormatKind::text) size += argument.length;
    if (argument.kind() == FormatKind::cText) {
      const char* const text = static_cast<const char*>(argument.pointer);
      size += argument.length == static_cast<std::size_t>(-1) ? std::strlen(text) : ::strnlen(text, argument.length);
    }
  }
  return size;
}

}  // namespace norvik::detail
