#include "NorvikCore/platform/foundation/internal/ZoneRules.h"

#include "NorvikCore/platform/kernel/ReferenceDate.h"
#include "NorvikCore/platform/values/CivilDate.h"

#include <algorithm>
#include <utility>

namespace norvik::detail {
namespace {

using kernel::referenceDateInUnixSeconds;
constexpr std::int64_t widestOffset = 26 * 3600;

/// Reads big-endian numbers and byte sequences from the front of a text. After a read beyond its end, hasFailed() is
/// true.
class ByteReader {
 public:
  explicit ByteReader(std::string_view bytes) : bytes_(bytes) {}

  std::string_view take(std::size_t count) {
    if (count > bytes_.size()) {
      hasFailed_ = true;
      return {};
    }
    const std::string_view taken = bytes_.substr(0, count);
    bytes_.remove_prefix(count);
    return taken;
  }

  std::uint64_t number(std::size_t size) {
    std::uint64_t value = 0;
    for (const char byte : take(size)) value = value << 8 | static_cast<unsigned char>(byte);
    return value;
  }

  std::uint32_t count() { return static_cast<std::uint32_t>(number(4)); }
  std::uint8_t byte() { return static_cast<std::uint8_t>(number(1)); }
  std::int32_t offset() { return static_cast<std::int32_t>(count()); }
  std::int64_t time(std::size_t size) {
    const std::uint64_t value = number(size);
    return size == 8 ? static_cast<std::int64_t>(value) : static_cast<std::int32_t>(value);
  }

  [[nodiscard]] bool hasFailed() const { return hasFailed_; }
  [[nodiscard]] std::string_view rest() const { return bytes_; }

 private:
  std::string_view bytes_;
  bool hasFailed_ = false;
};

struct TzifHeader {
  char version = 0;
  std::uint32_t utIndicators = 0, standardIndicators = 0, leapSeconds = 0, changes = 0, types = 0, characters = 0;

  static std::optional<TzifHeader> read(ByteReader& reader) {
    if (reader.take(4) != "TZif") return std::nullopt;
    TzifHeader header;
    header.version = static_cast<char>(reader.byte());
    reader.take(15);
    header.utIndicators = reader.count();
    header.standardIndicators = reader.count();
    header.leapSeconds = reader.count();
    header.changes = reader.count();
    header.types = reader.count();
    header.characters = reader.count();
    if (reader.hasFailed()) return std::nullopt;
    return header;
  }

  [[nodiscard]] std::uint64_t dataSize(std::uint64_t timeSize) const {
    return std::uint64_t{changes} * (timeSize + 1) + std::uint64_t{types} * 6 + characters +
           std::uint64_t{leapSeconds} * (timeSize + 4) + standardIndicators + utIndicators;
  }

  [[nodiscard]] bool isWellFormed() const {
    return types >= 1 && types <= 256 && characters >= 1 && leapSeconds == 0 &&
           (utIndicators == 0 || utIndicators == types) && (standardIndicators == 0 || standardIndicators == types);
  }
};

bool readType(ByteReader& reader, ZoneType& type, std::uint8_t& abbreviation) {
  type.offset = reader.offset();
  const std::uint8_t isDaylight = reader.byte();
  type.isDaylight = isDaylight == 1;
  abbreviation = reader.byte();
  return isDaylight <= 1 && type.offset > -25 * 3600 && type.offset < 26 * 3600;
}

bool nameType(ZoneType& type, std::string_view names, std::size_t start) {
  if (start >= names.size()) return false;
  const std::size_t end = names.find('\0', start);
  if (end == std::string_view::npos) return false;
  type.abbreviation = names.substr(start, end - start);
  return true;
}

/// A time of the file as seconds since the reference date, limited to the range of the type.
std::int64_t instantOfFileTime(std::int64_t time) { return saturatedSum(time, -referenceDateInUnixSeconds); }

}  // namespace

std::optional<ZoneRules> ZoneRules::fromTzif(std::string_view bytes) {
  ByteReader reader(bytes);
  std::optional<TzifHeader> header = TzifHeader::read(reader);
  if (!header) return std::nullopt;
  std::size_t timeSize = 4;
  if (header->version != 0) {  // the first block repeats the part of the second one that fits 32 bits
    timeSize = 8;
    const std::uint64_t skipped = header->dataSize(4);
    if (skipped > reader.rest().size()) return std::nullopt;
    reader.take(static_cast<std::size_t>(skipped));
    header = TzifHeader::read(reader);
    if (!header) return std::nullopt;
  }
  if (!header->isWellFormed() || header->dataSize(timeSize) > reader.rest().size()) return std::nullopt;

  ZoneRules rules;
  rules.instants_.reserve(header->changes);
  for (std::uint32_t i = 0; i < header->changes; ++i) {
    const std::int64_t instant = instantOfFileTime(reader.time(timeSize));
    if (!rules.instants_.empty() && instant <= rules.instants_.back()) return std::nullopt;
    rules.instants_.push_back(instant);
  }
  rules.typeFrom_.reserve(header->changes);
  for (std::uint32_t i = 0; i < header->changes; ++i) {
    rules.typeFrom_.push_back(reader.byte());
    if (rules.typeFrom_.back() >= header->types) return std::nullopt;
  }
  rules.types_.resize(header->types);
  std::vector<std::uint8_t> abbreviations(header->types);
  for (std::uint32_t i = 0; i < header->types; ++i) {
    if (!readType(reader, rules.types_[i], abbreviations[i])) return std::nullopt;
  }
  const std::string_view names = reader.take(header->characters);
  for (std::uint32_t i = 0; i < header->types; ++i) {
    if (!nameType(rules.types_[i], names, abbreviations[i])) return std::nullopt;
  }
  reader.take(header->standardIndicators);
  reader.take(header->utIndicators);
  if (header->version == 0) return rules;

  std::string_view footer = reader.rest();
  if (footer.size() < 2 || footer.front() != '\n') return std::nullopt;
  footer.remove_prefix(1);
  const std::size_t end = footer.find('\n');
  if (end == std::string_view::npos) return std::nullopt;
  if (end > 0) {
    rules.rule_ = PosixZoneRule::parse(footer.substr(0, end));
    if (!rules.rule_) return std::nullopt;
  }
  return rules;
}

std::optional<ZoneRules> ZoneRules::fromPosix(std::string_view text) {
  ZoneRules rules;
  rules.rule_ = PosixZoneRule::parse(text);
  if (!rules.rule_) return std::nullopt;
  rules.types_.push_back(rules.rule_->standardType());
  return rules;
}

ZoneRules ZoneRules::fixed(ZoneType type) {
  ZoneRules rules;
  rules.types_.push_back(std::move(type));
  return rules;
}

ZoneRules ZoneRules::fromChanges(std::vector<ZoneType> types, const std::vector<Change>& changes) {
  ZoneRules rules;
  rules.types_ = std::move(types);
  for (const Change& change : changes) {
    rules.instants_.push_back(change.instant);
    rules.typeFrom_.push_back(change.type);
  }
  return rules;
}

const ZoneType& ZoneRules::typeAt(std::int64_t instant) const noexcept {
  if (instants_.empty() || instant >= instants_.back()) {
    if (rule_) return rule_->typeAt(instant);
    return types_[instants_.empty() ? 0 : typeFrom_.back()];
  }
  if (instant < instants_.front()) return types_.front();
  // The last change at or before the instant, by binary search without unpredictable branches.
  const std::int64_t* base = instants_.data();
  for (std::size_t count = instants_.size(); count > 1;) {
    const std::size_t half = count / 2;
    base = base[half] <= instant ? base + half : base;
    count -= half;
  }
  return types_[typeFrom_[static_cast<std::size_t>(base - instants_.data())]];
}

ZoneSpan ZoneRules::spanAt(std::int64_t instant) const noexcept {
  const auto next = std::upper_bound(instants_.begin(), instants_.end(), instant);
  ZoneSpan span{INT64_MIN, INT64_MAX, &types_.front()};
  if (next != instants_.begin()) {
    span.from = next[-1];
    span.type = &types_[typeFrom_[static_cast<std::size_t>(next - instants_.begin()) - 1]];
  }
  if (next != instants_.end()) {
    span.until = *next;
    return span;
  }
  if (!rule_) return span;
  ZoneSpan yearly = rule_->spanAt(instant);
  yearly.from = std::max(yearly.from, span.from);
  return yearly;
}

std::optional<std::int64_t> ZoneRules::nextChangeAfter(std::int64_t instant) const noexcept {
  const ZoneType& type = typeAt(instant);
  for (ZoneSpan span = spanAt(instant); span.until != INT64_MAX;) {
    const std::int64_t change = span.until;
    span = spanAt(change);
    if (*span.type != type) return change;
  }
  return std::nullopt;
}

std::int64_t ZoneRules::instantOfLocal(std::int64_t local) const noexcept {
  local = clamped(local, INT64_MAX - widestOffset);
  ZoneSpan span = spanAt(local - widestOffset);
  std::optional<std::int64_t> skipped;  // the result if the local time is skipped: by the offset before the change
  while (true) {
    const std::int64_t instant = local - span.type->offset;
    if (instant < span.until || span.until == INT64_MAX) {
      if (!skipped || instant >= span.from) return instant;
    } else if (!skipped) {
      const ZoneSpan next = spanAt(span.until);
      if (local - next.type->offset < next.from) skipped = instant;
    }
    // A change soon after a gap may make clocks show the local time after all.
    if (skipped && (span.until == INT64_MAX || span.until > local + widestOffset)) return *skipped;
    span = spanAt(span.until);
  }
}

std::int64_t ZoneRules::startOfLocalDay(std::int64_t local) const noexcept {
  local = clamped(local, INT64_MAX - 2 * widestOffset);
  ZoneSpan span = spanAt(local - widestOffset);
  while (true) {
    // If a gap covers midnight, the day begins with the span that follows the gap.
    const std::int64_t midnight = local - span.type->offset, first = midnight > span.from ? midnight : span.from;
    if (first < span.until && first < midnight + secondsPerDay) return first;
    if (span.until > local + secondsPerDay + widestOffset) return instantOfLocal(local);
    span = spanAt(span.until);
  }
}

}  // namespace norvik::detail
