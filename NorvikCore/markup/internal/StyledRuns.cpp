#include "NorvikCore/markup/internal/StyledRuns.h"

#include "NorvikCore/markup/internal/Combinations.h"
#include "NorvikCore/markup/internal/MarkupScan.h"
#include "NorvikCore/markup/internal/TagAttributes.h"
#include "NorvikCore/platform/values/Utf8.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <new>
#include <utility>

namespace norvik::detail {
namespace {

constexpr std::size_t names = 64;

/// The position of a name in a table of `names` entries. Most texts use few names.
std::size_t placeOf(std::string_view name) noexcept {
  const auto first = static_cast<unsigned char>(name.front()), last = static_cast<unsigned char>(name.back());
  return (name.size() * 7 + first + last * 3u) % names;
}

Ref<MRKTaggedStringAttribute> entryOf(std::string_view name, const MRKTaggedStringOptions& options) {
  // The name is borrowed for the duration of the call.
  return options.attributeForTagName(utf8::isAscii(name) ? NSString::borrowing(name) : textOfBytes(name));
}

/// A list of runs that is built in order. Adjacent runs with equal attributes become one.
class RunList {
 public:
  /// `sourceSize` is in bytes.
  RunList(Combinations& combinations, std::size_t sourceSize) : combinations_(combinations) {
    runs_.runs.reserve(std::min<std::size_t>(sourceSize / 8, 32));
  }

  void extendTo(NSUInteger end, Combinations::Number attributes) {
    if (end == end_) return;
    end_ = end;
    if (!runs_.runs.empty() && combinations_.areEqual(runs_.runs.back().attributes, attributes)) {
      runs_.runs.back().end = end;
    } else {
      runs_.runs.push_back({end, attributes});
    }
  }

  /// Takes the combinations; call once.
  [[nodiscard]] AttributeRuns take() {
    if (runs_.runs.empty()) return {};
    runs_.attributes = combinations_.take();
    return AttributeRuns(std::move(runs_));
  }

 private:
  Combinations& combinations_;
  NumberedRuns runs_;
  NSUInteger end_ = 0;
};

/// The attributes of tags, as long as all of them are fixed.
class FixedStyles {
 public:
  FixedStyles(const MRKTaggedStringOptions& options, std::size_t sourceSize)
      : options_(options), runs_(combinations_, sourceSize), present_(combinations_.of(options.baseAttributes())) {}

  bool open(std::string_view name, std::string_view, NSUInteger unit) {
    runs_.extendTo(unit, present_);
    around_.push_back(present_);
    if (name.empty()) return true;
    Style& style = seen_[placeOf(name)];
    if (!areSameNames(style.name, name) && !find(name, style)) return false;
    if (style.adds) present_ = combinations_.sum(present_, style.added);
    return true;
  }

  void close(NSUInteger unit) {
    runs_.extendTo(unit, present_);
    present_ = around_.back();
    around_.pop_back();
  }

  [[nodiscard]] AttributeRuns finish(NSUInteger length) {
    runs_.extendTo(length, present_);
    return runs_.take();
  }

 private:
  struct Style {
    std::string_view name;
    bool adds = false;
    Combinations::Number added = 0;
  };

  /// False if a closure has to be called.
  bool find(std::string_view name, Style& style) {
    const auto entry = entryOf(name, options_);
    const Ref<NSDictionary> fixed = entry ? entry->staticDictionary() : nullptr;
    if (entry && !fixed && entry->dynamicAttributes()) return false;
    style = {name, static_cast<bool>(fixed), fixed ? combinations_.of(fixed->copy()) : 0};
    return true;
  }

  const MRKTaggedStringOptions& options_;
  Combinations combinations_;
  RunList runs_;
  Combinations::Number present_;
  std::vector<Combinations::Number> around_;
  std::array<Style, names> seen_;
};

/// The tags of a text, and the innermost tag at each position.
class TagList {
 public:
  using Index = std::uint32_t;
  static constexpr Index none = UINT32_MAX;

  struct Tag {
    std::string_view name, rawAttributes;
    NSUInteger location = 0, end = 0;
    Index around = none;  ///< the tag around this one
    Index stretch = 0;    ///< the stretch that begins at the tag; past the end if no text follows
  };
  /// A part of the text without a tag in it; never empty.
  struct Stretch {
    NSUInteger end;
    Index tag;  ///< the innermost tag around it
  };

  std::vector<Tag> tags;        ///< in the order of opening
  std::vector<Index> finished;  ///< in the order of closing
  std::vector<Stretch> stretches;

  bool open(std::string_view name, std::string_view rawAttributes, NSUInteger unit) {
    endStretch(unit);
    if (tags.size() == none) throw std::bad_alloc();
    tags.push_back({name, rawAttributes, unit, 0, innermost_, static_cast<Index>(stretches.size())});
    innermost_ = static_cast<Index>(tags.size() - 1);
    return true;
  }

  void close(NSUInteger unit) {
    endStretch(unit);
    tags[innermost_].end = unit;
    finished.push_back(innermost_);
    innermost_ = tags[innermost_].around;
  }

  void endStretch(NSUInteger unit) {
    if (unit > (stretches.empty() ? 0 : stretches.back().end)) stretches.push_back({unit, innermost_});
  }

 private:
  Index innermost_ = none;
};

/// A cache of recent sums of present attributes and attributes that a tag adds.
class Sums {
 public:
  explicit Sums(Combinations& combinations) noexcept : combinations_(combinations) {}

  Combinations::Number of(Combinations::Number present, const Ref<NSDictionary>& added) {
    Sum& last = last_[(present * 31 + reinterpret_cast<std::uintptr_t>(added.get()) / 16) % last_.size()];
    if (!last.added || last.present != present || last.added != added)
      last = {present, added, combinations_.sum(present, added)};
    return last.result;
  }

 private:
  struct Sum {
    Combinations::Number present = 0;
    Ref<NSDictionary> added;  ///< retained, so that its address is not reused
    Combinations::Number result = 0;
  };

  Combinations& combinations_;
  std::array<Sum, 64> last_;
};

struct NamedEntry {
  std::string_view name;
  Ref<MRKTaggedStringAttribute> entry;
};

AttributeRuns runsOf(const TagList& list, NSUInteger length, const MRKTaggedStringOptions& options) {
  Combinations combinations;
  Sums sums(combinations);
  std::array<NamedEntry, names> seen;
  const Combinations::Number base = combinations.of(options.baseAttributes());
  const auto none = NSDictionary::dictionary();
  std::vector<Combinations::Number> inside(list.tags.size(), base);
  const auto insideOf = [&](TagList::Index tag) { return tag == TagList::none ? base : inside[tag]; };

  for (std::size_t i = list.finished.size(); i-- > 0;) {
    const TagList::Tag& tag = list.tags[list.finished[i]];
    Combinations::Number& result = inside[list.finished[i]];
    result = insideOf(tag.around);
    NamedEntry& known = seen[placeOf(tag.name)];
    if (!areSameNames(known.name, tag.name)) known = {tag.name, entryOf(tag.name, options)};
    if (!known.entry) continue;
    Ref<NSDictionary> added = known.entry->staticDictionary();
    if (const auto computed = added ? MRKDynamicAttributes() : known.entry->dynamicAttributes()) {
      // The unit after an empty tag is in tags that close later, so their attributes are already computed.
      const bool atTheEnd = tag.location == length;
      const Ref<NSDictionary> present = tag.end > tag.location ? combinations[result]
                                        : atTheEnd             ? none
                                                   : combinations[insideOf(list.stretches[tag.stretch].tag)];
      added = computed(textOfBytes(tag.name), *tagAttributesIn(tag.rawAttributes), *present);
    }
    if (added) result = sums.of(result, added->copy());  // a new copy each time, unless immutable
  }

  RunList runs(combinations, list.stretches.size() * 8);
  for (const TagList::Stretch& stretch : list.stretches) runs.extendTo(stretch.end, insideOf(stretch.tag));
  return runs.take();
}

}  // namespace

StyledText styledText(const NSString& source, const MRKTaggedStringOptions& options) {
  FixedStyles fixed(options, source.view().size());
  MarkupScan quick(source, fixed);
  if (quick.run()) {
    if (quick.fault()) return {{}, {}, quick.fault()};
    return {quick.text(), fixed.finish(quick.length()), {}};
  }
  TagList tags;
  MarkupScan scan(source, tags);
  (void)scan.run();
  if (scan.fault()) return {{}, {}, scan.fault()};
  const NSUInteger length = scan.length();
  tags.endStretch(length);
  if (length == 0) return {};
  return {scan.text(), runsOf(tags, length, options), {}};
}

}  // namespace norvik::detail
