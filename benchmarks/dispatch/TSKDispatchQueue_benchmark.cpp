// benchmarks/dispatch/TSKDispatchQueue_benchmark.cpp - the cost of the wrapper, with its check for deadlocks, over the
// bare queue, compared with an asio strand on a pool of two threads.
//
// Every run counts its tasks; if a task is lost or repeated, the program ends.
//
// g++ 12.2 -O2, 2 virtual cores at load 4, 2026-11-21, medians of five: a synchronous block on an idle queue 43 ns of
// CPU time (bare queue 19, asio in place on its strand's own thread 54), below three other wrappers 48 ns, on the queue
// that runs already 9 ns. A synchronous block that returns its result costs no more than one that returns nothing (38
// and 37 ns of CPU time, 2026-11-23).
//
// 2026-11-23, Intel Xeon (Sapphire Rapids), 2 virtual cores, other builds at load 15 but this program before them
// (chrt -f 1), medians of five: posting and running 49 ns from one producer and 74 ns from four (asio 873 and 437).
// The same at load 10, medians of 27: setting one of 20,000 named timers 378 ns (asio 634), restarting one 385 ns (asio
// 1,880).
#include "NorvikCore/dispatch/TSKDispatchQueue.h"

#include <benchmark/benchmark.h>

#include <atomic>
#include <boost/asio/dispatch.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/strand.hpp>
#include <boost/asio/thread_pool.hpp>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

namespace {

using namespace norvik;

using Clock = std::chrono::steady_clock;

constexpr int taskCount = 400'000;

double secondsSince(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

void require(bool right, const char* what) {
  if (right) return;
  std::fprintf(stderr, "wrong answer: %s\n", what);
  std::exit(1);
}

void syncOurs(benchmark::State& state) {
  const auto queue = TSKDispatchQueue::dispatchQueueWithLabel("benchmark");
  long count = 0;
  for (auto _ : state) queue->dispatchSynchronously([&count] { ++count; });
  require(count == static_cast<long>(state.iterations()), "every task runs once");
}

/// The block returns its count, as a std::optional.
void syncResultOurs(benchmark::State& state) {
  const auto queue = TSKDispatchQueue::dispatchQueueWithLabel("benchmark");
  long count = 0, last = 0;
  for (auto _ : state) last = queue->dispatchSynchronously([&count] { return ++count; }).value();
  require(last == static_cast<long>(state.iterations()), "every task runs once and returns its result");
}

void syncBareQueue(benchmark::State& state) {
  const auto queue = dispatch_queue_create("benchmark");
  long count = 0;
  for (auto _ : state) dispatch_sync(queue, [&count] { ++count; });
  require(count == static_cast<long>(state.iterations()), "every task runs once");
}

/// Runs on the strand's own thread, because asio runs a task in place only there.
void syncAsio(benchmark::State& state) {
  boost::asio::thread_pool pool(2);
  auto strand = boost::asio::make_strand(pool.get_executor());
  long count = 0;
  std::promise<void> done;
  boost::asio::post(strand, [&] {
    for (auto _ : state) boost::asio::dispatch(strand, [&count] { ++count; });
    done.set_value();
  });
  done.get_future().wait();
  require(count == static_cast<long>(state.iterations()), "every task runs once");
}

/// The check has to examine three wrappers.
void syncThreeDeepOurs(benchmark::State& state) {
  const auto a = TSKDispatchQueue::dispatchQueueWithLabel("a");
  const auto b = TSKDispatchQueue::dispatchQueueWithLabel("b");
  const auto c = TSKDispatchQueue::dispatchQueueWithLabel("c");
  const auto queue = TSKDispatchQueue::dispatchQueueWithLabel("benchmark");
  long count = 0;
  a->dispatchSynchronously([&] {
    b->dispatchSynchronously([&] {
      c->dispatchSynchronously([&] {
        for (auto _ : state) queue->dispatchSynchronously([&count] { ++count; });
      });
    });
  });
  require(count == static_cast<long>(state.iterations()), "every task runs once");
}

/// The queue is already running on this thread, so the block is called in place.
void inPlaceOurs(benchmark::State& state) {
  const auto queue = TSKDispatchQueue::dispatchQueueWithLabel("benchmark");
  long count = 0;
  queue->dispatchSynchronously([&] {
    for (auto _ : state) queue->dispatchSynchronously([&count] { ++count; });
  });
  require(count == static_cast<long>(state.iterations()), "every task runs once");
}

/// Calls `post` taskCount times in all, from `producers` threads.
template <class Post>
void produce(int producers, const Post& post) {
  const auto run = [&] {
    for (int i = 0; i < taskCount / producers; ++i) post();
  };
  if (producers == 1) return run();
  std::vector<std::thread> threads;
  for (int i = 0; i < producers; ++i) threads.emplace_back(run);
  for (auto& thread : threads) thread.join();
}

void postOurs(benchmark::State& state) {
  const auto queue = TSKDispatchQueue::dispatchQueueWithLabel("benchmark");
  for (auto _ : state) {
    long count = 0;
    produce(static_cast<int>(state.range(0)), [&] { queue->dispatchAsynchronously([&count] { ++count; }); });
    long seen = 0;
    queue->dispatchSynchronously([&] { seen = count; });
    require(seen == taskCount, "every task runs once");
  }
  state.SetItemsProcessed(state.iterations() * taskCount);
}

void postAsio(benchmark::State& state) {
  boost::asio::thread_pool pool(2);
  auto strand = boost::asio::make_strand(pool.get_executor());
  for (auto _ : state) {
    long count = 0;
    std::promise<long> all;
    produce(static_cast<int>(state.range(0)), [&] { boost::asio::post(strand, [&count] { ++count; }); });
    boost::asio::post(strand, [&] { all.set_value(count); });
    require(all.get_future().get() == taskCount, "every task runs once");
  }
  state.SetItemsProcessed(state.iterations() * taskCount);
}

constexpr int nameCount = 20'000;
constexpr double interval = 0.05;  // seconds

std::string nameOf(int i) { return "employee " + std::to_string(i); }

/// Timers by name are set, and fire at the end. Measures the time until the last is set.
void namedTimersOurs(benchmark::State& state) {
  for (auto _ : state) {
    const auto queue = TSKDispatchQueue::dispatchQueueWithLabel("benchmark");
    std::vector<NSString> names;
    for (int i = 0; i < nameCount; ++i) names.push_back(NSString(nameOf(i)));
    std::atomic<int> fired{0};
    const auto start = Clock::now();
    for (const NSString& name : names)
      queue->scheduleTimerWithName(name, interval, TSKTimerRestart, [&fired] { ++fired; });
    queue->dispatchSynchronously([] {});
    state.SetIterationTime(secondsSince(start));
    while (fired < nameCount || queue->timerCount() > 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    require(fired == nameCount, "every timer fires once");
  }
  state.SetItemsProcessed(state.iterations() * nameCount);
}

/// What a user of asio would write: a table of timers on a strand.
class AsioTimers {
 public:
  template <class Handler>
  void schedule(const std::string& name, const Handler& handler) {
    boost::asio::post(strand_, [this, name, handler] {
      auto& timer = timers_.try_emplace(name, strand_).first->second;
      timer.expires_after(std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(interval)));
      timer.async_wait([handler](const boost::system::error_code& error) {
        if (!error) handler();
      });
    });
  }
  void waitUntilSet() {
    std::promise<void> set;
    boost::asio::post(strand_, [&set] { set.set_value(); });
    set.get_future().wait();
  }

 private:
  boost::asio::thread_pool pool_{2};
  boost::asio::strand<boost::asio::thread_pool::executor_type> strand_ = make_strand(pool_.get_executor());
  std::unordered_map<std::string, boost::asio::steady_timer> timers_;
};

void namedTimersAsio(benchmark::State& state) {
  for (auto _ : state) {
    std::atomic<int> fired{0};
    std::vector<std::string> names;
    for (int i = 0; i < nameCount; ++i) names.push_back(nameOf(i));
    AsioTimers timers;
    const auto start = Clock::now();
    for (const std::string& name : names) timers.schedule(name, [&fired] { ++fired; });
    timers.waitUntilSet();
    state.SetIterationTime(secondsSince(start));
    while (fired < nameCount) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    require(fired == nameCount, "every timer fires once");
  }
  state.SetItemsProcessed(state.iterations() * nameCount);
}

/// A burst of changes that becomes one save.
void restartOurs(benchmark::State& state) {
  const auto queue = TSKDispatchQueue::dispatchQueueWithLabel("benchmark");
  for (auto _ : state) {
    std::atomic<int> fired{0};
    const auto start = Clock::now();
    queue->dispatchSynchronously([&] {
      for (int i = 0; i < nameCount; ++i)
        queue->scheduleTimerWithName("save", interval, TSKTimerRestart, [&fired] { ++fired; });
    });
    queue->dispatchSynchronously([] {});
    state.SetIterationTime(secondsSince(start));
    while (fired == 0 || queue->timerCount() > 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    require(fired == 1, "the burst fires once");
  }
  state.SetItemsProcessed(state.iterations() * nameCount);
}

void restartAsio(benchmark::State& state) {
  AsioTimers timers;
  for (auto _ : state) {
    std::atomic<int> fired{0};
    const auto start = Clock::now();
    for (int i = 0; i < nameCount; ++i) timers.schedule("save", [&fired] { ++fired; });
    timers.waitUntilSet();
    state.SetIterationTime(secondsSince(start));
    while (fired == 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  state.SetItemsProcessed(state.iterations() * nameCount);
}

BENCHMARK(syncOurs)->Name("wrapper_sync_idle/ours");
BENCHMARK(syncResultOurs)->Name("wrapper_sync_idle/ours_result");
BENCHMARK(syncBareQueue)->Name("wrapper_sync_idle/bare_queue");
BENCHMARK(syncAsio)->Name("wrapper_sync_idle/asio")->UseRealTime();
BENCHMARK(syncThreeDeepOurs)->Name("wrapper_sync_three_deep/ours");
BENCHMARK(inPlaceOurs)->Name("wrapper_sync_in_place/ours");
BENCHMARK(postOurs)->Name("wrapper_post/ours")->Arg(1)->Arg(4)->UseRealTime();
BENCHMARK(postAsio)->Name("wrapper_post/asio")->Arg(1)->Arg(4)->UseRealTime();
BENCHMARK(namedTimersOurs)->Name("wrapper_timers_20000/ours")->UseManualTime()->Iterations(3);
BENCHMARK(namedTimersAsio)->Name("wrapper_timers_20000/asio")->UseManualTime()->Iterations(3);
BENCHMARK(restartOurs)->Name("wrapper_timer_restart_20000/ours")->UseManualTime()->Iterations(3);
BENCHMARK(restartAsio)->Name("wrapper_timer_restart_20000/asio")->UseManualTime()->Iterations(3);

}  // namespace

BENCHMARK_MAIN();
