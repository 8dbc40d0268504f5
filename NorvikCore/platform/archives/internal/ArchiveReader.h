// NorvikCore/platform/archives/internal/ArchiveReader.h - what both unarchivers share: making objects of what the bytes
// of an archive say.
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

/// Makes objects when they are first asked for. An object that holds itself is found in the table while it is being
/// made.
class ArchiveReader {
 public:
  /// The coder that objects decode themselves with; it owns this. The content lies in the data's bytes.
  ArchiveReader(NSCoder& coder, Ref<NSData> data, ArchiveContent content);
  ~ArchiveReader();
  ArchiveReader(const ArchiveReader&) = delete;
  ArchiveReader& operator=(const ArchiveReader&) = delete;

  /// Of the object being made, or of the archive itself; null where there is none of that key.
  [[nodiscard]] const ArchivedField* field(const NSString& key) const;
  /// Whether values without a key are left, and the next of them; raises where there is none.
  [[nodiscard]] bool isAtEnd() const noexcept;
  Value next();
  Value value(const ArchivedValue& archived);
  /// How many values were asked for without a key before; counts them in an archive that has keys for all.
  std::size_t countUnnamed() noexcept { return places_.back().next++; }

  /// Empties the collections that were made, so that none of them keep one another. For an archive of which nothing
  /// was given out.
  void abandon() noexcept;

 private:
  enum class State : std::uint8_t { Unknown, BeingMade, Known, Failed };
  struct Made {
    Ref<NSObject> object;  ///< empty also for one that refused to be decoded
    State state = State::Unknown;
  };
  /// What is being decoded: an object, or the archive itself, and how far its values without a key were read.
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
  std::vector<Place> places_;  ///< of the archive itself, then of the objects being made
  unsigned depth_ = 0;
};

}  // namespace detail
}  // namespace norvik
