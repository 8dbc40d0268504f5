// NorvikCore/platform/archives/internal/ArchiveFormat.h - the binary format of the two kinds of archive.
//
// A keyed archive stores its texts and objects in tables, so that a reader can access any of them:
//
//   archive  = "NKARCH1\n" texts objects fields
//   texts    = count, then of each its characters
//   objects  = count, then of each a kind and
//                Coded                       the class name (text), fields
//                Array, Set (or Mutable...)  count, values
//                Dictionary (or Mutable...)  count, of each entry the key (value) and its value
//                Data (or MutableData)       count, bytes
//   fields   = count, then of each: the key (text) and its value
//   value    = a tag and
//                Integer                     zigzag number
//                Double, Date                eight bytes, least significant first
//                Decimal                     a byte (1 negative, 2 not a number), zigzag exponent, two numbers: the
//                                            mantissa's high and low half
//                Text, Object                its number
//                the others                  nothing
//   text     = the number of the text, from 0; an object likewise
//
// A sequential archive stores everything in the order in which it was encoded:
//
//   archive  = "NKSEQU1\n" items
//   items    = of each its value, or the tag Key, the key (text) and its value
//   value    = as above
//   text     = at its first occurrence 0 and its characters, later its number from 1
//   object   = at its first occurrence 0 and the object as above, later its number from 1; a Coded one has items
//              and the tag End instead of fields
//
//   characters = the number of bytes and the bytes (UTF-8); for the empty text and for a text that is not well
//                formed, 0, the number of UTF-16 units and the units, two bytes each, least significant first
//
// Counts, kinds, tags and numbers are written with seven bits per byte, least significant first; the high bit is set in
// all bytes except the last. A number must have the shortest form. The fields and items outside of any object are those
// of the archive itself. Texts and objects are numbered in the order of their first occurrence, so that equal content
// gives equal archives.
#pragma once

#include <cstdint>
#include <string_view>

namespace norvik::detail {

inline constexpr std::string_view archiveMark = "NKARCH1\n";
inline constexpr std::string_view sequentialArchiveMark = "NKSEQU1\n";

enum class ArchiveTag : std::uint8_t {
  Absent,
  Null,
  False,
  True,
  Integer,
  Double,
  Decimal,
  Date,
  Text,
  Object,
  Key,  ///< this tag and the next occur in a sequential archive only
  End
};
/// Tags that begin a value come first.
inline constexpr std::uint64_t archiveValueTagCount = 10;

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

/// The greatest nesting of objects in an archive. It limits the stack that coding needs.
inline constexpr unsigned greatestArchiveDepth = 512;

[[nodiscard]] constexpr std::uint64_t zigzag(std::int64_t number) noexcept {
  return (static_cast<std::uint64_t>(number) << 1) ^ static_cast<std::uint64_t>(number >> 63);
}
[[nodiscard]] constexpr std::int64_t unzigzag(std::uint64_t number) noexcept {
  return static_cast<std::int64_t>(number >> 1) ^ -static_cast<std::int64_t>(number & 1);
}

}  // namespace norvik::detail
