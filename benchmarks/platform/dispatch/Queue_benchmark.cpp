// benchmarks/platform/dispatch/Queue_benchmark.cpp - posting to a serial queue and running there, compared with an asio
// strand on a pool of two threads. A coroutine that awaits the queue is compared with asio's.
//
// Every run counts its tasks; if a task is lost or repeated, the program ends.
//
// 2026-11-21, Intel Xeon of 2.5 GHz (Cascade Lake), two virtual cores shared with other builds (load 5), g++ 12.2, -O2;
// medians of 7 or 9 runs:
//   posting and running, nanoseconds for each task: one producer 99, asio 349 to 629; four producers 102, asio 396. On
//   2026-11-23, Intel Xeon (Sapphire Rapids), before all other programs (chrt -f 1): 27, asio 760; four producers 50,
//   asio 417
//   a synchronous task on an idle queue: 19 of processor time, asio (in place, on its strand's own thread) 54
//   one post every 200 microseconds, for its caller: median 149 nanoseconds, asio 3,390; 99th percentile 3.0
//   microseconds, asio 4,060
//   a task that enqueues itself again, 2026-11-23, load 8, nanoseconds for each hop, medians of 5: coroutine 77, block
//   92, asio's coroutine 1,010
//   an idle process: 0.002 % of a processor
#include "NorvikCore/platform/dispatch/Queue.h"

#include "NorvikCore/platform/dispatch/Queue_coroutine.h"
#include "NorvikCore/platform/dispatch/Semaphore.h"

#include <benchmark/benchmark.h>
#include <time.h>

#include <algorithm>
#include <boost/asio/awaitable.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/dispatch.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/strand.hpp>
#include <boost/asio/thread_pool.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <chrono>
#include <coroutine>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <future>
#include <thread>
#include <vector>

namespace {

using namespace norvik;
using Clock = std::chrono::steady_clock;

constexpr int taskCount = 400'000;

void require(bool right, const char* what) {
  if (right) return;
  std::fprintf(stderr, "wrong answer: %s\n", what);
  std::exit(1);
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
  auto queue = dispatch_queue_create("benchmark");
  for (auto _ : state) {
    long count = 0;
    produce(static_cast<int>(state.range(0)), [&] { dispatch_async(queue, [&count] { ++count; }); });
    require(dispatch_sync(queue, [&] { return count; }) == taskCount, "every task runs once");
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

void syncOurs(benchmark::State& state) {
  auto queue = dispatch_queue_create("benchmark");
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

/// The cost of one call for its caller if there is one every 200 microseconds: median and 99th percentile, in
/// nanoseconds.
template <class Post>
void pacedCalls(benchmark::State& state, const Post& post) {
  std::vector<double> costs;
  for (auto _ : state) {
    const auto start = Clock::now();
    post();
    const auto end = Clock::now();
    costs.push_back(std::chrono::duration<double, std::nano>(end - start).count());
    state.SetIterationTime(std::chrono::duration<double>(end - start).count());
    while (Clock::now() - end < std::chrono::microseconds(200)) {
    }
  }
  std::sort(costs.begin(), costs.end());
  state.counters["p50"] = costs[costs.size() / 2];
  state.counters["p99"] = costs[costs.size() * 99 / 100];
}

void pacedOurs(benchmark::State& state) {
  auto queue = dispatch_queue_create("benchmark");
  long count = 0;
  pacedCalls(state, [&] { dispatch_async_relaxed(queue, [&count] { ++count; }); });
  require(dispatch_sync(queue, [&] { return count; }) == static_cast<long>(state.iterations()), "every task runs once");
}

void pacedAsio(benchmark::State& state) {
  boost::asio::thread_pool pool(2);
  auto strand = boost::asio::make_strand(pool.get_executor());
  long count = 0;
  pacedCalls(state, [&] { boost::asio::post(strand, [&count] { ++count; }); });
  pool.join();
  require(count == static_cast<long>(state.iterations()), "every task runs once");
}

// One task that enqueues itself again and again: as a coroutine, and as a block that enqueues the next.

struct Job {
  struct promise_type {
    Job get_return_object() noexcept { return {}; }
    std::suspend_never initial_suspend() noexcept { return {}; }
    std::suspend_never final_suspend() noexcept { return {}; }
    void return_void() noexcept {}
    void unhandled_exception() { std::terminate(); }
  };
};

Job hop(dispatch_queue_t queue, long& count, dispatch_semaphore_t done) {
  for (int i = 0; i < taskCount; ++i) {
    co_await queue;
    ++count;
  }
  dispatch_semaphore_signal(done);
}

void hopCoroutine(benchmark::State& state) {
  const auto queue = dispatch_queue_create("benchmark");
  const auto done = dispatch_semaphore_create(0);
  for (auto _ : state) {
    long count = 0;
    hop(queue, count, done);
    dispatch_semaphore_wait(done, DISPATCH_TIME_FOREVER);
    require(count == taskCount, "every hop happens once");
  }
  state.SetItemsProcessed(state.iterations() * taskCount);
}

struct NextHop {
  const dispatch_queue_t& queue;
  long& count;
  const dispatch_semaphore_t& done;
  void operator()() const {
    if (++count == taskCount)
      dispatch_semaphore_signal(done);
    else
      dispatch_async(queue, *this);
  }
};

void hopBlock(benchmark::State& state) {
  const auto queue = dispatch_queue_create("benchmark");
  const auto done = dispatch_semaphore_create(0);
  for (auto _ : state) {
    long count = 0;
    dispatch_async(queue, NextHop{queue, count, done});
    dispatch_semaphore_wait(done, DISPATCH_TIME_FOREVER);
    require(count == taskCount, "every hop happens once");
  }
  state.SetItemsProcessed(state.iterations() * taskCount);
}

using Strand = boost::asio::strand<boost::asio::thread_pool::executor_type>;

boost::asio::awaitable<void> hopOn(Strand strand, long& count, std::promise<void>& done) {
  for (int i = 0; i < taskCount; ++i) {
    co_await boost::asio::post(strand, boost::asio::use_awaitable);
    ++count;
  }
  done.set_value();
}

void hopAsio(benchmark::State& state) {
  boost::asio::thread_pool pool(2);
  Strand strand = boost::asio::make_strand(pool.get_executor());
  for (auto _ : state) {
    long count = 0;
    std::promise<void> done;
    boost::asio::co_spawn(strand, hopOn(strand, count, done), boost::asio::detached);
    done.get_future().wait();
    require(count == taskCount, "every hop happens once");
  }
  state.SetItemsProcessed(state.iterations() * taskCount);
}

double processorTime() {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// The processor time of an idle process after its last task, in percent of a processor.
void idleOurs(benchmark::State& state) {
  for (auto _ : state) {
    dispatch_async(dispatch_get_global_queue(), [] {});
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    const double before = processorTime();
    const auto start = Clock::now();
    std::this_thread::sleep_for(std::chrono::seconds(1));
    const double wall = std::chrono::duration<double>(Clock::now() - start).count();
    state.counters["percent"] = 100 * (processorTime() - before) / wall;
  }
}

BENCHMARK(postOurs)->Name("queue_post/ours")->Arg(1)->Arg(4)->UseRealTime();
BENCHMARK(postAsio)->Name("queue_post/asio")->Arg(1)->Arg(4)->UseRealTime();
BENCHMARK(syncOurs)->Name("queue_sync_idle/ours");
BENCHMARK(syncAsio)->Name("queue_sync_idle/asio")->UseRealTime();
BENCHMARK(pacedOurs)->Name("queue_post_every_200us/ours")->UseManualTime()->Iterations(3000);
BENCHMARK(pacedAsio)->Name("queue_post_every_200us/asio")->UseManualTime()->Iterations(3000);
BENCHMARK(hopCoroutine)->Name("queue_hop/ours_coroutine")->UseRealTime();
BENCHMARK(hopBlock)->Name("queue_hop/ours_block")->UseRealTime();
BENCHMARK(hopAsio)->Name("queue_hop/asio_coroutine")->UseRealTime();
BENCHMARK(idleOurs)->Name("queue_idle/ours")->UseRealTime()->Iterations(1);

}  // namespace

BENCHMARK_MAIN();
