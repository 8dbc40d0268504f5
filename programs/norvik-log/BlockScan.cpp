#include "BlockScan.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "NorvikCore/logging/DDLogLineFormatter.h"
#include "NorvikCore/logging/LogLevel.h"

namespace norvik_log {
namespace {

const char* nextLine(const char* at, const char* end) noexcept {
  const void* const feed = std::memchr(at, '\n', static_cast<std::size_t>(end - at));
  return feed == nullptr ? end : static_cast<const char*>(feed) + 1;
}

const char* startOfLine(const char* begin, const char* at) noexcept {
  const void* const feed = ::memrchr(begin, '\n', static_cast<std::size_t>(at - begin));
  return feed == nullptr ? begin : static_cast<const char*>(feed) + 1;
}

std::string_view withoutLineFeed(const char* begin, const char* end) noexcept {
  if (end != begin && end[-1] == '\n') --end;
  return {begin, static_cast<std::size_t>(end - begin)};
}

constexpr std::size_t usualLine = 512;  // bytes; a limit for usual lines
constexpr std::size_t levelPlace = 25;  // the position after 2021-05-10T13:30:12.045Z and a space

}  // namespace

const char* endOfRecord(const char* at, const char* end) noexcept {
  do at = nextLine(at, end);
  while (at != end && !headTime(at, end));
  return at;
}

const char* lastHead(const char* begin, const char* end) noexcept {
  for (const char* at = end; at != begin;) {
    at = startOfLine(begin, at - 1);
    if (at != begin && headTime(at, end)) return at;
  }
  return begin;
}

Record continuationOf(const Record& record) {
  Record result;
  result.time = record.time;
  result.flag = record.flag;
  result.line = record.line;
  result.source = record.source;
  result.continued = record.continued ? record.continued : std::make_shared<const Names>(namesOf(record));
  return result;
}

Record timedRecord(std::string_view bytes, const HeadTime& time, WallClock& clock, const IsSecondPass& isSecondPass,
                   std::int64_t offset) {
  Record record = recordOf(bytes, time);
  if (time.offsetSeconds) {
    record.time = time.milliseconds - *time.offsetSeconds * std::int64_t{1000};
    return record;
  }
  const WallClock::Instants instants = clock.instants(time.milliseconds);
  const bool isSecond = instants.first != instants.second && isSecondPass(offset, time.milliseconds);
  record.time = isSecond ? instants.second : instants.first;
  return record;
}

BlockScan::BlockScan(const Filter& filter, const WallClock& clock) : check_(filter), clock_(clock) {
  std::string literal;
  if (filter.text && !filter.ignoresCase) literal = *filter.text;
  if (literal.empty() && filter.pattern) literal = filter.pattern->traits().literal;
  if (!literal.empty()) {
    searches_.emplace_back(literal);
    const std::string escaped = norvik::DDLogLineFormatter::escaped(norvik::NSString(literal)).str();
    if (escaped != literal) searches_.emplace_back(escaped);
  }
  if (!filter.level) return;
  const int flags[] = {norvik::LOG_FLAG_ERROR, norvik::LOG_FLAG_WARN,    norvik::LOG_FLAG_INFO,
                       norvik::LOG_FLAG_DEBUG, norvik::LOG_FLAG_VERBOSE, *filter.level};
  for (const int flag : flags) {
    if (!filter.admitsLevel(flag)) continue;
    for (const char initial : {levelName(flag).front(), std::to_string(flag).front(), '0'}) {  // also as a number
      levelInitials_[static_cast<unsigned char>(initial)] = true;
    }
  }
}

std::size_t BlockScan::takeGivenUp() { return check_.takeGivenUp(); }

void BlockScan::scan(std::string_view block, std::int64_t offset, const Record* continued,
                     const IsSecondPass& isSecondPass, std::string_view source, Batch& found) {
  if (block.empty()) return;
  begin_ = block.data();
  end_ = begin_ + block.size();
  offset_ = offset;
  continued_ = continued;
  isSecondPass_ = &isSecondPass;
  source_ = source;
  const Filter& filter = check_.filter();
  if (!searches_.empty()) return scanForText(found);
  if (check_.caselessText() != nullptr) return scanInPlace(*check_.caselessText(), begin_, found);
  if (check_.pattern() != nullptr && filter.pattern->traits().matchesInPlace) {
    return scanInPlace(*check_.pattern(), begin_, found);
  }
  if (filter.level) return scanForLevel(found);
  scanAll(found);
}

void BlockScan::scanForText(Batch& found) {
  // The next hit of each search; the block's end if a search has no further hit.
  std::vector<const char*> hits(searches_.size(), nullptr);
  const bool isLiteralOfPattern = !check_.filter().text;
  const std::size_t before = found.size();
  std::size_t judged = 0;
  const char* at = begin_;
  while (at != end_) {
    const char* nearest = end_;
    for (std::size_t i = 0; i < searches_.size(); ++i) {
      if (hits[i] == nullptr || hits[i] < at) {
        hits[i] = searches_[i].find(at, end_);
        if (hits[i] == nullptr) hits[i] = end_;
      }
      nearest = std::min(nearest, hits[i]);
    }
    if (nearest == end_) return;
    at = judgeAround(at, nearest, found);
    // If most hits are not admitted, the literal is too common to speed up the search, so search for the pattern
    // itself.
    constexpr std::size_t enough = 32;
    ++judged;
    const bool isInVain = judged >= enough && (found.size() - before) * 2 < judged;
    if (isInVain && isLiteralOfPattern && check_.filter().pattern->traits().matchesInPlace) {
      const bool isDense = static_cast<std::size_t>(at - begin_) < judged * usualLine;
      if (isDense) return scanInPlace(*check_.pattern(), at, found);
    }
  }
}

void BlockScan::scanInPlace(Pattern::Matcher& matcher, const char* at, Batch& found) {
  const std::string_view block(begin_, static_cast<std::size_t>(end_ - begin_));
  const char* hit = nullptr;
  const char* escape = nullptr;  // an escaped text may match although its escaped form does not
  while (at != end_) {
    const auto from = static_cast<std::size_t>(at - begin_);
    if (hit == nullptr || hit < at) {
      // If the search in the whole block takes too long, the searches in single records may still be fast.
      const std::optional<std::size_t> place = matcher.find(block, from);
      hit = place ? begin_ + std::min(*place, block.size()) : at;
    }
    if (escape == nullptr || escape < at) escape = begin_ + std::min(block.find('\\', from), block.size());
    const char* const nearest = std::min(hit, escape);
    if (nearest == end_) return;
    at = judgeAround(at, nearest, found);
  }
}

void BlockScan::scanForLevel(Batch& found) {
  const char* at = begin_;
  if (!headTime(begin_, end_)) at = judgeAround(begin_, begin_, found);
  while (at != end_) {
    const bool mayBeAdmitted = static_cast<std::size_t>(end_ - at) > levelPlace && at[levelPlace - 1] == ' ' &&
                               levelInitials_[static_cast<unsigned char>(at[levelPlace])];
    if (mayBeAdmitted) {
      if (const auto time = headTime(at, end_)) {
        const char* const end = endOfRecord(at, end_);
        judge(at, end, time, found);
        at = end;
        continue;
      }
    }
    at = nextLine(at, end_);
  }
}

void BlockScan::scanAll(Batch& found) {
  std::optional<HeadTime> time = headTime(begin_, end_);
  for (const char* at = begin_; at != end_;) {
    std::optional<HeadTime> next;
    const char* end = at;
    do {
      end = nextLine(end, end_);
      if (end != end_) next = headTime(end, end_);
    } while (end != end_ && !next);
    judge(at, end, time, found);
    time = next;
    at = end;
  }
}

const char* BlockScan::judgeAround(const char* low, const char* at, Batch& found) {
  const char* line = startOfLine(low, at);
  std::optional<HeadTime> time = headTime(line, end_);
  while (!time && line != low) {
    line = startOfLine(low, line - 1);
    time = headTime(line, end_);
  }
  const char* const end = endOfRecord(at, end_);
  judge(line, end, time, found);
  return end;
}

void BlockScan::judge(const char* begin, const char* end, const std::optional<HeadTime>& time, Batch& found) {
  const std::string_view bytes = withoutLineFeed(begin, end);
  Record record;
  if (time) {
    record = timedRecord(bytes, *time, clock_, *isSecondPass_, offset_ + (begin - begin_));
  } else {
    if (continued_ != nullptr) record = *continued_;
    record.bytes = bytes;
  }
  record.source = source_;
  if (check_.filter().admitsTime(record.time) && check_.admits(record)) found.add(record);
}

}  // namespace norvik_log
