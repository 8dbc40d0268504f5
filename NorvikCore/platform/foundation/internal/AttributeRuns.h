// NorvikCore/platform/foundation/internal/AttributeRuns.h - which attributes the units of a text have, run by run.
//
//   AttributeRuns runs;
//   runs.append(9, none);
//   runs.change({0, 5}, [&](const Ref<NSDictionary>&) { return red; });
//   runs.at(2);                                      // {0, 5}, red
//
// Neighbours never have equal attributes: they are one run. Runs are kept as a list until the first change, because
// most texts never change. Then they become a balanced tree in which each node knows the units below it, so that
// finding, cutting and joining take the logarithm of the number of runs. The tree is balanced by chance, by numbers
// that its content has no part in.
//
// Ranges are the caller's to check. Where memory runs out or a change raises, the runs stay as they were. Confined.
#pragma once

#include "NorvikCore/platform/foundation/NSAttributedString.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace norvik::detail {

[[nodiscard]] bool sameAttributes(const Ref<NSDictionary>& a, const Ref<NSDictionary>& b);

/// Runs in order, each with its end and the number of its attributes in the list of these.
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
  /// Of runs in order; empty ones are left out, equal neighbours joined. Linear.
  explicit AttributeRuns(std::vector<AttributeRun> runs);
  /// Of runs none of which is empty or has attributes equal to the next one's, and of dictionaries that do not change.
  explicit AttributeRuns(NumberedRuns runs) noexcept : list_(std::move(runs)) {}

  /// The units of all runs.
  [[nodiscard]] NSUInteger length() const noexcept {
    if (isList()) return list_.runs.back().end;
    return root_ == none ? 0 : nodes_[root_].total;
  }
  /// How many there are.
  [[nodiscard]] std::size_t count() const noexcept {
    if (isList()) return list_.runs.size();
    return root_ == none ? 0 : nodes_[root_].count;
  }
  /// The run that holds the unit.
  [[nodiscard]] Place at(NSUInteger unit) const noexcept;
  /// The part of each run that lies in the range. Takes the time of that many look-ups.
  [[nodiscard]] std::vector<AttributeRun> part(NSRange range) const;

  void append(NSUInteger length, const Ref<NSDictionary>& attributes);
  /// The runs in place of those in the range.
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
    NSUInteger total;  ///< units of this run and of all below
    Index left, right;
    std::uint32_t count;  ///< runs below, this one included
  };

  [[nodiscard]] bool isList() const noexcept { return !list_.runs.empty(); }
  void becomeTree();
  [[nodiscard]] Index made(AttributeRun run) noexcept;
  [[nodiscard]] Index built(std::vector<AttributeRun>& runs, std::size_t from, std::size_t to) noexcept;
  void reserve(std::size_t runs);
  void free(Index tree) noexcept;
  void update(Index node) noexcept;
  [[nodiscard]] Index edge(Index tree, bool last) const noexcept;
  /// Cuts the tree before the unit. At most one node is made.
  void split(Index tree, NSUInteger unit, Index& before, Index& after) noexcept;
  [[nodiscard]] Index merged(Index before, Index after) noexcept;
  /// `before`, then `after`, the runs that meet joined where `join` says so.
  [[nodiscard]] Index joined(Index before, Index after, bool join) noexcept;
  [[nodiscard]] bool takesLeft(std::uint32_t left, std::uint32_t right) noexcept;

  NumberedRuns list_;  ///< without runs once they are a tree
  std::vector<Node> nodes_;
  std::vector<Index> free_;
  Index root_ = none;
  std::uint64_t chance_ = 0x9E3779B97F4A7C15;
};

/// Empty runs left out, equal neighbours joined.
[[nodiscard]] std::vector<AttributeRun> joinedRuns(std::vector<AttributeRun> runs);

}  // namespace norvik::detail
