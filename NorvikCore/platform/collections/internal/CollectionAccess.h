// NorvikCore/platform/collections/internal/CollectionAccess.h - shared by the collections: releasing their content,
// their descriptions, and filling a collection that others already refer to.
#pragma once

#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/collections/NSSet.h"

#include <string>

namespace norvik::detail {

/// Fills a collection that was just made and that no other code can change yet.
struct CollectionAccess {
  static std::vector<Value>& elements(NSArray& array) noexcept {
    array.giveUpRoom();
    return array.elements_;
  }
  static OrderedTable<NSDictionary::Entry>& table(NSDictionary& dictionary) noexcept { return dictionary.table_; }
  /// Replaces the value of the entry at that position, which must exist.
  static void setValueAt(NSDictionary& dictionary, std::size_t position, Value value) noexcept {
    std::swap(const_cast<NSDictionary::Entry&>(dictionary.table_.entries()[position]).value, value);
  }
  static OrderedTable<Value>& table(NSSet& set) noexcept { return set.table_; }
};

/// Releases values. A chain of collections, each of which holds the next, is released step by step and not by nested
/// calls, so that its length is not limited by the stack.
void releaseAll(std::vector<Value> values) noexcept;
void releaseAll(std::vector<NSDictionary::Entry> entries) noexcept;

/// The hash that an element contributes to the hash of its collection. A nested collection contributes only its size,
/// so that a collection that contains itself also has a hash.
[[nodiscard]] std::size_t elementHash(const Value& element);

/// A comparison of two collections, which may be part of a comparison of collections that contain them.
///
/// Within one outermost comparison, a pair that is being compared or was found equal counts as equal when it occurs
/// again. So collections that contain themselves can be compared, and shared parts are compared once. Collections that
/// are nested more than 1000 deep raise NSGenericException.
class Comparison {
 public:
  Comparison(const NSObject& a, const NSObject& b);
  ~Comparison();
  Comparison(const Comparison&) = delete;
  Comparison& operator=(const Comparison&) = delete;

  [[nodiscard]] bool isKnown() const noexcept { return isKnown_; }
  /// Call it with the result if isKnown() is false; returns the result.
  bool conclude(bool areEqual);

 private:
  std::pair<const NSObject*, const NSObject*> pair_;
  bool isKnown_ = false;
};

/// The description of a collection, one element per line, indented by its depth.
[[nodiscard]] NSString describeCollection(const NSObject& collection);

}  // namespace norvik::detail
