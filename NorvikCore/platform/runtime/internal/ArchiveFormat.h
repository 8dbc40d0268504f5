// NorvikCore/platform/runtime/internal/ArchiveFormat.h - the bytes of an archive.
//
//   archive  = "NKARCH1\n" texts objects fields
//   texts    = count, then of each: its bytes' count and the bytes (UTF-8), or 0 and its UTF-16 units' count and the
//   units, two
//              bytes each, for the empty text and for one that is not well formed
//   objects  = count, then of each: a kind and
//                Coded                       the class name (text), fields
//                Array, Set (or Mutable...)  count, values
//                Dictionary (or Mutable...)  count, of each entry the key (value) and its value
//                Data (or MutableData)       count, bytes
//   fields   = count, then of each: the key (text) and its value
//   value    = a tag and
//                Integer                     zigzag number
//                Double, Date                eight bytes, least significant first
//                Decimal                     a byte (1 negative, 2 not a number), zigzag exponent, mantissa high and
//                low (numbers) Text, Object                number of the text or the object, from 0 the others nothing
//
// Counts, kinds, tags and numbers are written seven bits a byte, least significant first, the high bit set in all but
// the last; a number has the shortest form. The fields at the end are those encoded outside of any object. Texts and
// objects are numbered in the order in which they were met, so that equal archives are made from equal content.
#pragma once

#include <cstdint>
#include <string_view>

namespace norvik::detail {

inline constexpr std::string_view archiveMark = "NKARCH1\n";

enum class ArchiveTag : std::uint8_t { Absent, Null, False, True, Integer, Double, Decimal, Date, Text, Object };
inline constexpr std::uint64_t archiveTagCount = 10;

enum class ArchiveKind : std::uint8_t {
  Coded,
  Array,
  MutableArray,
  Dictionary,
  MutableDictionary,
  Set,
  MutableSet,
  Data,
  MutableData
};
inline constexpr std::uint64_t archiveKindCount = 9;

/// So deep may objects hold one another in an archive; it bounds the stack that coding takes.
inline constexpr unsigned greatestArchiveDepth = 512;

[[nodiscard]] constexpr std::uint64_t zigzag(std::int64_t number) noexcept {
  return (static_cast<std::uint64_t>(number) << 1) ^ static_cast<std::uint64_t>(number >> 63);
}
[[nodiscard]] constexpr std::int64_t unzigzag(std::uint64_t number) noexcept {
  return static_cast<std::int64_t>(number >> 1) ^ -static_cast<std::int64_t>(number & 1);
}

}  // namespace norvik::detail
