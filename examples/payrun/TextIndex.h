// examples/payrun/TextIndex.h - finds the position of a text in a sequence that keeps the texts, such as a vector of
// employees with their numbers.
//
// A hash table of eight bytes a slot, a quarter to half of them in use. A std::unordered_map would keep a second copy
// of each text, and a search in it would wait for memory two or three times.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace payrun {

class TextIndex {
 public:
  /// The position of `text`; absent if it was not added. `textAt` returns the text at a position.
  template <class TextAt>
  [[nodiscard]] std::optional<std::size_t> find(std::string_view text, const TextAt& textAt) const {
    const std::uint32_t hash = hashOf(text);
    for (std::size_t i = hash & mask();; i = (i + 1) & mask()) {
      const Slot& slot = slots_[i];
      if (slot.position == none) return std::nullopt;
      if (slot.hash == hash && textAt(slot.position) == text) return slot.position;
    }
  }

  /// Adds a text that is not in the index yet.
  void add(std::string_view text, std::size_t position) {
    if (++count_ * 2 > slots_.size()) grow();
    put({hashOf(text), static_cast<std::uint32_t>(position)});
  }

 private:
  static constexpr std::uint32_t none = 0xFFFFFFFF;
  struct Slot {
    std::uint32_t hash = 0, position = none;
  };

  static std::uint32_t hashOf(std::string_view text) {
    return static_cast<std::uint32_t>(std::hash<std::string_view>()(text));
  }
  [[nodiscard]] std::size_t mask() const { return slots_.size() - 1; }  // the number of slots is a power of two

  void put(Slot slot) {
    std::size_t i = slot.hash & mask();
    while (slots_[i].position != none) i = (i + 1) & mask();
    slots_[i] = slot;
  }
  void grow() {
    for (const Slot& slot : std::exchange(slots_, std::vector<Slot>(slots_.size() * 2))) {
      if (slot.position != none) put(slot);
    }
  }

  std::vector<Slot> slots_ = std::vector<Slot>(8);
  std::size_t count_ = 0;
};

}  // namespace payrun
