// NorvikCore/platform/collections/internal/CollectionAccess.h - what the collections share: letting go of what they
// hold, their texts, and filling one that others refer to already.
#pragma once

#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/collections/NSSet.h"

#include <string>

namespace norvik::detail {

/// Puts content into a collection that was just made and that nobody else can change.
struct CollectionAccess {
  static std::vector<Value>& elements(NSArray& array) noexcept {
    array.giveUpRoom();
    return array.elements_;
  }
  static OrderedTable<NSDictionary::Entry>& table(NSDictionary& dictionary) noexcept { return dictionary.table_; }
  /// Exchanges the value of the entry at that position, which is there.
  static void setValueAt(NSDictionary& dictionary, std::size_t position, Value value) noexcept {
    std::swap(const_cast<NSDictionary::Entry&>(dictionary.table_.entries()[position]).value, value);
  }
  static OrderedTable<Value>& table(NSSet& set) noexcept { return set.table_; }
};

/// Lets go of values. A chain of collections, each of which holds the next, is taken down step by step instead of by
/// ever deeper calls, so that its length is not limited by the stack.
void releaseAll(std::vector<Value> values) noexcept;
void releaseAll(std::vector<NSDictionary::Entry> entries) noexcept;

/// The hash that an element adds to that of its collection. A collection inside a collection adds only its size, so
/// that one that holds itself has a hash too.
[[nodiscard]] std::size_t elementHash(const Value& element);

/// One comparison of two collections, which may be part of a comparison of collections that hold them.
///
/// A pair that is being compared, or was found equal within the same outermost comparison, counts as equal when it is
/// met again: so collections that hold themselves can be compared, and what is shared is compared once. Collections
/// more than 1000 deep raise NSGenericException.
class Comparison {
 public:
  Comparison(const NSObject& a, const NSObject& b);
  ~Comparison();
  Comparison(const Comparison&) = delete;
  Comparison& operator=(const Comparison&) = delete;

  [[nodiscard]] bool isKnown() const noexcept { return isKnown_; }
  /// To be told the answer where it was not known.
  bool conclude(bool areEqual);

 private:
  std::pair<const NSObject*, const NSObject*> pair_;
  bool isKnown_ = false;
};

/// The text of a collection, one element a line, indented by its depth.
[[nodiscard]] NSString describeCollection(const NSObject& collection);

}  // namespace norvik::detail
