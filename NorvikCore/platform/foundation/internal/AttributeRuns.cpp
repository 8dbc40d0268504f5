#include "NorvikCore/platform/foundation/internal/AttributeRuns.h"

#include <algorithm>
#include <iterator>
#include <new>
#include <utility>

namespace norvik::detail {

bool sameAttributes(const Ref<NSDictionary>& a, const Ref<NSDictionary>& b) { return a == b || a->isEqual(*b); }

std::vector<AttributeRun> joinedRuns(std::vector<AttributeRun> runs) {
  std::size_t kept = 0;
  for (std::size_t i = 0; i < runs.size(); ++i) {
    if (runs[i].length == 0) continue;
    if (kept > 0 && sameAttributes(runs[kept - 1].attributes, runs[i].attributes)) {
      runs[kept - 1].length += runs[i].length;
    } else {
      if (kept != i) runs[kept] = std::move(runs[i]);
      ++kept;
    }
  }
  runs.resize(kept);
  return runs;
}

AttributeRuns::AttributeRuns(std::vector<AttributeRun> runs) {
  runs = joinedRuns(std::move(runs));
  if (runs.size() >= none) throw std::bad_alloc();
  list_.attributes.reserve(runs.size());
  list_.runs.reserve(runs.size());
  NSUInteger end = 0;
  for (AttributeRun& run : runs) {
    end += run.length;
    list_.runs.push_back({end, static_cast<std::uint32_t>(list_.attributes.size())});
    list_.attributes.push_back(std::move(run.attributes));
  }
}

void AttributeRuns::becomeTree() {
  if (!isList()) return;
  std::vector<AttributeRun> runs = part({0, length()});
  reserve(runs.size());
  root_ = built(runs, 0, runs.size());
  // Released last, because an object that is destroyed by the release may read the text.
  const NumberedRuns list = std::exchange(list_, {});
}

AttributeRuns::Place AttributeRuns::at(NSUInteger unit) const noexcept {
  if (isList()) {
    const auto run = std::ranges::upper_bound(list_.runs, unit, {}, &NumberedRuns::Run::end);
    const NSUInteger start = run == list_.runs.begin() ? 0 : std::prev(run)->end;
    return {{start, run->end - start}, list_.attributes[run->attributes]};
  }
  NSUInteger start = 0;
  Index here = root_;
  for (;;) {
    const Node& node = nodes_[here];
    const NSUInteger before = node.left == none ? 0 : nodes_[node.left].total;
    if (unit - start < before) {
      here = node.left;
      continue;
    }
    start += before;
    if (unit - start < node.run.length) return {{start, node.run.length}, node.run.attributes};
    start += node.run.length;
    here = node.right;
  }
}

std::vector<AttributeRun> AttributeRuns::part(NSRange range) const {
  std::vector<AttributeRun> runs;
  const NSUInteger end = NSMaxRange(range);
  for (NSUInteger unit = range.location; unit < end;) {
    const Place place = at(unit);
    const NSUInteger to = std::min(end, NSMaxRange(place.range));
    runs.push_back({to - unit, place.attributes});
    unit = to;
  }
  return runs;
}

void AttributeRuns::append(NSUInteger length, const Ref<NSDictionary>& attributes) {
  if (length == 0) return;
  becomeTree();
  const bool join = root_ != none && sameAttributes(nodes_[edge(root_, true)].run.attributes, attributes);
  reserve(1);
  root_ = joined(root_, made({length, attributes}), join);
}

void AttributeRuns::replace(NSRange range, std::vector<AttributeRun> runs) {
  runs = joinedRuns(std::move(runs));
  if (range.length == 0 && runs.empty()) return;
  becomeTree();
  const NSUInteger end = NSMaxRange(range);
  const Ref<NSDictionary> before = range.location > 0 ? at(range.location - 1).attributes : nullptr;
  const Ref<NSDictionary> after = end < length() ? at(end).attributes : nullptr;
  const Ref<NSDictionary> first = runs.empty() ? after : runs.front().attributes;
  const bool joinBefore = before && first && sameAttributes(before, first);
  const bool joinAfter = !runs.empty() && after && sameAttributes(runs.back().attributes, after);
  // The replaced attributes are released last, because an object that is destroyed by the release may read the text.
  const std::vector<AttributeRun> replaced = part(range);
  reserve(runs.size() + 2);
  // Nothing raises after this point.
  Index head, middle, tail;
  split(root_, end, middle, tail);
  split(middle, range.location, head, middle);
  free(middle);
  middle = built(runs, 0, runs.size());
  root_ = middle == none ? joined(head, tail, joinBefore) : joined(joined(head, middle, joinBefore), tail, joinAfter);
}

void AttributeRuns::reserve(std::size_t runs) {
  if (free_.size() >= runs) return;
  const std::size_t needed = nodes_.size() + runs - free_.size();
  if (needed >= none) throw std::bad_alloc();
  if (needed > nodes_.capacity()) nodes_.reserve(std::max(needed, 2 * nodes_.capacity()));
  free_.reserve(nodes_.capacity());
}

AttributeRuns::Index AttributeRuns::made(AttributeRun run) noexcept {
  const NSUInteger length = run.length;
  Node node{std::move(run), length, none, none, 1};
  if (free_.empty()) {
    nodes_.push_back(std::move(node));
    return static_cast<Index>(nodes_.size() - 1);
  }
  const Index place = free_.back();
  free_.pop_back();
  nodes_[place] = std::move(node);
  return place;
}

AttributeRuns::Index AttributeRuns::built(std::vector<AttributeRun>& runs, std::size_t from, std::size_t to) noexcept {
  if (from == to) return none;
  const std::size_t middle = from + (to - from) / 2;
  const Index node = made(std::move(runs[middle]));
  nodes_[node].left = built(runs, from, middle);
  nodes_[node].right = built(runs, middle + 1, to);
  update(node);
  return node;
}

void AttributeRuns::free(Index tree) noexcept {
  if (tree == none) return;
  free(nodes_[tree].left);
  free(nodes_[tree].right);
  nodes_[tree].run.attributes = nullptr;
  free_.push_back(tree);
}

void AttributeRuns::update(Index node) noexcept {
  Node& self = nodes_[node];
  self.total = self.run.length;
  self.count = 1;
  for (const Index below : {self.left, self.right}) {
    if (below == none) continue;
    self.total += nodes_[below].total;
    self.count += nodes_[below].count;
  }
}

AttributeRuns::Index AttributeRuns::edge(Index tree, bool last) const noexcept {
  for (;;) {
    const Index next = last ? nodes_[tree].right : nodes_[tree].left;
    if (next == none) return tree;
    tree = next;
  }
}

void AttributeRuns::split(Index tree, NSUInteger unit, Index& before, Index& after) noexcept {
  if (tree == none) {
    before = after = none;
    return;
  }
  const Index left = nodes_[tree].left, right = nodes_[tree].right;
  const NSUInteger start = left == none ? 0 : nodes_[left].total;
  const NSUInteger length = nodes_[tree].run.length;
  if (unit <= start) {
    Index rest;
    split(left, unit, before, rest);
    nodes_[tree].left = rest;
    update(tree);
    after = tree;
  } else if (unit >= start + length) {
    Index rest;
    split(right, unit - start - length, rest, after);
    nodes_[tree].right = rest;
    update(tree);
    before = tree;
  } else {
    const Index second = made({start + length - unit, nodes_[tree].run.attributes});
    nodes_[tree].run.length = unit - start;
    nodes_[tree].right = none;
    update(tree);
    before = tree;
    after = merged(second, right);
  }
}

bool AttributeRuns::takesLeft(std::uint32_t left, std::uint32_t right) noexcept {
  chance_ ^= chance_ << 13;
  chance_ ^= chance_ >> 7;
  chance_ ^= chance_ << 17;
  return (chance_ >> 32) * (std::uint64_t{left} + right) >> 32 < left;
}

AttributeRuns::Index AttributeRuns::merged(Index before, Index after) noexcept {
  if (before == none) return after;
  if (after == none) return before;
  if (takesLeft(nodes_[before].count, nodes_[after].count)) {
    const Index below = merged(nodes_[before].right, after);
    nodes_[before].right = below;
    update(before);
    return before;
  }
  const Index below = merged(before, nodes_[after].left);
  nodes_[after].left = below;
  update(after);
  return after;
}

AttributeRuns::Index AttributeRuns::joined(Index before, Index after, bool join) noexcept {
  if (!join || before == none || after == none) return merged(before, after);
  const NSUInteger more = nodes_[edge(after, false)].run.length;
  Index first, rest;
  split(after, more, first, rest);
  free(first);
  for (Index node = before; node != none; node = nodes_[node].right) {
    nodes_[node].total += more;
    if (nodes_[node].right == none) nodes_[node].run.length += more;
  }
  return merged(before, rest);
}

}  // namespace norvik::detail
