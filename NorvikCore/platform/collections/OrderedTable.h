// NorvikCore/platform/collections/OrderedTable.h - the storage of dictionaries and sets: entries in the order of
// insertion, found by hash. Users need not read it.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/object/Value.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace norvik::detail {

/// Finds positions in a sequence of entries by the hashes of their keys.
///
/// Up to eight entries are found by a linear search of their hashes, which is faster than any table; more entries by
/// open addressing over positions. Removed entries stay in the sequence until the table is compacted.
class NK_EXPORT PositionIndex {
 public:
  static constexpr std::size_t notFound = ~std::size_t{0};

  /// Spreads a hash over 32 bits, because hashes of integers are often the integers themselves.
  [[nodiscard]] static std::uint32_t spread(std::size_t hash) noexcept {
    return static_cast<std::uint32_t>((hash * 0x9E3779B97F4A7C15u) >> 32);
  }

  /// The position whose hash is `hash` and for which `isEqualAt(position)` is true, or notFound.
  template <class IsEqualAt>
  [[nodiscard]] std::size_t find(std::uint32_t hash, IsEqualAt&& isEqualAt) const {
    if (slots_.empty()) {
      for (std::size_t position = 0; position < hashes_.size(); ++position) {
        if (hashes_[position] == hash && isEqualAt(position)) return position;
      }
      return notFound;
    }
    for (std::size_t at = hash & mask();; at = (at + 1) & mask()) {
      const Slot& slot = slots_[at];
      if (slot.next == 0) return notFound;
      if (slot.hash == hash && isEqualAt(std::size_t{slot.next} - 1)) return std::size_t{slot.next} - 1;
    }
  }

  /// Adds the hash of the entry at the next position.
  void append(std::uint32_t hash);
  [[nodiscard]] std::uint32_t hashAt(std::size_t position) const noexcept { return hashes_[position]; }
  void reserve(std::size_t count);
  /// For compacting: moves a position's hash to an earlier position. Afterwards keepFirst() rebuilds the index for the
  /// remaining positions.
  void move(std::size_t from, std::size_t to) noexcept { hashes_[to] = hashes_[from]; }
  void keepFirst(std::size_t count) noexcept;
  void clear() noexcept;

 private:
  static constexpr std::size_t greatestUnindexed = 8;

  /// The hash is stored beside the position, so a search reads one memory location before it reads an entry.
  struct Slot {
    std::uint32_t hash = 0;
    std::uint32_t next = 0;  ///< 0 if empty, else a position + 1
  };

  [[nodiscard]] std::size_t mask() const noexcept { return slots_.size() - 1; }
  void enter(std::size_t position) noexcept;

  std::vector<std::uint32_t> hashes_;
  std::vector<Slot> slots_;  ///< their number is a power of two
};

inline const Value& keyOf(const Value& element) noexcept { return element; }

/// Entries with distinct keys; `keyOf(entry)` returns an entry's key. An entry with an absent key has been removed.
template <class Entry>
class OrderedTable {
 public:
  [[nodiscard]] std::size_t count() const noexcept { return count_; }
  /// Includes removed entries.
  [[nodiscard]] const std::vector<Entry>& entries() const noexcept { return entries_; }

  [[nodiscard]] const Entry* find(const Value& key) const {
    const std::size_t position = positionOf(key, PositionIndex::spread(key.hash()));
    return position == PositionIndex::notFound ? nullptr : &entries_[position];
  }
  [[nodiscard]] Entry* find(const Value& key) { return const_cast<Entry*>(std::as_const(*this).find(key)); }

  /// The entry with the key of `entry`, and true if it was added by this call. An existing entry is not changed.
  std::pair<Entry*, bool> insert(Entry&& entry) {
    const std::uint32_t hash = PositionIndex::spread(keyOf(entry).hash());
    const std::size_t position = positionOf(keyOf(entry), hash);
    if (position != PositionIndex::notFound) return {&entries_[position], false};
    entries_.push_back(std::move(entry));
    try {
      index_.append(hash);
    } catch (...) {
      entries_.pop_back();
      throw;
    }
    ++count_;
    return {&entries_.back(), true};
  }

  /// Removes and returns the entry; an entry with an absent key if there is none.
  Entry remove(const Value& key) {
    const std::size_t position = positionOf(key, PositionIndex::spread(key.hash()));
    if (position == PositionIndex::notFound) return Entry();
    Entry removed = std::exchange(entries_[position], Entry());
    --count_;
    if (count_ == 0) {
      entries_.clear();
      index_.clear();
    } else if (entries_.size() > 2 * count_ + 8) {
      compact();
    }
    return removed;
  }

  /// Empties the table and returns its entries.
  [[nodiscard]] std::vector<Entry> takeAll() noexcept {
    count_ = 0;
    index_.clear();
    return std::exchange(entries_, {});
  }

  void reserve(std::size_t count) {
    entries_.reserve(count);
    index_.reserve(count);
  }

 private:
  [[nodiscard]] std::size_t positionOf(const Value& key, std::uint32_t hash) const {
    if (key.isAbsent()) return PositionIndex::notFound;  // it must not match a removed entry
    return index_.find(hash, [&](std::size_t position) { return keyOf(entries_[position]) == key; });
  }

  void compact() noexcept {
    std::size_t kept = 0;
    for (std::size_t position = 0; position < entries_.size(); ++position) {
      if (keyOf(entries_[position]).isAbsent()) continue;
      if (kept != position) {
        entries_[kept] = std::move(entries_[position]);
        index_.move(position, kept);
      }
      ++kept;
    }
    entries_.resize(kept);
    index_.keepFirst(kept);
  }

  std::vector<Entry> entries_;
  PositionIndex index_;
  std::size_t count_ = 0;
};

}  // namespace norvik::detail
