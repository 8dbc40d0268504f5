#include "NorvikCore/markup/internal/StyledRuns.h"

#include "NorvikCore/markup/internal/TagAttributes.h"
#include "NorvikCore/platform/collections/NSMutableDictionary.h"

#include <array>
#include <cstdint>
#include <unordered_set>
#include <utility>

namespace norvik::detail {
namespace {

using Attributes = const NSDictionary*;

struct HashOfContent {
  std::size_t operator()(const Ref<NSDictionary>& attributes) const { return attributes->hash(); }
};
struct SameContent {
  bool operator()(const Ref<NSDictionary>& a, const Ref<NSDictionary>& b) const { return a == b || a->isEqual(*b); }
};

/// Dictionaries, one of each content, and the sums of two of them.
class Combinations {
 public:
  Attributes only(const Ref<NSDictionary>& attributes) { return known_.insert(attributes->copy()).first->get(); }

  /// `present` is one of these; what `dictionary` has replaces what is of the same name.
  Attributes sum(Attributes present, const Ref<NSDictionary>& dictionary) {
    const Ref<NSDictionary> added = dictionary->copy();  // another one at each time, unless it cannot change
    Sum& last = sums_[(reinterpret_cast<std::uintptr_t>(present) / 16 * 31 +
                       reinterpret_cast<std::uintptr_t>(added.get()) / 16) %
                      sums_.size()];
    if (last.present == present && last.added == added) return last.result;
    Attributes result = present;
    if (added->count() > 0) {
      const auto both = present->mutableCopy();
      both->addEntriesFromDictionary(*added);
      result = only(both);
    }
    last = {present, added, result};
    return result;
  }

 private:
  struct Sum {
    Attributes present = nullptr;
    Ref<NSDictionary> added;
    Attributes result = nullptr;
  };

  std::unordered_set<Ref<NSDictionary>, HashOfContent, SameContent> known_;
  std::array<Sum, 64> sums_;
};

/// The entries of names, of which most texts use few.
class Entries {
 public:
  explicit Entries(const MRKTaggedStringOptions& options) noexcept : options_(options) {}

  const MRKTaggedStringAttribute* of(std::string_view name) {
    const auto first = static_cast<unsigned char>(name.front()), last = static_cast<unsigned char>(name.back());
    Entry& seen = seen_[(name.size() * 7 + first + last * 3u) % seen_.size()];
    if (seen.name != name) seen = {name, options_.attributeForTagName(textOfBytes(name))};
    return seen.entry.get();
  }

 private:
  struct Entry {
    std::string_view name;
    Ref<MRKTaggedStringAttribute> entry;
  };

  const MRKTaggedStringOptions& options_;
  std::array<Entry, 64> seen_;
};

}  // namespace

std::vector<AttributeRun> styledRuns(const MarkupScan& scan, const MRKTaggedStringOptions& options) {
  std::vector<AttributeRun> runs;
  if (scan.length == 0) return runs;
  Combinations combinations;
  Entries entries(options);
  const Attributes base = combinations.only(options.baseAttributes());
  const Attributes none = combinations.only(NSDictionary::dictionary());
  std::vector<Attributes> inside(scan.tags.size(), base);
  const auto insideOf = [&](MarkupScan::Index tag) { return tag == MarkupScan::none ? base : inside[tag]; };

  for (std::size_t i = scan.finished.size(); i-- > 0;) {
    const MarkupScan::Tag& tag = scan.tags[scan.finished[i]];
    const Attributes around = insideOf(tag.around);
    inside[scan.finished[i]] = around;
    const MRKTaggedStringAttribute* entry = entries.of(tag.name);
    if (!entry) continue;
    Ref<NSDictionary> added = entry->staticDictionary();
    if (!added && entry->dynamicAttributes()) {
      // Behind an empty tag, the unit's own tags are closed later and so are known already.
      const bool atTheEnd = tag.location == scan.length;
      const Attributes present = tag.end > tag.location ? around
                                 : atTheEnd             ? none
                                                        : insideOf(scan.stretches[tag.stretch].tag);
      added = entry->dynamicAttributes()(textOfBytes(tag.name), *tagAttributesIn(tag.rawAttributes), *present);
    }
    if (added) inside[scan.finished[i]] = combinations.sum(around, added);
  }

  runs.reserve(scan.stretches.size());
  Attributes last = nullptr;
  for (const MarkupScan::Stretch& stretch : scan.stretches) {
    const Attributes attributes = insideOf(stretch.tag);
    if (attributes == last) {
      runs.back().length += stretch.length;
    } else {
      runs.push_back({stretch.length, ref(const_cast<NSDictionary&>(*attributes))});
      last = attributes;
    }
  }
  return runs;
}

}  // namespace norvik::detail
