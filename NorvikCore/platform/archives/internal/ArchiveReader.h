// NorvikCore/platform/archives/internal/ArchiveReader.h - creates objects from the content of an archive, for both
// unarchivers.
#pragma once

#include "NorvikCore/platform/archives/internal/ArchiveContent.h"
#include "NorvikCore/platform/collections/NSData.h"
#include "NorvikCore/platform/object/NSCoder.h"

#include <vector>

namespace norvik {

class NSArray;
class NSDictionary;
class NSSet;

namespace detail {

/// Creates an object when it is first requested. An object that holds itself is found in the table while it is being
/// created.
class ArchiveReader {
 public:
  /// `coder` is passed to objects that decode themselves; it owns this reader. The content points into the data's
  /// bytes.
  ArchiveReader(NSCoder& coder, Ref<NSData> data, ArchiveContent content);
  ~ArchiveReader();
  ArchiveReader(const ArchiveReader&) = delete;
  ArchiveReader& operator=(const ArchiveReader&) = delete;

  /// A field of the object being decoded, or of the archive itself; null if there is none with that key.
  [[nodiscard]] const ArchivedField* field(const NSString& key) const;
  /// Whether no values without a key are left; next() returns the next one and raises if there is none.
  [[nodiscard]] bool isAtEnd() const noexcept;
  Value next();
  Value value(const ArchivedValue& archived);
  /// The number of values that were requested without a key before this call, for archives in which all have keys.
  std::size_t countUnnamed() noexcept { return places_.back().next++; }

  /// Empties the collections that were created, so that they do not retain one another. To be called only if no object
  /// of the archive was returned.
  void abandon() noexcept;

 private:
  enum class State : std::uint8_t { Unknown, BeingMade, Known, Failed };
  struct Made {
    Ref<NSObject> object;  ///< empty also for an object whose initWithCoder returned false
    State state = State::Unknown;
  };
  /// An object being decoded, or the archive itself, and the number of its values without a key that were read.
  struct Place {
    const std::vector<ArchivedField>* fields;
    const std::vector<ArchivedValue>* values;
    std::size_t next = 0;
  };
  class Nesting;

  Ref<NSObject> object(std::size_t number);
  Ref<NSObject> make(std::size_t number);
  Ref<NSObject> know(std::size_t number, Ref<NSObject> object);
  Value element(const ArchivedValue& archived);
  std::vector<Value> elementsOf(std::size_t number);
  Ref<NSObject> fill(std::size_t number, const Ref<NSArray>& array);
  Ref<NSObject> fill(std::size_t number, const Ref<NSSet>& set);
  Ref<NSObject> fill(std::size_t number, const Ref<NSDictionary>& dictionary);
  Ref<NSObject> makeCoded(std::size_t number);
  Ref<NSObject> decode(std::size_t number, const Method& operation);

  NSCoder& coder_;
  const Ref<NSData> data_;
  const ArchiveContent content_;
  std::vector<Made> made_;
  std::vector<Place> places_;  ///< of the archive itself, then of the objects being created
  unsigned depth_ = 0;
};

}  // namespace detail
}  // namespace norvik
