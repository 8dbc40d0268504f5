// NorvikCore/platform/archives/internal/ArchiveWriter.h - writes values and objects as bytes, each object once, for
// both archivers. They differ in where texts and objects are written: see ArchiveFormat.h.
#pragma once

#include "NorvikCore/platform/archives/internal/ArchiveFormat.h"
#include "NorvikCore/platform/object/NSCoder.h"

#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace norvik::detail {

[[noreturn]] void raiseArchive(const NSString& reason);

void writeNumber(std::string& out, std::uint64_t number);
void writeCharacters(std::string& out, const NSString& text);
template <class Enumeration>
void writeByte(std::string& out, Enumeration value) {
  out += static_cast<char>(value);
}

class ArchiveWriter {
 public:
  ArchiveWriter(const ArchiveWriter&) = delete;
  ArchiveWriter& operator=(const ArchiveWriter&) = delete;
  virtual ~ArchiveWriter();

 protected:
  /// `coder` is passed to objects that encode themselves; it owns this writer.
  explicit ArchiveWriter(NSCoder& coder) : coder_(coder) {}

  void writeValue(std::string& out, const Value& value);
  /// Writes the object's kind and content; raises for objects nested more than 512 deep.
  void writeObject(std::string& out, const NSObject& object);

  /// Records that the object being written uses the key; raises if it has used it before.
  void useKey(const NSString& key);
  /// The number of a text or an object, from 0, and whether this is its first occurrence.
  std::pair<std::uint64_t, bool> number(const NSString& text);
  std::pair<std::uint64_t, bool> number(NSObject& object);

  /// Raises while an object is being encoded, and permanently after an object could not be encoded.
  void checkIsComplete() const;

 private:
  virtual void writeText(std::string& out, const NSString& text) = 0;
  virtual void writeReference(std::string& out, NSObject& object) = 0;
  /// Calls the object's encodeWithCoder() and writes the result.
  virtual void writeCoded(std::string& out, const NSCoding& object, NSCoder& coder) = 0;

  void writeContent(std::string& out, const NSObject& object);
  template <class Collection>
  void writeElements(std::string& out, ArchiveKind kind, const Collection& elements);
  void writeCodedObject(std::string& out, const NSObject& object);

  NSCoder& coder_;
  std::unordered_map<NSString, std::uint64_t> numberOfText_;
  std::unordered_map<const NSObject*, std::uint64_t> numberOfObject_;
  std::vector<Ref<NSObject>> objects_;          ///< retained, so that no other object gets the address of one of them
  std::vector<std::vector<NSString>> keys_{1};  ///< of the archive itself, then of the objects being written
  unsigned depth_ = 0;
  bool isComplete_ = true;
};

}  // namespace norvik::detail
