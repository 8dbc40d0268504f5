// NorvikCore/platform/archives/internal/ArchiveContent.h - what the bytes of an archive say, before objects are made of
// it.
#pragma once

#include "NorvikCore/platform/archives/internal/ArchiveFormat.h"
#include "NorvikCore/platform/object/Value.h"

#include <span>
#include <vector>

namespace norvik::detail {

/// A value, or the number of the object that it is.
struct ArchivedValue {
  static constexpr std::size_t noObject = ~std::size_t{0};

  Value value;
  std::size_t object = noObject;
};

struct ArchivedField {
  NSString key;
  ArchivedValue value;
};

struct ArchivedObject {
  ArchiveKind kind = ArchiveKind::Coded;
  NSString className;                  ///< of a coded object
  std::vector<ArchivedField> fields;   ///< of a coded object
  std::vector<ArchivedValue> values;   ///< of a coded object those without a key; of a collection the elements; of a
                                       ///< dictionary the keys too, each before its value
  std::span<const std::uint8_t> data;  ///< of data; lies in the archive's bytes
};

struct ArchiveContent {
  std::vector<ArchivedObject> objects;
  std::vector<ArchivedField> fields;
  std::vector<ArchivedValue> values;
};

/// Raises NSInvalidUnarchiveOperationException where the bytes are no archive of that kind. Takes linear time and
/// memory. All numbers of texts and objects are within their tables, and no object has a key twice.
[[nodiscard]] ArchiveContent parseKeyedArchive(std::span<const std::uint8_t> bytes);
[[nodiscard]] ArchiveContent parseSequentialArchive(std::span<const std::uint8_t> bytes);

[[noreturn]] void raiseUnarchive(const NSString& reason);

}  // namespace norvik::detail
