#include "Folds.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "BlockScan.h"

namespace norvik_log {
namespace {

constexpr std::int64_t minute = 60'000, hour = 60 * minute, day = 24 * hour;

std::optional<std::int64_t> wallTimeAt(const char* line, const char* end) noexcept {
  const auto time = headTime(line, end);
  return time && !time->offsetSeconds ? std::optional(time->milliseconds) : std::nullopt;
}

}  // namespace

bool Folds::mayFold(std::int64_t from, std::int64_t to) const noexcept {
  constexpr std::int64_t apart = 20 * day;  // no zone changes its offset and returns to it within this time
  return to - from > apart || clock_.offsetSeconds(from - 2 * day) != clock_.offsetSeconds(to + 2 * day);
}

void Folds::pass(std::string_view lines, std::int64_t offset) {
  const char *const begin = lines.data(), *const end = begin + lines.size();
  if (begin == end) return;
  const char* const last = lastHead(begin, end);
  const auto lastTime = wallTimeAt(last, end);
  const auto firstTime = wallTimeAt(begin, end);
  if (lastTime) {
    const std::int64_t before = last_.value_or(*lastTime), first = firstTime.value_or(before);
    if (!mayFold(std::min({before, first, *lastTime}), std::max({before, first, *lastTime}))) {
      last_ = lastTime;
      return;
    }
  }
  for (const char* at = begin; at != end;) {
    if (const auto time = wallTimeAt(at, end)) {
      const bool isBack = last_ && *time<*last_ - minute&& * time> * last_ - 3 * hour;
      if (isBack && clock_.isShownTwice(*time)) folds_.push_back({offset + (at - begin), *time});
      last_ = time;
    }
    const void* const feed = std::memchr(at, '\n', static_cast<std::size_t>(end - at));
    at = feed == nullptr ? end : static_cast<const char*>(feed) + 1;
  }
}

bool Folds::isSecondPass(std::int64_t offset, std::int64_t wallTime) const noexcept {
  return std::any_of(folds_.begin(), folds_.end(), [&](const Fold& fold) {
    return fold.offset <= offset && std::abs(fold.wallTime - wallTime) < 6 * hour;
  });
}

}  // namespace norvik_log
