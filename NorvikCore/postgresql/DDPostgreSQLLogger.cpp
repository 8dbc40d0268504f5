#include "NorvikCore/postgresql/DDPostgreSQLLogger.h"

#include "NorvikCore/logging/database/internal/EntryBuffer.h"
#include "NorvikCore/logging/database/internal/StoreReports.h"
#include "NorvikCore/platform/dispatch/Group.h"
#include "NorvikCore/platform/foundation/NSLog.h"
#include "NorvikCore/platform/kernel/Clock.h"
#include "NorvikCore/platform/object/Weak.h"
#include "NorvikCore/postgresql/internal/ServerWriter.h"

#include <algorithm>
#include <new>
#include <string>
#include <typeinfo>
#include <utility>

namespace norvik {
namespace {

using detail::EntryBuffer;
using detail::ServerConnection;

constexpr std::size_t usualBufferSize = std::size_t{16} << 20;
constexpr std::int64_t shortestPause = NSEC_PER_SEC, longestPause = 30 * NSEC_PER_SEC;

constexpr double usualTimeout = 10, shortestTimeout = 0.001, longestTimeout = 1e6;  // seconds

std::int64_t nanoseconds(double seconds) { return static_cast<std::int64_t>(seconds * 1e9); }

}  // namespace

/// The state that the writing thread uses. While no thread writes, the logger owns it.
struct DDPostgreSQLLogger::Server {
  explicit Server(const std::string& parameters) : writer(parameters) {}

  void work() noexcept;

  detail::ServerWriter writer;
  EntryBuffer batch{SIZE_MAX};
  std::size_t written = 0;  // entries of the batch that are written

  // The tasks besides writing the batch.
  std::int64_t patience = 0;
  double deleteAge = 0;  // 0: nothing is to be deleted

  // The result. Without a failure the batch is written.
  std::string failure, deleteFailure, refusal;
  std::uint64_t refused = 0;
  bool isDeleteFinished = true;
};

void DDPostgreSQLLogger::Server::work() noexcept {
  failure.clear();
  deleteFailure.clear();
  refused = 0;
  isDeleteFinished = true;
  try {
    std::string why;
    const bool isWritten = writer.write(batch, kernel::monotonicNanoseconds() + patience, written, refused, why);
    (isWritten ? refusal : failure) = why;
    if (!isWritten && failure.empty()) failure = "unknown";
    if (isWritten && deleteAge > 0) {
      (void)writer.deleteOlder(deleteAge, kernel::monotonicNanoseconds() + patience, isDeleteFinished, deleteFailure);
      if (!deleteFailure.empty()) isDeleteFinished = true;
    }
  } catch (const std::bad_alloc&) {
    writer.close();
    failure = "there is no memory for it";
  }
}

/// Confined to the logger's queue.
struct DDPostgreSQLLogger::State {
  explicit State(const std::string& given)
      : parameters(given), reports("DDPostgreSQLLogger", ServerConnection::nameOf(given)) {
    begin();
  }
  State(const State&) = delete;
  State& operator=(const State&) = delete;
  ~State();

  void begin() {
    server = std::make_shared<Server>(parameters);
    queue = dispatch_queue_create("cocoa.quillmarch.postgresqlLogger.writer");
    working = dispatch_group_create();
  }
  [[nodiscard]] std::size_t batchCount() const { return isBusy ? 0 : server->batch.count(); }
  void divideRoom() { pending.setLimit(limit - std::min<std::uint64_t>(limit, batchBytes)); }

  const std::string parameters;
  detail::StoreReports reports;
  std::shared_ptr<Server> server;
  dispatch_queue_t queue;
  dispatch_group_t working;

  EntryBuffer pending{usualBufferSize};
  std::uint64_t limit = usualBufferSize;
  std::uint64_t batchBytes = 0;
  double timeout = usualTimeout;

  bool isBusy = false;     // a thread uses the server
  bool wantsSave = false;  // a save was requested while a thread used the server, or before nextTry
  bool wantsDelete = false;
  bool isStalled = false;    // waiting for room took too long
  std::int64_t nextTry = 0;  // monotonic nanoseconds; after a failure
  std::int64_t pause = shortestPause;
};

DDPostgreSQLLogger::State::~State() {
  const std::size_t unsaved = pending.count() + batchCount();
  if (unsaved > 0) {
    NSLog("DDPostgreSQLLogger: entries not saved before the logger's end: %llu", std::uint64_t{unsaved});
  }
}

DDPostgreSQLLogger::DDPostgreSQLLogger(const NSString& connectionString)
    : state_(std::make_unique<State>(connectionString.utf8())) {}

DDPostgreSQLLogger::~DDPostgreSQLLogger() = default;

Ref<DDPostgreSQLLogger> DDPostgreSQLLogger::initWithConnectionString(const NSString& connectionString) {
  return make<DDPostgreSQLLogger>(connectionString);
}

std::optional<NSString> DDPostgreSQLLogger::loggerName() { return "cocoa.quillmarch.postgresqlLogger"; }

std::uint64_t DDPostgreSQLLogger::maximumBufferSize() const {
  return read([this] { return state_->limit; });
}

void DDPostgreSQLLogger::setMaximumBufferSize(std::uint64_t bytes) {
  change([this, bytes] {
    state_->limit = bytes;
    state_->divideRoom();
  });
}

double DDPostgreSQLLogger::timeout() const {
  return read([this] { return state_->timeout; });
}

void DDPostgreSQLLogger::setTimeout(double seconds) {
  change([this, seconds] {
    state_->timeout = seconds > 0 ? std::clamp(seconds, shortestTimeout, longestTimeout) : usualTimeout;
  });
}

std::uint64_t DDPostgreSQLLogger::lostEntryCount() const {
  return read([this] { return state_->reports.lostCount(); });
}

// Receiving

template <class Entry>
bool DDPostgreSQLLogger::take(const Entry& entry) {
  EntryBuffer& pending = state_->pending;
  EntryBuffer::Outcome outcome = pending.add(entry, formatter().get());
  if (outcome == EntryBuffer::Outcome::noRoom && waitForRoom()) outcome = pending.add(entry, formatter().get());
  if (outcome == EntryBuffer::Outcome::noRoom) state_->reports.lost();
  if (pending.isFull()) start();
  return outcome == EntryBuffer::Outcome::taken;
}

/// Waits for a server that takes entries, but more slowly than they arrive. Returns whether there is room.
bool DDPostgreSQLLogger::waitForRoom() {
  State& state = *state_;
  if (state.isStalled || state.reports.isFailing()) return false;
  const dispatch_time_t deadline = dispatch_time(DISPATCH_TIME_NOW, nanoseconds(state.timeout));
  start();
  while (state.isBusy && state.pending.isFull()) {
    if (dispatch_group_wait(state.working, deadline) != 0) {
      state.isStalled = true;
      return false;
    }
    start();
  }
  return !state.pending.isFull();
}

bool DDPostgreSQLLogger::db_log(const DDLogMessage& message) { return take(message); }
bool DDPostgreSQLLogger::db_logEntry(const DDLogEntry& entry) { return take(entry); }
bool DDPostgreSQLLogger::takesRuns() const noexcept { return typeid(*this) == typeid(DDPostgreSQLLogger); }

// Saving and deleting

void DDPostgreSQLLogger::db_save() { start(); }

void DDPostgreSQLLogger::db_delete() {
  state_->wantsDelete = true;
  start();
}

void DDPostgreSQLLogger::db_saveAndDelete() {
  state_->wantsDelete = maxAge() > 0;
  start();
}

/// Hands the server to a thread, with the entries to write and the deletion.
void DDPostgreSQLLogger::start() {
  finish();
  State& state = *state_;
  if (state.isBusy) {
    state.wantsSave = true;
    return;
  }
  if (state.reports.isFailing() && kernel::monotonicNanoseconds() < state.nextTry) {
    state.wantsSave = true;
    return;
  }
  Server& server = *state.server;
  if (server.batch.count() == 0) {
    state.wantsSave = false;
    std::swap(state.pending, server.batch);
    server.written = 0;
    state.batchBytes = server.batch.bytes();
    state.divideRoom();
  }
  server.deleteAge = std::exchange(state.wantsDelete, false) ? maxAge() : 0;
  if (server.batch.count() == 0 && !(server.deleteAge > 0)) return;
  server.patience = nanoseconds(state.timeout);
  state.isBusy = true;
  dispatch_group_enter(state.working);
  dispatch_async(state.queue, [server = state.server, working = state.working, queue = loggerQueue(),
                               logger = Weak<DDPostgreSQLLogger>(this)] {
    server->work();
    dispatch_group_leave(working);
    dispatch_async(queue, [logger] {
      if (const Ref<DDPostgreSQLLogger> alive = logger.lock()) alive->goOn();
    });
  });
}

/// Takes the server back if the thread is done with it.
void DDPostgreSQLLogger::finish() {
  State& state = *state_;
  if (!state.isBusy || dispatch_group_wait(state.working, DISPATCH_TIME_NOW) != 0) return;
  state.isBusy = false;
  state.isStalled = false;
  Server& server = *state.server;
  if (server.refused > 0) state.reports.refused(server.refused, server.refusal);
  if (!server.failure.empty()) {
    state.reports.failed(server.failure);
    if (server.deleteAge > 0) state.wantsDelete = true;
    return tryAgainLater();
  }
  server.batch.clear();
  state.batchBytes = 0;
  state.divideRoom();
  state.nextTry = 0;
  state.pause = shortestPause;
  state.reports.worked();
  if (!server.deleteFailure.empty()) {
    state.reports.failedToDelete(server.deleteFailure);
  } else if (!server.isDeleteFinished) {
    state.wantsDelete = true;
  } else if (server.deleteAge > 0) {
    state.reports.deleted();
  }
}

void DDPostgreSQLLogger::tryAgainLater() {
  const std::int64_t pause = std::exchange(state_->pause, std::min(2 * state_->pause, longestPause));
  state_->nextTry = kernel::monotonicNanoseconds() + pause;
  dispatch_after(dispatch_time(DISPATCH_TIME_NOW, pause), loggerQueue(), [logger = Weak<DDPostgreSQLLogger>(this)] {
    if (const Ref<DDPostgreSQLLogger> alive = logger.lock()) alive->start();
  });
}

/// Called when the thread is done.
void DDPostgreSQLLogger::goOn() {
  finish();
  if (state_->wantsSave || state_->wantsDelete) start();
}

/// Returns when all is saved, when the timeout has passed, or when one further attempt has failed.
void DDPostgreSQLLogger::waitUntilSaved() {
  State& state = *state_;
  const dispatch_time_t deadline = dispatch_time(DISPATCH_TIME_NOW, nanoseconds(state.timeout));
  bool isTried = false;
  for (;;) {
    finish();
    if (!state.isBusy) {
      if (state.pending.count() + state.batchCount() == 0) return;
      if (state.reports.isFailing()) {
        if (std::exchange(isTried, true)) return;
        state.nextTry = 0;
      }
      start();
    }
    if (dispatch_group_wait(state.working, deadline) != 0) return;
  }
}

void DDPostgreSQLLogger::flush() {
  DDAbstractDatabaseLogger::flush();
  waitUntilSaved();
}

void DDPostgreSQLLogger::willRemoveLogger() {
  DDAbstractDatabaseLogger::willRemoveLogger();
  waitUntilSaved();
  if (!state_->isBusy) state_->server->writer.close();
}

void DDPostgreSQLLogger::db_forget() {
  State& state = *state_;
  state.server->writer.abandon();
  (void)new std::shared_ptr<Server>(std::move(state.server));  // not destroyed: its contents are the parent's
  state.begin();
  state.pending.clear();
  state.batchBytes = 0;
  state.divideRoom();
  state.isBusy = state.wantsSave = state.wantsDelete = state.isStalled = false;
  state.nextTry = 0;
  state.pause = shortestPause;
  state.reports.forget();
}

}  // namespace norvik
