#include "NorvikCore/platform/kernel/SyslogClient.h"

#include "NorvikCore/platform/kernel/Clock.h"
#include "NorvikCore/platform/kernel/FileDescriptor.h"
#include "NorvikCore/platform/kernel/FileStatus.h"
#include "NorvikCore/platform/kernel/Fork.h"
#include "NorvikCore/platform/kernel/HostInfo.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/kernel/Mutex.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <bit>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <new>
#include <utility>

namespace norvik::kernel {
namespace {

constexpr std::size_t mostWaiting = 1000, mostWaitingBytes = 1 << 20, longestLine = 64 << 10, keptMemory = 256 << 10;
constexpr std::int64_t second = 1'000'000'000, patience = 5 * second;
constexpr int attemptsPerSecond = 10;
constexpr int facility = 1;                // "user-level messages"
constexpr int wantedSendBuffer = 8 << 20;  // bytes; for large entries of the journal
constexpr int firstOwnDescriptor = 3;      // after the standard ones

struct Places {
  Mutex mutex;
  std::string journal NK_GUARDED_BY(mutex) = "/run/systemd/journal/socket";
  std::string lines NK_GUARDED_BY(mutex) = "/dev/log";
};

Places& places() {
  return madeOnce([] { return new Places; });
}

constinit std::atomic<std::uint32_t> placesRevision{0};

bool isFull(int error) noexcept { return error == EAGAIN; }

// Encoding

void appendField(std::string& entry, std::string_view name, std::string_view value) {
  entry += name;
  if (value.find('\n') == value.npos) {
    entry += '=';
  } else {
    entry += '\n';
    for (unsigned shift = 0; shift < 64; shift += 8) {
      entry += static_cast<char>(static_cast<std::uint64_t>(value.size()) >> shift & 0xFF);
    }
  }
  entry += value;
  entry += '\n';
}

void appendKnownField(std::string& entry, std::string_view name, std::string_view value) {
  if (!value.empty()) appendField(entry, name, value);
}

void appendNumberField(std::string& entry, std::string_view name, std::int64_t value) {
  appendField(entry, name, std::to_string(value));
}

void appendJournalEntry(std::string& out, const SyslogEntry& entry, std::string_view identity) {
  appendField(out, "MESSAGE", entry.text);
  appendNumberField(out, "PRIORITY", entry.level);
  appendNumberField(out, "SYSLOG_FACILITY", facility);
  appendField(out, "SYSLOG_IDENTIFIER", identity);
  appendKnownField(out, "CODE_FILE", entry.file);
  if (entry.line != 0) appendNumberField(out, "CODE_LINE", entry.line);
  appendKnownField(out, "CODE_FUNC", entry.function);
  if (entry.threadId != 0) appendNumberField(out, "TID", entry.threadId);
  appendKnownField(out, "THREAD_NAME", entry.threadName);
  appendKnownField(out, "QUEUE_LABEL", entry.queueLabel);
}

bool isContinuation(char byte) noexcept { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

void appendOctal(std::string& out, unsigned char byte) {
  out += '#';
  for (const unsigned shift : {6U, 3U, 0U}) out += static_cast<char>('0' + ((byte >> shift) & 7));
}

/// The number of bytes of the control character that begins there; 0 for another character.
std::size_t controlSize(std::string_view text, std::size_t at) noexcept {
  const auto byte = static_cast<unsigned char>(text[at]);
  if ((byte < 0x20 && byte != '\t') || byte == 0x7F) return 1;
  const auto next = at + 1 < text.size() ? static_cast<unsigned char>(text[at + 1]) : 0U;
  return byte == 0xC2 && next >= 0x80 && next < 0xA0 ? 2 : 0;
}

/// Makes any text one line: its control characters, including those of two bytes, are written as numbers.
void appendEscaped(std::string& out, std::string_view text) {
  std::size_t plainFrom = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const std::size_t size = controlSize(text, i);
    if (size == 0) continue;
    out += text.substr(plainFrom, i - plainFrom);
    for (const char c : text.substr(i, size)) appendOctal(out, static_cast<unsigned char>(c));
    plainFrom = i + size;
    i = plainFrom - 1;
  }
  out += text.substr(plainFrom);
}

constexpr std::size_t escapedSize = 4;  // the size of a byte that is written as a number

/// How many bytes of the text need no more than `room` after escaping; whole characters only.
std::size_t sizeThatFits(std::string_view text, std::size_t room) noexcept {
  std::size_t at = 0;
  for (std::size_t length = 0; at < text.size();) {
    const std::size_t size = controlSize(text, at);
    length += size == 0 ? 1 : size * escapedSize;
    if (length > room) break;
    at += std::max<std::size_t>(size, 1);
  }
  while (at > 0 && at < text.size() && isContinuation(text[at])) --at;
  return at;
}

void appendLine(std::string& out, const SyslogEntry& entry, std::string_view identity) {
  using namespace std::chrono;
  constexpr const char* months[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  const sys_seconds when{seconds(entry.localSeconds)};
  const sys_days day = floor<days>(when);
  const year_month_day date(day);
  const hh_mm_ss time(when - day);
  char head[64];
  std::snprintf(head, sizeof head, "<%d>%s %2u %02d:%02d:%02d ", facility * 8 + entry.level,
                months[static_cast<unsigned>(date.month()) - 1], static_cast<unsigned>(date.day()),
                static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                static_cast<int>(time.seconds().count()));
  out += head;
  out += identity;
  out += "[" + std::to_string(processId()) + "]: ";
  constexpr std::string_view cutMark = "[cut]";
  const bool isWhole =
      entry.text.size() <= longestLine / escapedSize || sizeThatFits(entry.text, longestLine) == entry.text.size();
  if (isWhole) return appendEscaped(out, entry.text);
  appendEscaped(out, entry.text.substr(0, sizeThatFits(entry.text, longestLine - cutMark.size())));
  out += cutMark;
}

}  // namespace

SyslogPlaces::SyslogPlaces(std::string journal, std::string lines)
    : journalBefore_(std::move(journal)), linesBefore_(std::move(lines)) {
  const MutexLock lock(places().mutex);
  std::swap(places().journal, journalBefore_);
  std::swap(places().lines, linesBefore_);
  ++placesRevision;
}

SyslogPlaces::~SyslogPlaces() {
  const MutexLock lock(places().mutex);
  std::swap(places().journal, journalBefore_);
  std::swap(places().lines, linesBefore_);
  ++placesRevision;
}

// The connection

SyslogClient::SyslogClient(std::string identity) : SyslogClient(std::move(identity), systemClock()) {}

SyslogClient::SyslogClient(std::string identity, const ClockSource& clock)
    : identity_(std::move(identity)), clock_(clock) {
  generation_ = forkGeneration();
  revision_ = placesRevision;
  (void)connect();
}

SyslogClient::~SyslogClient() { disconnect(); }

/// Handles changes since the last entry: a fork of the process, or other sockets.
void SyslogClient::follow() {
  if (generation_ != forkGeneration()) {
    generation_ = forkGeneration();
    waiting_.clear();
    waitingBytes_ = sentOfFirst_ = 0;
    if (service_ == Service::stream) disconnect();  // parts of lines from two writers would mix
  }
  if (const std::uint32_t revision = placesRevision.load(std::memory_order_relaxed); revision_ != revision) {
    revision_ = revision;
    attempts_ = 0;
    disconnect();
    loseWaiting(ENOTCONN);  // they were for the former socket
  }
}

int SyslogClient::connect() {
  const std::int64_t now = clock_.monotonicNanoseconds();
  if (now - attemptsSince_ >= second || attempts_ == 0) {
    attemptsSince_ = now;
    attempts_ = 0;
  }
  if (++attempts_ > attemptsPerSecond) return lastError_ != 0 ? lastError_ : ENOTCONN;
  std::string journal, lines;
  {
    const MutexLock lock(places().mutex);
    journal = places().journal;
    lines = places().lines;
  }
  if (connectTo(journal, SOCK_DGRAM, Service::journal) == 0) return 0;
  const int error = connectTo(lines, SOCK_DGRAM, Service::datagrams);
  return error == EPROTOTYPE ? connectTo(lines, SOCK_STREAM, Service::stream) : error;
}

int SyslogClient::connectTo(const std::string& path, int type, Service service) {
  sockaddr_un address{};
  if (path.size() >= sizeof address.sun_path) return ENAMETOOLONG;
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, path.size());
  FileDescriptor opened(::socket(AF_UNIX, type | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  if (!opened.isOpen()) return errno;
  if (opened.get() < firstOwnDescriptor) {
    opened = FileDescriptor(fcntl(opened.get(), F_DUPFD_CLOEXEC, firstOwnDescriptor));
    if (!opened.isOpen()) return errno;
  }
  if (::connect(opened.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) return errno;
  struct stat status {};
  if (fstat(opened.get(), &status) != 0) return errno;
  if (service == Service::journal) {
    (void)setsockopt(opened.get(), SOL_SOCKET, SO_SNDBUF, &wantedSendBuffer, sizeof wantedSendBuffer);
  }
  disconnect();
  if (service != service_) loseWaiting(ENOTCONN);  // encoded for another service
  sentOfFirst_ = 0;
  device_ = status.st_dev;
  inode_ = status.st_ino;
  socket_ = opened.release();
  service_ = service;
  return 0;
}

bool SyslogClient::ownsSocket() const noexcept { return isOpenFile(socket_, device_, inode_); }

/// Does not close a number that now refers to another file.
void SyslogClient::disconnect() noexcept {
  if (ownsSocket()) ::close(socket_);
  socket_ = -1;
}

// Sending

void SyslogClient::encode(const SyslogEntry& entry) {
  if (entry_.capacity() > keptMemory) entry_ = {};
  entry_.clear();
  if (service_ == Service::journal) return appendJournalEntry(entry_, entry, identity_);
  appendLine(entry_, entry, identity_);
  if (service_ == Service::stream) entry_ += '\0';
}

int SyslogClient::transmit(std::string_view bytes, std::size_t& sent) {
  if (!ownsSocket()) {
    socket_ = -1;
    return ENOTCONN;
  }
  do {
    const ssize_t count = ::send(socket_, bytes.data() + sent, bytes.size() - sent, MSG_DONTWAIT | MSG_NOSIGNAL);
    if (count >= 0) {
      sent += static_cast<std::size_t>(count);
    } else if (errno != EINTR) {
      const int error = errno;
      const bool isLarge = error == EMSGSIZE || error == ENOBUFS;
      return isLarge && service_ == Service::journal ? transmitFile(bytes) : error;
    }
  } while (sent < bytes.size());
  ++taken_;
  return 0;
}

/// Sends an entry that is too large for a datagram as a file in memory, sealed against changes.
int SyslogClient::transmitFile(std::string_view bytes) noexcept {
  const FileDescriptor file(memfd_create("norvik-journal-entry", MFD_CLOEXEC | MFD_ALLOW_SEALING));
  if (!file.isOpen()) return errno;
  if (const int error = writeAll(file.get(), bytes)) return error;
  if (fcntl(file.get(), F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE | F_SEAL_SEAL) != 0) return errno;
  alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
  msghdr message{};
  message.msg_control = control;
  message.msg_controllen = sizeof control;
  cmsghdr* const head = CMSG_FIRSTHDR(&message);
  head->cmsg_level = SOL_SOCKET;
  head->cmsg_type = SCM_RIGHTS;
  head->cmsg_len = CMSG_LEN(sizeof(int));
  const int number = file.get();
  std::memcpy(CMSG_DATA(head), &number, sizeof number);
  ssize_t result = 0;
  do result = ::sendmsg(socket_, &message, MSG_DONTWAIT | MSG_NOSIGNAL);
  while (result < 0 && errno == EINTR);
  if (result < 0) return errno;
  ++taken_;
  return 0;
}

bool SyslogClient::drain() {
  for (bool isRepeated = false; !waiting_.empty();) {
    const int error = socket_ < 0 ? ENOTCONN : transmit(waiting_.front(), sentOfFirst_);
    if (isFull(error)) {
      if (clock_.monotonicNanoseconds() - waitingSince_ < patience) return false;
      if (sentOfFirst_ > 0) disconnect();  // part of a line is in the stream, so the next line needs a new one
      loseWaiting(error);
      return false;
    }
    if (error == 0 || error == EMSGSIZE) {
      if (error != 0) lose(error);
      waitingBytes_ -= waiting_.front().size();
      waiting_.pop_front();
      sentOfFirst_ = 0;
      waitingSince_ = clock_.monotonicNanoseconds();
      isRepeated = false;
      continue;
    }
    disconnect();
    const int refused = std::exchange(isRepeated, true) ? error : connect();
    if (refused != 0) {
      loseWaiting(refused);
      return true;
    }
  }
  return true;
}

void SyslogClient::log(const SyslogEntry& entry) {
  try {
    transmitOrKeep(entry);
  } catch (const std::bad_alloc&) {
    lose(ENOMEM);
  }
}

void SyslogClient::loseUnformed() noexcept { lose(ENOMEM); }

void SyslogClient::transmitOrKeep(const SyslogEntry& entry) {
  follow();
  const bool isFree = drain();
  int error = 0;
  for (int round = 0; round < 2; ++round) {
    if (socket_ < 0) {
      error = connect();
      if (error != 0) break;
    }
    if (!isFree && !mayWait(std::min(entry.text.size(), longestLine))) return lose(EAGAIN);
    encode(entry);
    if (!isFree) return keep(entry_, 0);
    std::size_t sent = 0;
    error = transmit(entry_, sent);
    if (error == 0) return;
    if (isFull(error)) return keep(entry_, sent);
    if (error == EMSGSIZE) break;
    disconnect();  // and try once more: the service may have been restarted
  }
  lose(error);
}

void SyslogClient::sendWaiting() {
  try {
    follow();
    (void)drain();
  } catch (const std::bad_alloc&) {  // while connecting; the entries wait for the next attempt
    return;
  }
}

bool SyslogClient::mayWait(std::size_t size) const noexcept {
  return waiting_.size() < mostWaiting && waitingBytes_ + size <= mostWaitingBytes;
}

void SyslogClient::keep(std::string_view bytes, std::size_t sent) {
  const bool isBegun = sent > 0;  // a part of the line is in the stream already
  if (!isBegun && !mayWait(bytes.size())) return lose(EAGAIN);
  if (waiting_.empty()) {
    waitingSince_ = clock_.monotonicNanoseconds();
    sentOfFirst_ = sent;
  }
  waiting_.emplace_back(bytes);
  waitingBytes_ += bytes.size();
}

void SyslogClient::lose(int error, std::uint64_t entries) noexcept {
  lost_ += entries;
  lastError_ = error;
}

void SyslogClient::loseWaiting(int error) noexcept {
  if (waiting_.empty()) return;
  lose(error, waiting_.size());
  waiting_.clear();
  waitingBytes_ = sentOfFirst_ = 0;
}

}  // namespace norvik::kernel
