// NorvikCore/platform/foundation/internal/AttributeRuns.h - the attributes of the units of a text, as runs.
//
//   AttributeRuns runs;
//   runs.append(9, none);
//   runs.change({0, 5}, [&](const Ref<NSDictionary>&) { return red; });
//   runs.at(2);                                      // {0, 5}, red
//
// Neighbouring runs never have equal attributes, because they would be joined. Runs are stored as a list until the
// first change, because most texts never change. Then they become a balanced tree in which each node stores the number
// of units below it, so that finding, cutting and joining take time logarithmic in the number of runs. The tree is
// balanced by pseudo-random numbers that do not depend on its content.
//
// The caller must check ranges. If memory runs out or a change raises, the runs are unchanged. Confined.
#pragma once

#include "NorvikCore/platform/foundation/NSAttributedString.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace norvik::detail {

[[nodiscard]] bool sameAttributes(const Ref<NSDictionary>& a, const Ref<NSDictionary>& b);

/// Runs in order. Each has its end and the index of its attributes in `attributes`.
struct NumberedRuns {
  struct Run {
    NSUInteger end;
    std::uint32_t attributes;
  };

  std::vector<Ref<NSDictionary>> attributes;
  std::vector<Run> runs;
};

class AttributeRuns {
 public:
  struct Place {
    NSRange range;
    const Ref<NSDictionary>& attributes;  ///< valid until the next change
  };

  AttributeRuns() = default;
  /// From runs in order. Empty runs are left out, and neighbours with equal attributes are joined. Linear.
  explicit AttributeRuns(std::vector<AttributeRun> runs);
  /// From runs that are not empty and whose neighbours have unequal attributes, and from immutable dictionaries.
  explicit AttributeRuns(NumberedRuns runs) noexcept : list_(std::move(runs)) {}

  /// The number of units in all runs.
  [[nodiscard]] NSUInteger length() const noexcept {
    if (isList()) return list_.runs.back().end;
    return root_ == none ? 0 : nodes_[root_].total;
  }
  /// The number of runs.
  [[nodiscard]] std::size_t count() const noexcept {
    if (isList()) return list_.runs.size();
    return root_ == none ? 0 : nodes_[root_].count;
  }
  /// The run that holds the unit.
  [[nodiscard]] Place at(NSUInteger unit) const noexcept;
  /// The part of each run that lies in the range. Costs one look-up per run.
  [[nodiscard]] std::vector<AttributeRun> part(NSRange range) const;

  void append(NSUInteger length, const Ref<NSDictionary>& attributes);
  /// Replaces the runs in the range by the given ones.
  void replace(NSRange range, std::vector<AttributeRun> runs);
  /// Gives each run in the range the attributes that `change(present attributes)` returns.
  template <class Change>
  void change(NSRange range, Change&& change) {
    std::vector<AttributeRun> runs = part(range);
    for (AttributeRun& run : runs) run.attributes = change(run.attributes);
    replace(range, std::move(runs));
  }

 private:
  using Index = std::uint32_t;
  static constexpr Index none = UINT32_MAX;

  struct Node {
    AttributeRun run;
    NSUInteger total;  ///< units of this run and of all runs below
    Index left, right;
    std::uint32_t count;  ///< runs below, including this one
  };

  [[nodiscard]] bool isList() const noexcept { return !list_.runs.empty(); }
  void becomeTree();
  [[nodiscard]] Index made(AttributeRun run) noexcept;
  [[nodiscard]] Index built(std::vector<AttributeRun>& runs, std::size_t from, std::size_t to) noexcept;
  void reserve(std::size_t runs);
  void free(Index tree) noexcept;
  void update(Index node) noexcept;
  [[nodiscard]] Index edge(Index tree, bool last) const noexcept;
  /// Cuts the tree before the unit. Creates one node at most.
  void split(Index tree, NSUInteger unit, Index& before, Index& after) noexcept;
  [[nodiscard]] Index merged(Index before, Index after) noexcept;
  /// `before` followed by `after`. If `join` is true, the two runs that meet become one.
  [[nodiscard]] Index joined(Index before, Index after, bool join) noexcept;
  [[nodiscard]] bool takesLeft(std::uint32_t left, std::uint32_t right) noexcept;

  NumberedRuns list_;  ///< has no runs once they are in the tree
  std::vector<Node> nodes_;
  std::vector<Index> free_;
  Index root_ = none;
  std::uint64_t chance_ = 0x9E3779B97F4A7C15;
};

/// Without empty runs; neighbours with equal attributes are joined.
[[nodiscard]] std::vector<AttributeRun> joinedRuns(std::vector<AttributeRun> runs);

}  // namespace norvik::detail
