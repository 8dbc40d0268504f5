// NorvikCore/platform/values/internal/FormatCopy.h - copies of a format's arguments, of which the text is formed later
// and on another thread.
//
//   FormatArgument* copies = ...;                                          // memory for as many
//   Room room(memory, size);
//   if (copyFormatArguments(copies, arguments, room)) ...                  // false: the room is too small
//   appendFormatArguments(text, format, {copies, arguments.size()});
//   releaseFormatCopies({copies, arguments.size()});
//
// Only for formats that can wait (FormatString::canWait). Numbers and plain values are copied, text too; a longer
// NSString is shared. The copies refer to their room, which stays where it is.
//
// Copying is on the way of every log call, so it is all in this header, small, and calls nothing.
#pragma once

#include "NorvikCore/platform/values/Format.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <string_view>

namespace norvik::detail {

/// Memory that is handed out from its start to its end.
class Room {
 public:
  Room(char* memory, std::size_t size) noexcept : at_(memory), end_(memory + size) {}

  /// Null where that much is not left. `alignment` is a power of two.
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

  /// Copies up to the terminating zero, which is not copied, or up to `limit` bytes. Null where the room is too small.
  [[nodiscard]] char* copyUntilZero(const char* text, std::size_t limit, std::size_t& length) noexcept {
    char* const to = at_;  // what is written through it might be at_ itself, as far as the compiler can tell
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
  /// For a few bytes, without a call.
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

/// NSStrings up to this size are copied, for counting their uses would make two processors share a cache line.
inline constexpr std::size_t copiedStringLimit = 64;

inline void releaseFormatCopies(FormatArguments copies) noexcept {
  for (std::size_t i = 0; i < copies.size(); ++i) {
    if (copies.data()[i].kind() == FormatKind::string)
      static_cast<const NSString*>(copies.data()[i].pointer)->~NSString();
  }
}

/// Makes an argument that refers to something refer to a copy in the room. False where the room is too small.
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
    case FormatKind::described: {
      char* const memory = room.take(argument.bytes(), alignof(std::max_align_t));
      if (!memory) return false;
      std::memcpy(memory, argument.pointer, argument.bytes());
      argument.pointer = memory;
      return true;
    }
    default:
      return true;  // an address that is shown as such
  }
}

/// What becomes of some copies where there was no room for all: false.
[[nodiscard, gnu::cold, gnu::noinline]] inline bool giveUp(FormatArguments copies) noexcept {
  releaseFormatCopies(copies);
  return false;
}

/// Makes the copies in memory for as many, and in the room what they refer to. False, with nothing to release, where
/// the room is too small.
[[nodiscard]] inline bool copyFormatArguments(FormatArgument* copies, FormatArguments arguments, Room& room) noexcept {
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    // Member by member: loads wider than the call site's stores, made a moment ago, would wait until those are in the
    // cache.
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

/// Forms the text in memory of that size, as UTF-8. Returns its length; more than the size where it does not fit, or
/// where the arguments alone say that it hardly will.
[[nodiscard]] std::size_t formText(char* memory, std::size_t size, std::string_view format, FormatArguments arguments);

/// Room that is enough for the copies.
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
