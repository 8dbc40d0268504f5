#include "NorvikCore/platform/dispatch/internal/Mailbox.h"

#include "NorvikCore/platform/dispatch/Queue.h"
#include "NorvikCore/platform/dispatch/Semaphore.h"
#include "NorvikCore/platform/dispatch/internal/ThreadStart.h"
#include "NorvikCore/platform/dispatch/internal/WorkerPool.h"
#include "NorvikCore/platform/kernel/Clock.h"
#include "tests/platform/dispatch/Watchdog.h"
#include "tests/support/InChild.h"
#include "tests/support/QuietFork.h"
#include "tests/support/Sanitizers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <functional>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace norvik {
namespace {

using detail::Letter;
using detail::LetterRun;
using detail::LooseLetter;
using detail::ThreadStartsFail;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr std::uint64_t forever = UINT64_MAX;

/// Identifies a letter or a block: its sender and its number.
struct Mark {
  int sender = 0, number = 0;
  bool operator==(const Mark&) const = default;
};

/// One mailbox, and what was read and run, in order.
class Mailbox : public test::WatchedTest {
 protected:
  Mailbox() {
    self = this;
    queue_set_ = dispatch_queue_t::adopt(mailbox);
  }

  static void read(LetterRun& run) {
    do {
      const Mark mark = *reinterpret_cast<const Mark*>(run.first().content);
      if (self->cameInChild) {
        self->cameInChild->push_back(mark.number);
        continue;
      }
      self->places.insert(&run.first());
      self->come(mark);
      if (self->onRead) self->onRead(mark);
    } while (run.finish(1));
  }
  void come(Mark mark) { came.push_back(mark); }
  [[nodiscard]] std::vector<int> numbers() const {
    std::vector<int> all;
    for (const Mark& mark : came) all.push_back(mark.number);
    return all;
  }

  /// False if the mailbox is full.
  bool trySend(int number, int sender = 0) {
    Letter* letter = mailbox->tryClaim();
    if (!letter) return false;
    ::new (letter->content) Mark{sender, number};
    mailbox->post(*letter);
    return true;
  }
  void send(int number, int sender = 0) {
    while (!trySend(number, sender)) (void)mailbox->waitForRoom(forever);
  }
  void sendLoose(int number) {
    auto* loose = new LooseLetter;
    ::new (loose->letter.content) Mark{0, number};
    mailbox->post(loose);
  }
  [[nodiscard]] const dispatch_queue_t& queue() const { return queue_set_; }
  /// Waits until another thread has read the letters; this thread must not read them itself.
  void waitUntilRead(std::size_t count) {
    for (;;) {
      if (readCount.load() >= count) return;
      std::this_thread::yield();
    }
  }
  void countReads() {
    onRead = [this](Mark) { ++readCount; };
  }

  static inline Mailbox* self = nullptr;
  detail::Mailbox* const mailbox = detail::newForkAware<detail::Mailbox>("mailbox", &Mailbox::read);
  dispatch_queue_t queue_set_;

  // Written by the reader and by the queue's blocks.
  std::vector<Mark> came;
  std::set<const Letter*> places;
  std::vector<int>* cameInChild = nullptr;  // instead of `came`, which the parent's reader may have been changing
  std::function<void(Mark)> onRead;         // set only while no letter is waiting
  std::atomic<std::size_t> readCount = 0;
};

std::vector<int> upTo(int count) {
  std::vector<int> all;
  for (int i = 0; i < count; ++i) all.push_back(i);
  return all;
}

TEST_F(Mailbox, HeaderExample) {
  static std::vector<int> consumed;
  auto* example = detail::newForkAware<detail::Mailbox>("payroll.log", [](LetterRun& run) {
    do {
      consumed.push_back(*reinterpret_cast<const int*>(run.first().content));
    } while (run.finish(1));
  });
  const auto itsQueue = dispatch_queue_t::adopt(example);
  for (int i = 0; i < 3; ++i) {
    if (Letter* letter = example->tryClaim()) {
      ::new (letter->content) int(i);
      example->post(*letter);
    }
  }
  dispatch_sync(itsQueue, [] {});
  EXPECT_THAT(consumed, ElementsAre(0, 1, 2));
}

TEST_F(Mailbox, ALetterIsReadWithoutACall) {
  countReads();
  send(7);
  waitUntilRead(1);
  dispatch_sync(queue(), [] {});
  EXPECT_THAT(numbers(), ElementsAre(7));
}

TEST_F(Mailbox, ALetterAfterALongSilenceIsReadToo) {
  countReads();
  for (int i = 0; i < 3; ++i) {
    send(i);
    waitUntilRead(static_cast<std::size_t>(i) + 1);
    const std::int64_t until = kernel::monotonicNanoseconds() + 70'000'000;  // the worker sleeps after 60 ms
    while (kernel::monotonicNanoseconds() < until) std::this_thread::yield();
  }
  EXPECT_EQ(readCount.load(), 3U);
  dispatch_sync(queue(), [] {});
}

TEST_F(Mailbox, WhileLettersComeNobodyIsWoken) {
  countReads();
  send(0);
  waitUntilRead(1);
  const std::uint64_t before = detail::WorkerPool::shared().wakeCount();
  for (int i = 1; i < 200; ++i) {
    send(i);
    const std::int64_t until = kernel::monotonicNanoseconds() + 100'000;
    while (kernel::monotonicNanoseconds() < until) std::this_thread::yield();
  }
  EXPECT_LE(detail::WorkerPool::shared().wakeCount() - before, 2U) << "a worker that lost its processor may come again";
  waitUntilRead(200);
  dispatch_sync(queue(), [] {});
}

TEST_F(Mailbox, ASynchronousBlockFindsReadWhatWasSentBeforeAndReadsItOnItsThread) {
  RUN_IN_CHILD({
    const ThreadStartsFail noWorkers;
    const auto caller = std::this_thread::get_id();
    onRead = [&](Mark) {
      EXPECT_EQ(std::this_thread::get_id(), caller);
      EXPECT_TRUE(dispatch_queue_is_held(queue()));
      EXPECT_STREQ(dispatch_queue_get_label(DISPATCH_CURRENT_QUEUE_LABEL), "mailbox");
    };
    for (int i = 0; i < 600; ++i) send(i);
    std::vector<int> found;
    dispatch_sync(queue(), [&] { found = numbers(); });
    EXPECT_EQ(found, upTo(600));
    dispatch_sync(queue(), [&] { EXPECT_EQ(numbers(), found); });
  });
}

TEST_F(Mailbox, ABlockHasItsPlaceAmongTheLetters) {
  RUN_IN_CHILD({
    const ThreadStartsFail noWorkers;
    send(0);
    send(1);
    dispatch_async(queue(), [this] { come({1, 2}); });
    dispatch_async(queue(), [this] { come({1, 3}); });
    send(4);
    dispatch_async_relaxed(queue(), [this] { come({1, 5}); });
    send(6);
    dispatch_sync(queue(), [this] { come({1, 7}); });
    EXPECT_EQ(numbers(), upTo(8));
  });
}

TEST_F(Mailbox, WhatABlockSendsAndQueuesComesAfterIt) {
  dispatch_async(queue(), [this] {
    send(1);
    dispatch_async(queue(), [this] {
      send(3);
      come({0, 2});
    });
    come({0, 0});
  });
  for (bool done = false; !done;) {
    dispatch_sync(queue(), [&] { done = came.size() == 4; });
  }
  EXPECT_EQ(numbers(), upTo(4));
}

TEST_F(Mailbox, EachThreadsLettersAndBlocksComeInItsOrder) {
#if defined(NK_TEST_THREAD_SANITIZER) || defined(NK_TEST_ADDRESS_SANITIZER)
  constexpr int each = 10'000;
#else
  constexpr int each = 200'000;
#endif
  constexpr int senders = 4;
  std::vector<std::thread> threads;
  for (int t = 0; t < senders; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < each; ++i) {
        if (i % 97 == 0) {
          dispatch_async(queue(), [this, t, i] { come({t, i}); });
        } else if (i % 1009 == 1) {
          dispatch_sync(queue(), [this, t, i] { come({t, i}); });
        } else {
          send(i, t);
        }
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  dispatch_sync(queue(), [] {});
  ASSERT_EQ(came.size(), static_cast<std::size_t>(senders) * each);
  std::array<int, senders> next{};
  for (const Mark& mark : came) {
    ASSERT_EQ(mark.number, next[static_cast<std::size_t>(mark.sender)]) << "of sender " << mark.sender;
    ++next[static_cast<std::size_t>(mark.sender)];
  }
}

TEST_F(Mailbox, AThousandLettersMayWaitAndNotOneMore) {
  dispatch_suspend(queue());
  for (int i = 0; i < 1000; ++i) ASSERT_TRUE(trySend(i));
  EXPECT_FALSE(trySend(1000));
  EXPECT_FALSE(mailbox->waitForRoom(0));
  EXPECT_FALSE(mailbox->waitForRoom(static_cast<std::uint64_t>(kernel::monotonicNanoseconds()) + 2'000'000));
  dispatch_resume(queue());
  EXPECT_TRUE(mailbox->waitForRoom(forever));
  send(1000);
  dispatch_sync(queue(), [] {});
  EXPECT_EQ(numbers(), upTo(1001));
}

TEST_F(Mailbox, ItIsCrowdedWhereASenderFoundMoreThanHalfOfThemWaiting) {
  for (int i = 0; i < 500; ++i) ASSERT_TRUE(trySend(i));
  dispatch_sync(queue(), [] {});
  dispatch_suspend(queue());
  for (int i = 500; i < 1000; ++i) ASSERT_TRUE(trySend(i));
  EXPECT_FALSE(mailbox->isCrowded());
  EXPECT_TRUE(trySend(1000));  // there is room only because the sender now checks done_: 500 wait
  EXPECT_FALSE(mailbox->isCrowded());
  for (int i = 1001; i < 1500; ++i) ASSERT_TRUE(trySend(i));
  EXPECT_FALSE(trySend(1500));
  EXPECT_TRUE(mailbox->isCrowded());
  dispatch_resume(queue());
  dispatch_sync(queue(), [] {});
  EXPECT_TRUE(trySend(1500));
  EXPECT_FALSE(mailbox->isCrowded());
  dispatch_sync(queue(), [] {});
  EXPECT_EQ(numbers(), upTo(1501));
}

TEST_F(Mailbox, ItIsCrowdedWithOneMoreThanHalfThoughThereIsRoom) {
  for (int i = 0; i < 499; ++i) ASSERT_TRUE(trySend(i));
  dispatch_sync(queue(), [] {});
  dispatch_suspend(queue());
  for (int i = 499; i < 1000; ++i) ASSERT_TRUE(trySend(i));
  EXPECT_FALSE(mailbox->isCrowded());
  EXPECT_TRUE(trySend(1000));  // checks done_: 501 wait
  EXPECT_TRUE(mailbox->isCrowded());
  dispatch_resume(queue());
  dispatch_sync(queue(), [] {});
  EXPECT_EQ(numbers(), upTo(1001));
}

TEST_F(Mailbox, ALetterCountsUntilItsReaderIsDoneWithIt) {
  RUN_IN_CHILD({
    const ThreadStartsFail noWorkers;
    std::vector<bool> hadRoom;
    onRead = [&](Mark mark) {
      if (mark.number < 3) hadRoom.push_back(trySend(1000 + mark.number));
    };
    for (int i = 0; i < 1000; ++i) ASSERT_TRUE(trySend(i));
    dispatch_sync(queue(), [] {});
    // While the first letter is read, all places are taken; while the second is read, the first one's place is free.
    EXPECT_THAT(hadRoom, ElementsAre(false, true, true));
    dispatch_sync(queue(), [] {});
    EXPECT_EQ(came.size(), 1002U);
  });
}

TEST_F(Mailbox, ItsMemoryIsThatOfItsRing) {
  for (int i = 0; i < 10'000; ++i) send(i);
  dispatch_sync(queue(), [] {});
  EXPECT_EQ(numbers(), upTo(10'000));
  EXPECT_THAT(places, SizeIs(1024));
}

TEST_F(Mailbox, ASenderWithoutRoomReadsWhereNobodyElseDoes) {
  RUN_IN_CHILD({
    const ThreadStartsFail noWorkers;
    for (int i = 0; i < 5000; ++i) send(i);
    dispatch_sync(queue(), [] {});
    EXPECT_EQ(numbers(), upTo(5000));
  });
}

TEST_F(Mailbox, SendersThatWaitForRoomGoOnWhereAnotherReads) {
  std::atomic<bool> reading = false;
  auto released = dispatch_semaphore_create(0);
  onRead = [&](Mark mark) {
    if (mark.number != 0) return;
    reading = true;
    dispatch_semaphore_wait(released, DISPATCH_TIME_FOREVER);
  };
  send(0);
  while (!reading) std::this_thread::yield();
  for (int i = 1; i < 1000; ++i) ASSERT_TRUE(trySend(i));
  std::atomic<bool> sent = false;
  std::thread sender([&] {
    send(1000);
    sent = true;
  });
  EXPECT_FALSE(mailbox->waitForRoom(static_cast<std::uint64_t>(kernel::monotonicNanoseconds()) + 2'000'000));
  EXPECT_FALSE(sent);
  dispatch_semaphore_signal(released);
  sender.join();
  dispatch_sync(queue(), [] {});
  EXPECT_EQ(numbers(), upTo(1001));
}

TEST_F(Mailbox, LooseLettersPassTheBoundAndKeepTheirPlace) {
  dispatch_suspend(queue());
  for (int i = 0; i < 1000; ++i) ASSERT_TRUE(trySend(i));
  for (int i = 1000; i < 1500; ++i) sendLoose(i);
  dispatch_async(queue(), [this] { come({0, 1500}); });
  dispatch_resume(queue());
  dispatch_sync(queue(), [] {});
  send(1501);
  dispatch_sync(queue(), [] {});
  EXPECT_EQ(numbers(), upTo(1502));
}

// --- Suspension ---

TEST_F(Mailbox, NoLetterIsReadWhileTheQueueIsSuspended) {
  dispatch_suspend(queue());
  for (int i = 0; i < 10; ++i) send(i);
  dispatch_async(queue(), [this] { come({0, 10}); });
  const std::int64_t until = kernel::monotonicNanoseconds() + 5'000'000;
  while (kernel::monotonicNanoseconds() < until) std::this_thread::yield();
  EXPECT_FALSE(mailbox->tryEnter());
  EXPECT_THAT(came, IsEmpty());
  dispatch_resume(queue());
  dispatch_sync(queue(), [] {});
  EXPECT_EQ(numbers(), upTo(11));
}

TEST_F(Mailbox, AReaderThatSuspendsTheQueueGetsNoFurtherLetter) {
  std::atomic<bool> suspended = false;
  onRead = [&](Mark mark) {
    if (mark.number != 3) return;
    dispatch_suspend(queue());
    suspended = true;
  };
  for (int i = 0; i < 10; ++i) send(i);
  while (!suspended) std::this_thread::yield();
  const std::int64_t until = kernel::monotonicNanoseconds() + 5'000'000;
  while (kernel::monotonicNanoseconds() < until) std::this_thread::yield();
  EXPECT_EQ(numbers(), upTo(4));
  dispatch_resume(queue());
  dispatch_sync(queue(), [] {});
  EXPECT_EQ(numbers(), upTo(10));
}

TEST_F(Mailbox, ASynchronousBlockWaitsWhereALetterBeforeItSuspendsTheQueue) {
  RUN_IN_CHILD({
    const ThreadStartsFail noWorkers;
    std::atomic<bool> suspended = false;
    std::atomic<bool> resumed = false;
    onRead = [&](Mark mark) {
      if (mark.number == 3) {
        dispatch_suspend(queue());
        suspended = true;
      } else if (mark.number == 4) {
        EXPECT_TRUE(resumed);
      }
    };
    for (int i = 0; i < 10; ++i) send(i);
    std::thread resumer([&] {
      while (!suspended) std::this_thread::yield();
      const std::int64_t until = kernel::monotonicNanoseconds() + 5'000'000;
      while (kernel::monotonicNanoseconds() < until) std::this_thread::yield();
      resumed = true;
      dispatch_resume(queue());
    });
    dispatch_sync(queue(), [&] {
      EXPECT_TRUE(resumed);
      EXPECT_EQ(numbers(), upTo(10));
    });
    resumer.join();
  });
}

// --- Targets ---

TEST_F(Mailbox, LettersAreReadAsBlocksOfTheTarget) {
  auto target = dispatch_queue_create("target");
  dispatch_set_target_queue(queue(), target);
  std::atomic<int> outside = 0;
  onRead = [&](Mark) {
    ++readCount;
    if (!dispatch_queue_is_held(target)) ++outside;
  };
  send(0);
  waitUntilRead(1);
  for (int i = 1; i < 3000; ++i) {
    send(i);
    if (i % 100 == 0) dispatch_async(queue(), [&] { outside += dispatch_queue_is_held(target) ? 0 : 1; });
    if (i % 500 == 0) dispatch_sync(queue(), [&] { EXPECT_EQ(came.size(), static_cast<std::size_t>(i) + 1); });
  }
  dispatch_sync(queue(), [] {});
  EXPECT_EQ(numbers(), upTo(3000));
  EXPECT_EQ(outside.load(), 0);
  dispatch_set_target_queue(queue(), nullptr);
  send(3000);
  waitUntilRead(3001);
  dispatch_sync(queue(), [] {});  // afterwards the reader no longer uses what is destroyed now
}

TEST_F(Mailbox, ATargetThatIsBusyHoldsUpTheLetters) {
  auto target = dispatch_queue_create("target");
  dispatch_set_target_queue(queue(), target);
  dispatch_sync(target, [&] {
    for (int i = 0; i < 10; ++i) send(i);
    const std::int64_t until = kernel::monotonicNanoseconds() + 5'000'000;
    while (kernel::monotonicNanoseconds() < until) std::this_thread::yield();
    EXPECT_THAT(came, IsEmpty());
  });
  dispatch_sync(queue(), [] {});
  EXPECT_EQ(numbers(), upTo(10));
}

// --- If no thread can be started ---

TEST_F(Mailbox, WithoutWorkersAWaitRunsTheBlocksAndLettersBeforeIt) {
  RUN_IN_CHILD({
    const ThreadStartsFail noWorkers;
    send(0);
    dispatch_async(queue(), [this] { come({0, 1}); });  // after this a drain owns the queue, without a worker
    send(2);
    dispatch_async(queue(), [this] { come({0, 3}); });
    send(4);
    dispatch_sync(queue(), [this] { come({0, 5}); });
    EXPECT_EQ(numbers(), upTo(6));
  });
}

TEST_F(Mailbox, WithoutWorkersASenderRunsWhatIsBeforeTheLettersOfAFullMailbox) {
  RUN_IN_CHILD({
    const ThreadStartsFail noWorkers;
    dispatch_async(queue(), [this] { come({0, 0}); });
    for (int i = 1; i < 3000; ++i) send(i);
    dispatch_async(queue(), [this] { come({0, 3000}); });
    for (int i = 3001; i < 6000; ++i) send(i);
    dispatch_sync(queue(), [] {});
    EXPECT_EQ(numbers(), upTo(6000));
  });
}

TEST_F(Mailbox, OnceAWorkerCanBeStartedAgainTheNextLettersBringOne) {
  RUN_IN_CHILD({
    countReads();
    {
      const ThreadStartsFail noWorkers;
      send(0);
    }
    for (int i = 1; i < 900 && readCount == 0; ++i) {
      ASSERT_TRUE(trySend(i));
      const std::int64_t until = kernel::monotonicNanoseconds() + 1'000'000;
      while (kernel::monotonicNanoseconds() < until) std::this_thread::yield();
    }
    EXPECT_GT(readCount, 0U);
  });
}

TEST_F(Mailbox, WithoutWorkersATargetsTurnIsTakenToo) {
  RUN_IN_CHILD({
    const ThreadStartsFail noWorkers;
    auto target = dispatch_queue_create("target");
    dispatch_set_target_queue(queue(), target);
    dispatch_async(target, [this] { come({0, 0}); });
    dispatch_async(queue(), [this] { come({0, 1}); });
    for (int i = 2; i < 2500; ++i) send(i);
    dispatch_sync(queue(), [] {});
    EXPECT_EQ(numbers(), upTo(2500));
  });
}

// --- Forks ---

#if defined(NK_TEST_THREAD_SANITIZER)
#define NK_SKIP_UNDER_TSAN() GTEST_SKIP() << "the thread sanitizer starts no threads in a forked child"
#else
#define NK_SKIP_UNDER_TSAN() static_cast<void>(0)
#endif

template <class F>
int statusOfChild(const F& body) {
  test::quietBeforeFork();
  const pid_t child = fork();
  if (child == 0) {
    alarm(20);
    _exit(body() ? 0 : 1);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return status;
}

TEST_F(Mailbox, AChildHasNoneOfItsParentsLetters) {
  NK_SKIP_UNDER_TSAN();
  dispatch_suspend(queue());
  for (int i = 0; i < 700; ++i) send(i);
  Letter* const claimed = mailbox->tryClaim();  // stands for a claim of another thread at the fork
  EXPECT_EQ(statusOfChild([&] {
              dispatch_resume(queue());
              for (int i = 0; i < 1500; ++i) send(i);
              dispatch_sync(queue(), [] {});
              return numbers() == upTo(1500);
            }),
            0);
  ::new (claimed->content) Mark{0, 700};
  mailbox->post(*claimed);
  dispatch_resume(queue());
  dispatch_sync(queue(), [] {});
  EXPECT_EQ(numbers(), upTo(701)) << "the parent goes on";
}

TEST_F(Mailbox, AReaderThatForksKeepsItsLetterInTheChildAndNoOther) {
  NK_SKIP_UNDER_TSAN();
  int status = -1;
  bool isChild = false;
  onRead = [&](Mark mark) {
    if (mark.number != 3) return;
    test::quietBeforeFork();
    const pid_t child = fork();
    if (child == 0) {
      alarm(20);
      isChild = true;
      came.push_back(mark);  // the letter itself still exists
      return;
    }
    waitpid(child, &status, 0);
  };
  for (int i = 0; i < 10; ++i) send(i);
  dispatch_sync(queue(), [] {});
  if (isChild) {
    for (int i = 4; i < 2000; ++i) send(i);
    dispatch_sync(queue(), [] {});
    std::vector<int> expected = upTo(2000);
    expected.insert(expected.begin() + 3, 3);
    _exit(numbers() == expected ? 0 : 1);
  }
  EXPECT_EQ(status, 0);
  EXPECT_EQ(numbers(), upTo(10));
}

TEST_F(Mailbox, AForkAmidLettersLosesNothingInTheParentAndHoldsUpNoChild) {
  NK_SKIP_UNDER_TSAN();
#ifdef NK_TEST_ADDRESS_SANITIZER
  GTEST_SKIP() << "the address sanitizer's own heap may be locked for ever in a child of a busy process";
#endif
  std::atomic<bool> done = false;
  std::atomic<int> sent = 0;
  std::thread sender([&] {
    for (int i = 0; !done; ++i) {
      send(i);
      sent = i + 1;
    }
  });
  int bad = 0;
  for (int round = 0; round < 30; ++round) {
    bad += statusOfChild([&] {
             std::vector<int> read;
             cameInChild = &read;
             for (int i = 0; i < 1500; ++i) send(i);
             dispatch_sync(queue(), [] {});
             // The run that was being read at the fork belongs to the parent.
             return read == upTo(1500);
           }) == 0
               ? 0
               : 1;
  }
  done = true;
  sender.join();
  dispatch_sync(queue(), [] {});
  EXPECT_EQ(bad, 0);
  EXPECT_EQ(numbers(), upTo(sent));
}

}  // namespace
}  // namespace norvik
