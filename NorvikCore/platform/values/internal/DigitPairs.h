// NorvikCore/platform/values/internal/DigitPairs.h - writes two decimal digits at a time, which halves the divisions.
#pragma once

#include <cstdint>
#include <cstring>

namespace norvik::detail {

inline constexpr char digitPairs[] =
    "0001020304050607080910111213141516171819202122232425262728293031323334353637383940414243444546474849"
    "5051525354555657585960616263646566676869707172737475767778798081828384858687888990919293949596979899";

/// Writes the two digits of a number below 100.
inline void writeDigitPair(char* out, std::uint64_t number) noexcept { std::memcpy(out, digitPairs + 2 * number, 2); }

}  // namespace norvik::detail
