// NorvikCore/logging/internal/CrashText.h - forms text in the handler of a fatal signal: in the given memory, without
// locks or allocation. The text is cut at the end of the memory.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/Format.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace norvik::detail {

class NK_EXPORT_FOR_TESTS CrashText {
 public:
  CrashText(char* memory, std::size_t size) noexcept : memory_(memory), room_(size) {}

  void append(std::string_view text) noexcept;
  void append(char c) noexcept { append(std::string_view(&c, 1)); }
  /// Line breaks and other control characters become spaces.
  void appendOnOneLine(std::string_view text) noexcept;
  void appendNumber(std::uint64_t number, std::size_t digits = 1) noexcept;
  void appendSigned(std::int64_t number) noexcept;
  void appendHexadecimal(std::uint64_t number) noexcept;
  /// "2021-05-10T13:30:12.045Z" for a time in nanoseconds since 1970.
  void appendTime(std::int64_t nanoseconds) noexcept;
  /// Formats numbers, texts and addresses without widths and flags. A value whose description would need memory becomes
  /// "(value)".
  void appendFormatted(std::string_view format, FormatArguments arguments) noexcept;

  [[nodiscard]] std::string_view view() const noexcept { return {memory_, size_}; }
  [[nodiscard]] std::size_t room() const noexcept { return room_ - size_; }
  void clear() noexcept { size_ = 0; }

 private:
  void appendFloating(double number, int places) noexcept;
  void appendArgument(const FormatArgument& argument, const FormatDirective& directive) noexcept;

  char* const memory_;
  const std::size_t room_;
  std::size_t size_ = 0;
};

}  // namespace norvik::detail
