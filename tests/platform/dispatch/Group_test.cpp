#include "NorvikCore/platform/dispatch/Group.h"

#include "NorvikCore/platform/dispatch/Semaphore.h"
#include "NorvikCore/platform/values/Date.h"
#include "NorvikCore/platform/values/NSException.h"
#include "tests/platform/dispatch/Watchdog.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace norvik {
namespace {

class Group : public test::WatchedTest {};

TEST_F(Group, HeaderExample) {
  struct Department {
    int total = 0;
    void sumUp() { total = 100; }
  };
  std::vector<Department> departments(5);
  auto queue = dispatch_queue_create("sums", DISPATCH_QUEUE_CONCURRENT);
  auto group = dispatch_group_create();
  for (auto& department : departments) dispatch_group_async(group, queue, [&] { department.sumUp(); });
  dispatch_group_wait(group, DISPATCH_TIME_FOREVER);
  for (const auto& department : departments) EXPECT_EQ(department.total, 100);
}

TEST_F(Group, AnEmptyGroupIsNotWaitedFor) {
  auto group = dispatch_group_create();
  EXPECT_EQ(dispatch_group_wait(group, DISPATCH_TIME_FOREVER), 0);
  EXPECT_EQ(dispatch_group_wait(group, DISPATCH_TIME_NOW), 0);
}

TEST_F(Group, AWaitGivesUpAtItsTime) {
  auto group = dispatch_group_create();
  dispatch_group_enter(group);
  EXPECT_NE(dispatch_group_wait(group, DISPATCH_TIME_NOW), 0);
  EXPECT_NE(dispatch_group_wait(group, dispatch_time(DISPATCH_TIME_NOW, NSEC_PER_MSEC)), 0);
  EXPECT_NE(dispatch_group_wait(group, dispatch_walltime(nullptr, NSEC_PER_MSEC)), 0);
  EXPECT_NE(dispatch_group_wait(group, std::chrono::system_clock::now() + std::chrono::milliseconds(1)), 0);
  EXPECT_NE(dispatch_group_wait(group, Date(std::chrono::system_clock::now())), 0);
  dispatch_group_leave(group);
  EXPECT_EQ(dispatch_group_wait(group, DISPATCH_TIME_NOW), 0);
}

TEST_F(Group, AWaitMayBeLimitedByADuration) {
  auto group = dispatch_group_create();
  EXPECT_EQ(dispatch_group_wait(group, std::chrono::hours::max()), 0);
  dispatch_group_enter(group);
  EXPECT_NE(dispatch_group_wait(group, std::chrono::milliseconds(1)), 0);
  dispatch_group_leave(group);
  EXPECT_EQ(dispatch_group_wait(group, std::chrono::milliseconds(1)), 0);
}

TEST_F(Group, EverybodyWhoWaitsIsReleased) {
  auto group = dispatch_group_create();
  dispatch_group_enter(group);
  std::atomic<int> waiting{0};
  std::atomic<int> released{0};
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      ++waiting;
      dispatch_group_wait(group, DISPATCH_TIME_FOREVER);
      ++released;
    });
  }
  while (waiting < 4) std::this_thread::yield();
  EXPECT_EQ(released.load(), 0);
  dispatch_group_leave(group);
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(released.load(), 4);
}

TEST_F(Group, AGroupCanBeFilledAgain) {
  auto group = dispatch_group_create();
  auto queue = dispatch_queue_create(nullptr, DISPATCH_QUEUE_CONCURRENT);
  std::atomic<int> runs{0};
  for (int round = 1; round <= 500; ++round) {
    for (int i = 0; i < 3; ++i) dispatch_group_async(group, queue, [&] { ++runs; });
    ASSERT_EQ(dispatch_group_wait(group, DISPATCH_TIME_FOREVER), 0);
    ASSERT_EQ(runs.load(), 3 * round);
  }
}

TEST_F(Group, ABlockHasBeenDestroyedWhenTheGroupIsEmpty) {
  auto group = dispatch_group_create();
  auto queue = dispatch_queue_create(nullptr);
  for (int round = 0; round < 200; ++round) {
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> weak = held;
    dispatch_group_async(group, queue, [held = std::move(held)] {});
    dispatch_group_wait(group, DISPATCH_TIME_FOREVER);
    ASSERT_TRUE(weak.expired());
  }
}

TEST_F(Group, NotificationsRunInOrderOnceTheGroupIsEmpty) {
  auto group = dispatch_group_create();
  auto queue = dispatch_queue_create(nullptr);
  std::string seen;
  dispatch_group_enter(group);
  dispatch_group_notify(group, queue, [&] { seen += "b"; });
  dispatch_group_notify(group, queue, [&] { seen += "c"; });
  dispatch_sync(queue, [&] { seen += "a"; });
  dispatch_group_leave(group);
  dispatch_sync(queue, [] {});
  EXPECT_EQ(seen, "abc");
  dispatch_group_enter(group);
  dispatch_group_leave(group);
  dispatch_sync(queue, [] {});
  EXPECT_EQ(seen, "abc") << "a notification runs once";
}

TEST_F(Group, ANotificationOfAnEmptyGroupRunsAtOnce) {
  auto done = dispatch_semaphore_create(0);
  dispatch_group_notify(dispatch_group_create(), dispatch_get_global_queue(), [&] { dispatch_semaphore_signal(done); });
  EXPECT_EQ(dispatch_semaphore_wait(done, DISPATCH_TIME_FOREVER), 0);
}

TEST_F(Group, AnEmptyHandleRaises) {
  const dispatch_group_t none;
  EXPECT_THROW(dispatch_group_enter(none), NSException);
  EXPECT_THROW(dispatch_group_leave(none), NSException);
  EXPECT_THROW(dispatch_group_wait(none, DISPATCH_TIME_NOW), NSException);
  EXPECT_THROW(dispatch_group_async(none, dispatch_get_global_queue(), [] {}), NSException);
  EXPECT_THROW(dispatch_group_notify(none, dispatch_get_global_queue(), [] {}), NSException);
}

class GroupDeathTest : public test::WatchedDeathTest {};

TEST_F(GroupDeathTest, LeavingAnEmptyGroupAborts) {
  EXPECT_DEATH(dispatch_group_leave(dispatch_group_create()), "BUG: dispatch_group_leave without");
}

}  // namespace
}  // namespace norvik
