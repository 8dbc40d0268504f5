#include "Filter.h"

#include <cstring>
#include <string_view>

#include "NorvikCore/logging/LogLevel.h"

namespace norvik_log {

bool Filter::admitsLevel(int flag) const noexcept {
  if (!level) return true;
  const auto isNamed = [](int number) {
    return number >= norvik::LOG_FLAG_ERROR && number <= norvik::LOG_FLAG_VERBOSE && (number & (number - 1)) == 0;
  };
  return isNamed(*level) ? isNamed(flag) && flag <= *level : flag == *level;
}

bool Filter::admitsTime(const std::optional<std::int64_t>& time) const noexcept {
  if (!since && !until) return true;
  return time && (!since || *time >= *since) && (!until || *time < *until);
}

FilterCheck::FilterCheck(const Filter& filter) : filter_(filter) {
  if (filter.text && filter.ignoresCase) {
    caselessPattern_ = std::make_unique<Pattern>(*filter.text, Pattern::Kind::Literal, true);
    caseless_.emplace(*caselessPattern_);
  }
  if (filter.pattern) pattern_.emplace(*filter.pattern);
}

bool FilterCheck::admits(const Record& record) {
  if (!filter_.admitsLevel(record.flag)) return false;
  if (filter_.thread && !admitsThread(record)) return false;
  if (!filter_.text && !pattern_) return true;
  const std::string_view text = textOf(record, held_);
  if (caseless_) {
    if (!caseless_->matches(text)) return false;
  } else if (filter_.text &&
             ::memmem(text.data(), text.size(), filter_.text->data(), filter_.text->size()) == nullptr) {
    return false;
  }
  return !pattern_ || pattern_->matches(text);
}

std::size_t FilterCheck::takeGivenUp() {
  std::size_t count = 0;
  for (std::optional<Pattern::Matcher>* const matcher : {&caseless_, &pattern_}) {
    if (*matcher) count += (*matcher)->takeGivenUp();
  }
  return count;
}

bool FilterCheck::admitsThread(const Record& record) const {
  const Names names = namesOf(record);
  if (names.thread.empty()) return false;
  return *filter_.thread == names.thread || *filter_.thread == names.label ||
         *filter_.thread == names.label + ":" + names.thread;
}

}  // namespace norvik_log
