// tests/support/LogServices.h - sockets that act as the system's log services: the journal, whose entries are parsed
// into fields, and a syslog daemon for datagrams or for a stream.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace norvik::test {

using JournalFields = std::multimap<std::string, std::string>;

/// The fields of an entry in the journal's native protocol. A malformed entry fails the test.
inline JournalFields journalFields(const std::string& entry) {
  JournalFields fields;
  for (std::size_t at = 0; at < entry.size();) {
    const std::size_t end = entry.find('\n', at);
    if (end == entry.npos) {
      ADD_FAILURE() << "a field without an end";
      break;
    }
    const std::size_t sign = entry.find('=', at);
    if (sign < end) {
      fields.emplace(entry.substr(at, sign - at), entry.substr(sign + 1, end - sign - 1));
      at = end + 1;
      continue;
    }
    std::uint64_t size = 0;
    if (entry.size() - end - 1 < sizeof size) {
      ADD_FAILURE() << "a field without its size";
      break;
    }
    std::memcpy(&size, entry.data() + end + 1, sizeof size);
    const std::size_t from = end + 1 + sizeof size;
    if (entry.size() - from < size + 1 || entry[from + size] != '\n') {
      ADD_FAILURE() << "a field that is not as long as it says";
      break;
    }
    fields.emplace(entry.substr(at, end - at), entry.substr(from, size));
    at = from + size + 1;
  }
  return fields;
}

/// The only value of that name; "(none)" or "(several)" if there is not exactly one.
inline std::string fieldOf(const JournalFields& fields, const std::string& name) {
  if (fields.count(name) != 1) return fields.count(name) == 0 ? "(none)" : "(several)";
  return fields.find(name)->second;
}

class LogService {
 public:
  LogService(std::string path, int type) : path_(std::move(path)), isStream_(type == SOCK_STREAM) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    EXPECT_LT(path_.size(), sizeof address.sun_path);
    path_.copy(address.sun_path, sizeof address.sun_path - 1);
    unlink(path_.c_str());
    socket_ = socket(AF_UNIX, type | SOCK_CLOEXEC, 0);
    EXPECT_EQ(bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0) << path_;
    if (isStream_) {
      EXPECT_EQ(listen(socket_, 8), 0);
    }
  }
  LogService(const LogService&) = delete;
  LogService& operator=(const LogService&) = delete;
  ~LogService() {
    for (const int stream : streams_) close(stream);
    close(socket_);
    unlink(path_.c_str());
  }

  /// The next entry; "(nothing)" if none arrives within ten seconds. If the entry is sent as a file, the file's content
  /// is returned.
  std::string receive() {
    if (isStream_) return receiveFromStream();
    return waitFor(socket_) ? receiveDatagram() : "(nothing)";
  }
  /// True if an entry has arrived already.
  bool hasMore() {
    pollfd one{socket_, POLLIN, 0};
    return poll(&one, 1, 0) == 1;
  }
  [[nodiscard]] int filesReceived() const { return files_; }
  [[nodiscard]] bool lastFileWasSealed() const { return sealed_; }
  [[nodiscard]] std::size_t connections() const { return streams_.size(); }

 private:
  static bool waitFor(int descriptor) {
    pollfd one{descriptor, POLLIN, 0};
    return poll(&one, 1, 10'000) == 1;
  }

  std::string receiveDatagram() {
    std::string bytes(1 << 20, '\0');
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
    iovec piece{bytes.data(), bytes.size()};
    msghdr message{};
    message.msg_iov = &piece;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    const ssize_t count = recvmsg(socket_, &message, MSG_CMSG_CLOEXEC);
    if (count < 0) return "(error)";
    bytes.resize(static_cast<std::size_t>(count));
    const cmsghdr* const head = CMSG_FIRSTHDR(&message);
    if (!head || head->cmsg_type != SCM_RIGHTS) return bytes;
    int file = -1;
    std::memcpy(&file, CMSG_DATA(head), sizeof file);
    ++files_;
    constexpr int all = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE | F_SEAL_SEAL;
    sealed_ = (fcntl(file, F_GET_SEALS) & all) == all;
    struct stat status {};
    EXPECT_EQ(fstat(file, &status), 0);
    bytes.assign(static_cast<std::size_t>(status.st_size), '\0');
    EXPECT_EQ(pread(file, bytes.data(), bytes.size(), 0), status.st_size);
    close(file);
    return bytes;
  }

  /// An entry on a stream ends with a zero byte.
  std::string receiveFromStream() {
    for (;;) {
      std::vector<pollfd> all{{socket_, POLLIN, 0}};
      for (std::size_t i = 0; i < streams_.size(); ++i) {
        if (const std::size_t end = read_[i].find('\0'); end != std::string::npos) {
          std::string entry = read_[i].substr(0, end);
          read_[i].erase(0, end + 1);
          return entry;
        }
        if (!ended_[i]) all.push_back({streams_[i], POLLIN, 0});
      }
      if (poll(all.data(), all.size(), 10'000) <= 0) return "(nothing)";
      if (all[0].revents != 0) {
        streams_.push_back(accept4(socket_, nullptr, nullptr, SOCK_CLOEXEC));
        read_.emplace_back();
        ended_.push_back(false);
      }
      for (std::size_t i = 0; i < streams_.size(); ++i) {
        char bytes[65536];
        const ssize_t count = recv(streams_[i], bytes, sizeof bytes, MSG_DONTWAIT);
        if (count > 0) read_[i].append(bytes, static_cast<std::size_t>(count));
        if (count == 0) ended_[i] = true;
      }
    }
  }

  const std::string path_;
  const bool isStream_;
  int socket_ = -1, files_ = 0;
  bool sealed_ = false;
  std::vector<int> streams_;
  std::vector<std::string> read_;
  std::vector<bool> ended_;
};

/// The text of a line of RFC 3164 after its head; empty if the head is malformed.
inline std::string textOfLine(const std::string& line) {
  const std::size_t end = line.find("]: ");
  return end == line.npos ? "" : line.substr(end + 3);
}

}  // namespace norvik::test
