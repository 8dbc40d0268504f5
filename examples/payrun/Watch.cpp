#include "Watch.h"

#include <poll.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <exception>
#include <functional>
#include <iterator>
#include <memory>
#include <system_error>

#include "FolderWatch.h"
#include "InputError.h"
#include "LivePayRun.h"
#include "NorvikCore/dispatch/TSKDispatchQueue.h"
#include "NorvikCore/logging/DDLogMacros.h"
#include "NorvikCore/platform/dispatch/MainQueue.h"
#include "Notices.h"
#include "OutputFile.h"

namespace payrun {

using namespace norvik;

namespace {

constexpr double quietSeconds = 0.2;

void deliver(const Arguments& arguments, const LivePayRun& run) {
  if (arguments.output) {
    writeWhole(*arguments.output, run.report());
  } else {
    printWhole(run.report());
  }
  tellNotices(run.run(), true);
}

/// A failure on the queue, which ends the watch. Confined to the main thread.
struct Failure {
  std::exception_ptr exception;
};

/// A serial queue. After its destruction nothing is printed or written any more.
class RestingQueue {
 public:
  RestingQueue() = default;
  ~RestingQueue() { rest(); }
  RestingQueue(const RestingQueue&) = delete;
  RestingQueue& operator=(const RestingQueue&) = delete;

  TSKDispatchQueue* operator->() const { return queue_.get(); }
  /// Cancels the blocks that wait for their time, and waits for the running block.
  void rest() const {
    queue_->cancelAllTimers();
    queue_->dispatchSynchronously([] {});
  }

 private:
  const Ref<TSKDispatchQueue> queue_ = TSKDispatchQueue::dispatchQueueWithLabel("payrun.watch");
};

/// Runs on the queue: reads the changed files and prints the changes.
void readAgain(const Arguments& arguments, LivePayRun& run) {
  try {
    const std::string changes = run.readAgain();
    if (arguments.output) writeWhole(*arguments.output, run.report());
    printWhole(changes);
    tellNotices(run.run(), arguments.output.has_value());
    DDLogInfo("%s: read again", arguments.input.c_str());
  } catch (const InputError& error) {
    DDLogError("%s", error.what());
    std::fprintf(stderr, "payrun: %s\n", error.what());
  }
}

/// Passes the changes to the queue. Returns false if no more changes will be reported.
bool handOver(const FolderWatch::Changes& changes, const RestingQueue& queue, const std::shared_ptr<LivePayRun>& run,
              const std::function<void()>& read) {
  const bool people = changes.all || changes.names.contains("employer.ini") || changes.names.contains("employees.csv");
  const bool items = changes.all || changes.names.contains("items.csv");
  if (people || items) {
    queue->dispatchAsynchronously([run, people] { run->noteChange(people); });
    queue->scheduleTimerWithName("read again", quietSeconds, TSKTimerRestart, read);
  }
  return !changes.gone;
}

}  // namespace

void watch(const Arguments& arguments, StopSignals& signals) {
  std::signal(SIGPIPE, SIG_IGN);  // a write to a closed pipe fails instead of ending the process
  // The watch begins before the first reading, so that no change between the two is lost.
  FolderWatch folder(arguments.input);
  const auto run = std::make_shared<LivePayRun>(arguments.input, arguments.month);
  deliver(arguments, *run);
  std::fprintf(stderr, "payrun: watching %s; Ctrl-C ends it\n", arguments.input.c_str());

  const RestingQueue queue;
  const auto failure = std::make_shared<Failure>();
  const auto read = [=] {
    try {
      readAgain(arguments, *run);
    } catch (...) {
      dispatch_async(dispatch_get_main_queue(),
                     [failure, exception = std::current_exception()] { failure->exception = exception; });
    }
  };
  while (!failure->exception) {
    pollfd wanted[] = {{signals.descriptor(), POLLIN, 0},
                       {folder.descriptor(), POLLIN, 0},
                       {dispatch_main_queue_descriptor(), POLLIN, 0}};
    if (::poll(wanted, std::size(wanted), -1) < 0 && errno != EINTR)
      throw std::system_error(errno, std::generic_category(), "waiting for changes failed");
    if (const int signal = signals.take(); signal != 0) {
      DDLogInfo("ended by %s", signal == SIGINT ? "SIGINT" : "SIGTERM");
      break;
    }
    dispatch_main_queue_drain();
    if (!handOver(folder.take(), queue, run, read)) {
      throw std::system_error(ENOENT, std::generic_category(), arguments.input.string() + " is not there any more");
    }
  }
  queue.rest();
  dispatch_main_queue_drain();  // the last run on the queue may have failed
  if (failure->exception) std::rethrow_exception(failure->exception);
}

}  // namespace payrun
