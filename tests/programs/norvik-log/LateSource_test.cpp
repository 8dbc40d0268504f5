#include "LateSource.h"

#include <gtest/gtest.h>

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <utility>

namespace norvik_log {
namespace {

/// The entries of a database, and whether it answers. Shared with the test's thread.
class Server {
 public:
  void add(const std::string& text) {
    change([&] { texts_.push_back(text); });
  }
  void setAnswering(bool isAnswering) {
    change([&] { isAnswering_ = isAnswering; });
  }
  void fail() {
    change([&] { hasFailed_ = true; });
  }
  void stop() {
    change([&] { isStopped_ = true; });
  }

  void awaitAnswer() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return isAnswering_ || isStopped_; });
    if (hasFailed_) throw std::runtime_error("failed");
  }
  bool take(Batch& batch) {
    const std::lock_guard lock(mutex_);
    if (texts_.empty() || isStopped_) return false;
    Record record;
    record.bytes = texts_.front();
    batch.add(record);
    texts_.pop_front();
    return true;
  }

 private:
  template <class Change>
  void change(Change&& makeIt) {
    const std::lock_guard lock(mutex_);
    makeIt();
    changed_.notify_all();
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<std::string> texts_;
  bool isAnswering_ = true, hasFailed_ = false, isStopped_ = false;
};

class ServerSource : public DatabaseSource {
 public:
  explicit ServerSource(std::shared_ptr<Server> server) : server_(std::move(server)) {}
  void lookAgain() override { server_->awaitAnswer(); }
  bool next(Batch& batch) override { return server_->take(batch); }
  void stop() noexcept override { server_->stop(); }

 private:
  const std::shared_ptr<Server> server_;
};

class LateSourceTest : public testing::Test {
 protected:
  /// The result of one round: each text and a space.
  std::string round() {
    source_.lookAgain();
    std::string texts;
    for (Batch batch; source_.next(batch); batch = Batch()) {
      for (std::size_t i = 0; i < batch.size(); ++i) texts += std::string(batch[i].bytes) + " ";
    }
    return texts;
  }
  /// Repeats rounds until there is a text.
  std::string nextText() {
    std::string texts;
    while (texts.empty()) texts = round();
    return texts;
  }

  const std::shared_ptr<Server> server_ = std::make_shared<Server>();
  LateSource source_{std::make_unique<ServerSource>(server_)};
};

TEST_F(LateSourceTest, WhatIsAnsweredInTimeIsOfTheRound) {
  server_->add("a");
  server_->add("b");
  EXPECT_EQ(round(), "a b ");
  EXPECT_EQ(round(), "");
  server_->add("c");
  EXPECT_EQ(round(), "c ");
}

TEST_F(LateSourceTest, WhatComesLateIsOfALaterRoundOnce) {
  server_->add("a");
  EXPECT_EQ(round(), "a ");
  server_->setAnswering(false);
  server_->add("b");
  EXPECT_EQ(round(), "");  // after two seconds
  for (int i = 0; i < 1000; ++i) EXPECT_EQ(round(), "");
  server_->setAnswering(true);
  EXPECT_EQ(nextText(), "b ");
  EXPECT_EQ(round(), "");
}

TEST_F(LateSourceTest, MoreThanIsHeldIsHandedOutInOrder) {
  std::string expected;
  for (int i = 0; i < 20; ++i) {
    server_->add(std::string(1 << 20, static_cast<char>('a' + i)));
    expected += std::string(1 << 20, static_cast<char>('a' + i)) + " ";
  }
  EXPECT_TRUE(round() == expected);
}

TEST_F(LateSourceTest, AFailureIsThatOfTheRound) {
  server_->fail();
  source_.lookAgain();
  Batch batch;
  EXPECT_THROW(source_.next(batch), std::runtime_error);
}

TEST(LateSource, ItsEndWaitsForNoAnswerAndNotUntilAllIsTaken) {
  for (const bool isAnswering : {false, true}) {
    const auto server = std::make_shared<Server>();
    server->setAnswering(isAnswering);
    for (int i = 0; i < 20; ++i) server->add(std::string(1 << 20, 'x'));
    LateSource source(std::make_unique<ServerSource>(server));
    source.lookAgain();
    Batch batch;
    EXPECT_EQ(source.next(batch), isAnswering);
  }
}

}  // namespace
}  // namespace norvik_log
