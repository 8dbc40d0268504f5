#include "NorvikCore/platform/dispatch/Item.h"

#include "NorvikCore/platform/dispatch/Queue.h"
#include "NorvikCore/platform/dispatch/Semaphore.h"
#include "tests/platform/dispatch/Watchdog.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace norvik {
namespace {

class Item : public test::WatchedTest {};

std::vector<std::string> written;

struct Line : detail::Item {
  explicit Line(std::string t) : text(std::move(t)) { run = &write; }
  std::string text;

  /// Writes a run of lines as one entry, separated by blanks.
  static void write(detail::Item* item, detail::Cursor& cursor) {
    std::string entry;
    do {
      const std::unique_ptr<Line> line(static_cast<Line*>(item));
      entry += (entry.empty() ? "" : " ") + line->text;
    } while ((item = cursor.next()) != nullptr);
    written.push_back(entry);
  }
};

struct OtherLine : detail::Item {
  explicit OtherLine(std::string t) : text(std::move(t)) { run = &write; }
  std::string text;
  static void write(detail::Item* item, detail::Cursor&) {
    const std::unique_ptr<OtherLine> line(static_cast<OtherLine*>(item));
    written.push_back("[" + line->text + "]");
  }
};

void post(const dispatch_queue_t& queue, const char* text) {
  detail::dispatch_async_run(queue, new Line(text), detail::Delivery::relaxed);
}

TEST_F(Item, HeaderExample) {
  written.clear();
  auto queue = dispatch_queue_create(nullptr);
  auto* const line = new Line("Paid 1,234.50");
  line->run = &Line::write;
  detail::dispatch_async_run(queue, line, detail::Delivery::relaxed);
  dispatch_sync(queue, [] {});
  EXPECT_EQ(written, (std::vector<std::string>{"Paid 1,234.50"}));
}

TEST_F(Item, ARunOfItemsOfOneKindIsHandedOverAtOnce) {
  written.clear();
  auto queue = dispatch_queue_create(nullptr);
  dispatch_sync(queue, [&] {
    for (const char* text : {"a", "b", "c"}) post(queue, text);
  });
  dispatch_sync(queue, [] {});
  EXPECT_EQ(written, (std::vector<std::string>{"a b c"}));
}

TEST_F(Item, ARunEndsWhereSomethingElseStandsBetween) {
  written.clear();
  auto queue = dispatch_queue_create(nullptr);
  dispatch_sync(queue, [&] {
    post(queue, "a");
    post(queue, "b");
    dispatch_async(queue, [] { written.push_back("(block)"); });
    post(queue, "c");
    detail::dispatch_async_run(queue, new OtherLine("d"), detail::Delivery::prompt);
    post(queue, "e");
    post(queue, "f");
  });
  dispatch_sync(queue, [] {});
  EXPECT_EQ(written, (std::vector<std::string>{"a b", "(block)", "c", "[d]", "e f"}));
}

TEST_F(Item, ARunEndsAtAThreadThatWaitsForItsTurn) {
  // The waiting thread gets in between "a" and "b", or it is late and comes after both.
  int between = 0;
  for (int round = 0; round < 200; ++round) {
    written.clear();
    auto queue = dispatch_queue_create(nullptr);
    std::thread waiter;
    std::string seen;
    std::atomic<bool> started{false};
    dispatch_sync(queue, [&] {
      post(queue, "a");
      waiter = std::thread([&] {
        started = true;
        dispatch_sync(queue, [&] { seen = written.back(); });
      });
      while (!started) std::this_thread::yield();
      for (int i = 0; i < 20; ++i) std::this_thread::yield();
      post(queue, "b");
    });
    waiter.join();
    dispatch_sync(queue, [] {});
    if (seen == "a") {
      ++between;
      ASSERT_EQ(written, (std::vector<std::string>{"a", "b"}));
    } else {
      ASSERT_EQ(seen, "a b");
      ASSERT_EQ(written, (std::vector<std::string>{"a b"}));
    }
  }
  EXPECT_GT(between, 0);
}

TEST_F(Item, ItemsThatArriveDuringARunMayJoinIt) {
  written.clear();
  auto queue = dispatch_queue_create(nullptr);
  struct Poster : detail::Item {
    dispatch_queue_t queue;
    dispatch_semaphore_t done;
    std::string entry;
    static void write(detail::Item* item, detail::Cursor& cursor) {
      std::unique_ptr<Poster> first(static_cast<Poster*>(item));
      first->entry = "1";
      for (int i = 2; i <= 3; ++i) {
        auto* next = new Poster;
        next->run = &write;
        next->queue = first->queue;
        detail::dispatch_async_run(first->queue, next, detail::Delivery::relaxed);
        if (detail::Item* joined = cursor.next()) {
          first->entry += std::to_string(i);
          delete static_cast<Poster*>(joined);
        }
      }
      written.push_back(first->entry);
      dispatch_semaphore_signal(first->done);
    }
  };
  auto* poster = new Poster;
  poster->run = &Poster::write;
  poster->queue = queue;
  poster->done = dispatch_semaphore_create(0);
  const dispatch_semaphore_t done = poster->done;
  detail::dispatch_async_run(queue, poster, detail::Delivery::prompt);
  dispatch_semaphore_wait(done, DISPATCH_TIME_FOREVER);
  EXPECT_EQ(written, (std::vector<std::string>{"123"}));
}

TEST_F(Item, OnAConcurrentQueueEachItemComesAlone) {
  written.clear();
  auto serial = dispatch_queue_create(nullptr);
  auto queue = dispatch_queue_create(nullptr, DISPATCH_QUEUE_CONCURRENT, serial);  // one at a time, for the test's list
  dispatch_sync(queue, [&] {
    for (const char* text : {"a", "b"}) post(queue, text);
  });
  dispatch_barrier_sync(queue, [] {});
  EXPECT_EQ(written, (std::vector<std::string>{"a", "b"}));
}

TEST_F(Item, RunsOfManyProducersLoseNothingAndKeepEachProducersOrder) {
  struct Numbered : detail::Item {
    std::size_t producer = 0;
    int number = 0;
  };
  static std::vector<std::vector<int>> seen;
  seen.assign(4, {});
  auto queue = dispatch_queue_create(nullptr);
  std::vector<std::thread> producers;
  for (std::size_t p = 0; p < 4; ++p) {
    producers.emplace_back([&queue, p] {
      for (int i = 0; i < 5000; ++i) {
        auto* item = new Numbered;
        item->producer = p;
        item->number = i;
        item->run = [](detail::Item* first, detail::Cursor& cursor) {
          do {
            const std::unique_ptr<Numbered> numbered(static_cast<Numbered*>(first));
            seen[numbered->producer].push_back(numbered->number);
          } while ((first = cursor.next()) != nullptr);
        };
        detail::dispatch_async_run(queue, item, detail::Delivery::relaxed);
        if (i % 100 == 0) dispatch_sync(queue, [] {});
      }
    });
  }
  for (auto& producer : producers) producer.join();
  dispatch_sync(queue, [] {});
  for (const auto& numbers : seen) {
    ASSERT_EQ(numbers.size(), 5000U);
    for (int i = 0; i < 5000; ++i) ASSERT_EQ(numbers[static_cast<std::size_t>(i)], i);
  }
}

}  // namespace
}  // namespace norvik
