#include "PostgresSource.h"

#include <dlfcn.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <new>
#include <stdexcept>
#include <utility>

namespace norvik_log {
namespace {

// Declarations from libpq's header, so that the program is built without the header.
struct PGconn;
struct PGresult;
constexpr int connectionIsMade = 0, commandIsDone = 1, rowsAreThere = 2, oneRowIsThere = 9, serverAnswers = 0;

/// The functions of libpq. They are loaded once and stay loaded until the process ends.
struct Library {
  PGconn* (*connect)(const char* const*, const char* const*, int) = nullptr;
  int (*ping)(const char* const*, const char* const*, int) = nullptr;
  int (*status)(const PGconn*) = nullptr;
  char* (*errorMessage)(const PGconn*) = nullptr;
  void (*finish)(PGconn*) = nullptr;
  int (*send)(PGconn*, const char*) = nullptr;
  int (*takeRowsOneByOne)(PGconn*) = nullptr;
  int (*socket)(const PGconn*) = nullptr;
  int (*isBusy)(PGconn*) = nullptr;
  int (*consumeInput)(PGconn*) = nullptr;
  PGresult* (*result)(PGconn*) = nullptr;
  int (*resultStatus)(const PGresult*) = nullptr;
  int (*rowCount)(const PGresult*) = nullptr;
  char* (*value)(const PGresult*, int, int) = nullptr;
  int (*length)(const PGresult*, int, int) = nullptr;
  void (*clear)(PGresult*) = nullptr;
  void* (*parse)(const char*, char**) = nullptr;
  void (*freeOptions)(void*) = nullptr;
  void (*freeMemory)(void*) = nullptr;
  bool isLoaded = false;
};

template <class Function>
bool find(void* library, const char* name, Function& function) {
  function = reinterpret_cast<Function>(::dlsym(library, name));
  return function != nullptr;
}

const Library& library() {
  static const Library loaded = [] {
    Library result;
    void* const handle = ::dlopen("libpq.so.5", RTLD_NOW | RTLD_LOCAL);
    result.isLoaded =
        handle != nullptr && find(handle, "PQconnectdbParams", result.connect) &&
        find(handle, "PQpingParams", result.ping) && find(handle, "PQstatus", result.status) &&
        find(handle, "PQerrorMessage", result.errorMessage) && find(handle, "PQfinish", result.finish) &&
        find(handle, "PQsendQuery", result.send) && find(handle, "PQsetSingleRowMode", result.takeRowsOneByOne) &&
        find(handle, "PQsocket", result.socket) && find(handle, "PQisBusy", result.isBusy) &&
        find(handle, "PQconsumeInput", result.consumeInput) && find(handle, "PQgetResult", result.result) &&
        find(handle, "PQresultStatus", result.resultStatus) && find(handle, "PQntuples", result.rowCount) &&
        find(handle, "PQgetvalue", result.value) && find(handle, "PQgetlength", result.length) &&
        find(handle, "PQclear", result.clear) && find(handle, "PQconninfoParse", result.parse) &&
        find(handle, "PQconninfoFree", result.freeOptions) && find(handle, "PQfreemem", result.freeMemory);
    return result;
  }();
  return loaded;
}

/// True if libpq can parse the address. libpq's error message is not used, because it may contain the password.
bool isUnderstood(const std::string& address) {
  char* message = nullptr;
  void* const options = library().parse(address.c_str(), &message);
  if (message != nullptr) library().freeMemory(message);
  if (options != nullptr) library().freeOptions(options);
  return options != nullptr;
}

/// The part between "://" and the options: user, password, hosts and database. A "?" belongs to a password if an "@"
/// follows it without a "=" between them.
std::string_view placeOf(std::string_view address) {
  const std::string_view rest = address.substr(address.find("://") + 3);
  std::size_t options = rest.find('?');
  for (std::size_t at; options != rest.npos && (at = rest.find('@', options)) != rest.npos;) {
    if (rest.substr(options, at - options).find('=') != rest.npos) break;
    options = rest.find('?', at);
  }
  return rest.substr(0, options);
}

/// True if libpq would take a part of the password for a host or a port. Its messages would then contain that part.
bool mayNamePassword(std::string_view address) {
  const std::string_view place = placeOf(address);
  const std::size_t last = place.rfind('@');
  return last != place.npos && place.find_first_of("/@") < last;
}

using Result = std::unique_ptr<PGresult, decltype([](PGresult* result) { library().clear(result); })>;

std::int64_t numberIn(std::string_view text) {
  std::int64_t number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

}  // namespace

std::string shownAddress(std::string_view address) {
  const std::string_view place = placeOf(address);
  const std::size_t begin = address.find("://") + 3;
  return std::string(address.substr(0, begin)) + std::string(place.substr(place.rfind('@') + 1));  // npos + 1 is 0
}

/// Every function throws std::runtime_error if the server fails, does not answer in time, or stop() was called.
struct PostgresSource::Connection {
  PGconn* handle = nullptr;
  std::chrono::seconds patience{0};
  int stopping = -1;

  Connection() = default;
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection() {
    if (handle != nullptr) library().finish(handle);
  }

  enum class Rows { Together, OneByOne };
  void send(const std::string& statement, Rows rows = Rows::Together) const {
    if (library().send(handle, statement.c_str()) != 1) throw failure();
    if (rows == Rows::OneByOne) library().takeRowsOneByOne(handle);
  }

  /// The next result of the statement that was sent; null after the last one.
  [[nodiscard]] Result take() const {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point deadline = Clock::now() + patience;
    while (library().isBusy(handle) == 1) {
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
      if (left <= 0)
        throw std::runtime_error("the server has not answered for " + std::to_string(patience.count()) + " s");
      pollfd awaited[] = {{library().socket(handle), POLLIN, 0}, {stopping, POLLIN, 0}};
      if (::poll(awaited, 2, static_cast<int>(left)) <= 0) continue;
      if (awaited[1].revents != 0) throw std::runtime_error("reading was stopped");
      if (library().consumeInput(handle) != 1) throw failure();
    }
    return Result(library().result(handle));
  }

  /// The last result of a statement.
  [[nodiscard]] Result answerTo(const std::string& statement, int status) const {
    send(statement);
    Result last;
    while (Result next = take()) last = std::move(next);
    if (!last || library().resultStatus(last.get()) != status) throw failure();
    return last;
  }

  void run(const std::string& statement) const { (void)answerTo(statement, commandIsDone); }

  /// The first column of a statement's rows.
  [[nodiscard]] std::set<std::string> column(const std::string& statement) const {
    const Result rows = answerTo(statement, rowsAreThere);
    std::set<std::string> values;
    for (int row = 0; row < library().rowCount(rows.get()); ++row) values.insert(library().value(rows.get(), row, 0));
    return values;
  }

  [[nodiscard]] std::runtime_error failure() const { return std::runtime_error(library().errorMessage(handle)); }
};

PostgresSource::PostgresSource(const std::string& address, const Reading& reading)
    : address_(address),
      reading_(reading),
      name_(shownAddress(address)),
      check_(reading.filter),
      stopping_(::eventfd(0, EFD_CLOEXEC)) {}

PostgresSource::~PostgresSource() {
  if (stopping_ >= 0) ::close(stopping_);
}

void PostgresSource::stop() noexcept {
  isStopped_ = true;
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t written = ::write(stopping_, &one, sizeof one);
}

/// Connects if there is no connection, and begins a reading.
void PostgresSource::begin() {
  isBegun_ = true;
  std::string subject;
  try {
    if (!connection_) connect();
    subject = "cannot be read: ";
    beginReading();
  } catch (const std::runtime_error& error) {
    fail(subject + error.what());
  }
}

void PostgresSource::connect() {
  isHopeless_ = true;
  if (!library().isLoaded) throw std::runtime_error("libpq.so.5 is not installed");
  if (mayNamePassword(address_)) {
    throw std::runtime_error(
        "is not a URL that libpq understands; in a user name or a password, write @ as %40 and / as %2F");
  }
  if (!isUnderstood(address_)) throw std::runtime_error("is not a URL that libpq understands");
  // Settings in the address take precedence over these.
  constexpr std::chrono::seconds first(10), again(2);
  const std::string patience = std::to_string(std::min(reading_.patience, wasConnected_ ? again : first).count());
  const char* const names[] = {"connect_timeout", "fallback_application_name", "client_encoding", "dbname", nullptr};
  const char* const values[] = {patience.c_str(), "norvik-log", "UTF8", address_.c_str(), nullptr};
  auto connection = std::make_unique<Connection>();
  connection->patience = reading_.patience;
  connection->stopping = stopping_;
  connection->handle = library().connect(names, values, 1);
  if (connection->handle == nullptr) throw std::bad_alloc();
  const bool isMade = library().status(connection->handle) == connectionIsMade;
  wasConnected_ |= isMade;
  // If the server answers now, it has refused the user, and another attempt would fail too.
  isHopeless_ = !wasConnected_ && library().ping(names, values, 1) == serverAnswers;
  if (!isMade) throw std::runtime_error("cannot be reached: " + std::string(connection->failure().what()));
  connection_ = std::move(connection);
}

/// Which numbers are complete: a transaction takes this lock on the table before its entry gets a number, and holds it
/// until the entry is committed. So a reading that begins after a look at the locks has all numbers that were given
/// before the look, except those of the transactions that the look found.
void PostgresSource::beginReading() {
  isFetching_ = false;
  // The server gives up a locked table before the patience ends, so that new attempts do not leave more and more
  // transactions that wait for the lock.
  const auto lockPatience = std::chrono::milliseconds(reading_.patience) * 9 / 10;
  connection_->run("BEGIN TRANSACTION ISOLATION LEVEL READ COMMITTED READ ONLY; SET LOCAL lock_timeout = " +
                   std::to_string(lockPatience.count()));
  const auto highest = connection_->column("SELECT coalesce(max(id), 0) FROM norvik_log");
  const auto first = connection_->column("SELECT id || ' ' || time FROM norvik_log ORDER BY id LIMIT 1");
  const auto writers = connection_->column(
      "SELECT virtualtransaction FROM pg_locks WHERE locktype = 'relation' AND mode = 'RowExclusiveLock' AND granted "
      "AND relation = 'norvik_log'::regclass AND database = (SELECT oid FROM pg_database WHERE datname = "
      "current_database())");
  const std::int64_t number = highest.empty() ? 0 : numberIn(*highest.begin());
  const bool hasOneEnded = !std::includes(writers.begin(), writers.end(), writers_.begin(), writers_.end());
  isAtEnd_ = !isBehind_ && !hasOneEnded && number == highest_;
  if (isAtEnd_) return connection_->run("ROLLBACK");
  const bool isEmptied = first.empty() || numberIn(*first.begin()) < numberIn(first_) ||
                         (numberIn(*first.begin()) == numberIn(first_) && *first.begin() != first_);
  first_ = first.empty() ? "" : *first.begin();
  if (number < highest_ && isEmptied) {  // the table may have begun its numbers again
    low_ = 0;
    read_.clear();
    mark_.reset();
  }
  if (mark_) {
    std::erase_if(mark_->writers, [&](const std::string& writer) { return !writers.contains(writer); });
  } else {
    mark_ = Mark{number, writers};
  }
  highest_ = number;
  writers_ = writers;
  isBehind_ = true;
  connection_->run(declaration());
}

void PostgresSource::fail(std::string_view reason) {
  std::string sentence;  // one line, because libpq's messages have several lines
  for (const char c : reason) {
    const bool isBlank = c == '\n' || c == '\t' || c == ' ';
    if (!isBlank) {
      sentence += c;
    } else if (!sentence.ends_with(' ')) {
      sentence += ' ';
    }
  }
  if (sentence.ends_with(' ')) sentence.pop_back();
  if (!isStopped_ && !std::exchange(isFailureSaid_, true)) reading_.troubles.report(name_, sentence);
  connection_.reset();
  nextTry_ = std::chrono::steady_clock::now() + pause_;
  constexpr std::chrono::seconds longestPause(30);
  pause_ = std::min(2 * pause_, longestPause);
}

std::string PostgresSource::declaration() const {
  const Filter& filter = reading_.filter;
  std::string statement =
      "DECLARE entries NO SCROLL CURSOR FOR SELECT id, CASE WHEN isfinite(time) "
      "THEN floor(extract(epoch FROM time) * 1000)::bigint WHEN time > now() THEN 9223372036854775807 "
      "ELSE -9223372036854775807 END, level, thread, "
      "queue, file, line, machine, program, process, text FROM norvik_log WHERE id > " +
      std::to_string(low_);
  const auto moment = [](std::int64_t milliseconds) {
    return "to_timestamp(" + std::to_string(milliseconds) + "::numeric / 1000)";
  };
  // A millisecond more at each end, because stored times are finer. The filter checks the times again.
  if (filter.since) statement += " AND time >= " + moment(*filter.since - 1);
  if (filter.until) statement += " AND time < " + moment(*filter.until + 1);
  if (filter.level) {
    statement += " AND level IN (" + std::to_string(*filter.level);
    for (const int flag : {1, 2, 4, 8, 16}) {
      if (filter.admitsLevel(flag)) statement += "," + std::to_string(flag);
    }
    statement += ")";
  }
  return statement + " ORDER BY time, id";
}

void PostgresSource::lookAgain() {
  if (connection_ && !isAtEnd_) return;
  if (!connection_ && isBegun_ && (isHopeless_ || std::chrono::steady_clock::now() < nextTry_)) return;
  begin();
}

bool PostgresSource::isNew(std::int64_t number) {
  constexpr std::size_t kept = 50'000;
  if (number <= low_ || !read_.insert(number).second) return false;
  if (read_.size() > kept) {
    low_ = *read_.begin();
    read_.erase(read_.begin());
  }
  return true;
}

std::string_view PostgresSource::sourceOf(std::string_view machine, std::string_view program,
                                          std::string_view process) {
  std::string source = name_ + " ";
  source += machine;
  source += ' ';
  source += program;
  source += '[';
  source += process;
  source += ']';
  return *sources_.insert(std::move(source)).first;
}

bool PostgresSource::next(Batch& batch) {
  if (!isBegun_) begin();
  if (!connection_ || isAtEnd_) return false;
  try {
    readRows(batch);
  } catch (const std::runtime_error& error) {
    fail(std::string("cannot be read further: ") + error.what());
    return false;
  }
  reportGivenUp(check_.takeGivenUp(), name_, reading_.troubles);
  return !isAtEnd_;
}

/// Fetches row by row, so that the use of memory is bounded whatever the size of the texts.
void PostgresSource::readRows(Batch& batch) {
  constexpr std::size_t enough = 256 << 10;
  if (!std::exchange(isFetching_, true)) {
    fetched_ = 0;
    connection_->send("FETCH 2000 FROM entries", Connection::Rows::OneByOne);
  }
  while (batch.weight() < enough) {
    const Result row = connection_->take();
    if (!row) {
      isFetching_ = false;
      if (fetched_ == 0) endReading();
      return;
    }
    const int status = library().resultStatus(row.get());
    if (status == rowsAreThere) continue;  // the end of this fetch
    if (status != oneRowIsThere) throw connection_->failure();
    ++fetched_;
    const auto at = [&](int column) {
      return std::string_view(library().value(row.get(), 0, column),
                              static_cast<std::size_t>(library().length(row.get(), 0, column)));
    };
    if (!isNew(numberIn(at(0)))) continue;
    DatabaseEntry entry;
    entry.time = std::clamp(numberIn(at(1)), earliestTime, latestTime);
    entry.flag = static_cast<int>(numberIn(at(2)));
    entry.thread = at(3);
    entry.queue = at(4);
    entry.file = at(5);
    entry.line = static_cast<int>(numberIn(at(6)));
    entry.text = at(10);
    addEntry(entry, check_, sourceOf(at(7), at(8), at(9)), batch);
  }
}

void PostgresSource::endReading() {
  isAtEnd_ = true;
  isBehind_ = false;
  isFailureSaid_ = false;
  pause_ = std::chrono::seconds(1);
  if (mark_ && mark_->writers.empty()) {
    low_ = std::max(low_, mark_->number);
    read_.erase(read_.begin(), read_.upper_bound(low_));
    mark_.reset();
  }
  connection_->run("ROLLBACK");
}

}  // namespace norvik_log
