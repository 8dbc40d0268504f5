#include "Merge.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <deque>

namespace norvik_log {
namespace {

using testing::ElementsAre;

/// Returns a fixed number of its messages at a time, with empty batches in between.
class Given : public LogSource {
 public:
  using Message = std::pair<std::optional<std::int64_t>, const char*>;
  Given(std::vector<Message> messages, std::size_t atOnce)
      : messages_(messages.begin(), messages.end()), atOnce_(atOnce) {}

  bool next(Batch& batch) override {
    if ((isEmptyTurn_ = !isEmptyTurn_)) return !messages_.empty();
    for (std::size_t i = 0; i < atOnce_ && !messages_.empty(); ++i) {
      Record record;
      record.bytes = messages_.front().second;
      record.time = messages_.front().first;
      batch.add(record);
      messages_.pop_front();
    }
    return !messages_.empty();
  }

 private:
  std::deque<Message> messages_;
  const std::size_t atOnce_;
  bool isEmptyTurn_ = false;
};

std::vector<std::string> merged(std::vector<std::vector<Given::Message>> sources, std::size_t atOnce) {
  std::vector<std::unique_ptr<LogSource>> given;
  for (auto& source : sources) given.push_back(std::make_unique<Given>(std::move(source), atOnce));
  Merge merge(std::move(given));
  std::vector<std::string> found;
  for (bool isMore = true; isMore;) {
    Batch batch;
    isMore = merge.next(batch);
    for (std::size_t i = 0; i < batch.size(); ++i) found.emplace_back(batch[i].bytes);
  }
  return found;
}

TEST(Merge, OrdersByTimeAndOfOneTimeByTheSource) {
  for (const std::size_t atOnce : {std::size_t{1}, std::size_t{2}, std::size_t{100}}) {
    EXPECT_THAT(merged({{{1, "a1"}, {3, "a3"}, {5, "a5"}}, {}, {{1, "c1"}, {2, "c2"}, {5, "c5"}, {9, "c9"}}}, atOnce),
                ElementsAre("a1", "c1", "c2", "a3", "a5", "c5", "c9"));
  }
}

TEST(Merge, KeepsTheOrderWithinASource) {
  EXPECT_THAT(merged({{{5, "a5"}, {1, "a1"}, {6, "a6"}}, {{2, "b2"}, {5, "b5"}}}, 1),
              ElementsAre("b2", "a5", "a1", "b5", "a6"));
}

TEST(Merge, AMessageWithoutTimeFollowsTheOneBeforeIt) {
  EXPECT_THAT(merged({{{std::nullopt, "a?"}, {5, "a5"}, {std::nullopt, "a5?"}, {7, "a7"}}, {{1, "b1"}, {6, "b6"}}}, 1),
              ElementsAre("a?", "b1", "a5", "a5?", "b6", "a7"));
}

TEST(Merge, OfNothingIsNothing) { EXPECT_TRUE(merged({}, 1).empty()); }

}  // namespace
}  // namespace norvik_log
