// NorvikCore/platform/archives/internal/ArchiveContent.h - the parsed content of an archive, before objects are created
// from it.
#pragma once

#include "NorvikCore/platform/archives/internal/ArchiveFormat.h"
#include "NorvikCore/platform/object/Value.h"

#include <span>
#include <vector>

namespace norvik::detail {

/// A value, or the index of an object.
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
  std::vector<ArchivedValue> values;   ///< of a coded object, its values without a key; of a collection, its elements;
                                       ///< of a dictionary, each key followed by its value
  std::span<const std::uint8_t> data;  ///< of data; points into the archive's bytes
};

struct ArchiveContent {
  std::vector<ArchivedObject> objects;
  std::vector<ArchivedField> fields;
  std::vector<ArchivedValue> values;
};

/// Raises NSInvalidUnarchiveOperationException if the bytes are not an archive of that kind. Takes linear time and
/// memory. In the result, all indexes of texts and objects are within their tables, and no object has a key twice.
[[nodiscard]] ArchiveContent parseKeyedArchive(std::span<const std::uint8_t> bytes);
[[nodiscard]] ArchiveContent parseSequentialArchive(std::span<const std::uint8_t> bytes);

[[noreturn]] void raiseUnarchive(const NSString& reason);

}  // namespace norvik::detail
