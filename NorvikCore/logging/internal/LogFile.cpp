#include "NorvikCore/logging/internal/LogFile.h"

#include "NorvikCore/logging/internal/LineEscape.h"
#include "NorvikCore/platform/kernel/HostInfo.h"
#include "NorvikCore/platform/kernel/SystemError.h"

#include <cerrno>
#include <cstdint>
#include <utility>

namespace norvik::detail {
namespace {

const char* nameOf(kernel::FileKind kind) noexcept {
  switch (kind) {
    case kernel::FileKind::regular:
      return "a file";
    case kernel::FileKind::directory:
      return "a folder";
    case kernel::FileKind::symbolicLink:
      return "a symbolic link";
    case kernel::FileKind::characterDevice:
    case kernel::FileKind::blockDevice:
      return "a device";
    case kernel::FileKind::pipe:
      return "a named pipe";
    case kernel::FileKind::socket:
      return "a socket";
    case kernel::FileKind::unknown:
      break;
  }
  return "of an unknown kind";
}

LogFileRefusal refused(int error, bool isOfFile) {
  return {"cannot be opened: " + kernel::errorText(error), error, isOfFile};
}

/// True if another file would fail too: no descriptor or no memory is left, or the disk may not be written to.
bool concernsEveryFile(int error) noexcept {
  return error == EMFILE || error == ENFILE || error == ENOMEM || error == EROFS;
}

/// True if the last byte is not a line feed, or cannot be read, and no other process is writing a line (the file's size
/// does not change).
bool endsInsideLine(int descriptor) {
  std::uint64_t before = 0;
  for (int look = 0; look < 100; ++look) {
    kernel::FileStatus status;
    char last = '\0';
    std::size_t count = 0;
    if (kernel::readFileStatus(descriptor, status) != 0 || status.size == 0) return false;
    if (kernel::readAt(descriptor, status.size - 1, &last, 1, &count) != 0) return true;
    if (last == '\n') return false;
    if (status.size == before) return true;
    before = status.size;
    kernel::awaitOtherWrites(descriptor);
  }
  return false;
}

}  // namespace

std::string reasonAgainst(const kernel::FileStatus& status, LogFileOwner owner) {
  if (status.kind != kernel::FileKind::regular) return std::string("is ") + nameOf(status.kind);
  if (status.links > 1) return "has another name (a hard link)";
  if (owner == LogFileOwner::user && status.owner != kernel::effectiveUserId()) {
    return "belongs to user " + std::to_string(status.owner);
  }
  return "";
}

LogFileRefusal openLogFile(const std::string& path, LogFileOwner owner, OpenLogFile& file) {
  OpenLogFile opened;
  // Before the file is opened, because opening some devices has an effect.
  if (path.find('\0') != path.npos) return refused(ENOENT, false);
  if (const int error = kernel::readFileStatus(path, opened.status, kernel::Links::stay)) {
    return refused(error, error == ENOENT);
  }
  if (std::string reason = reasonAgainst(opened.status, owner); !reason.empty()) return {std::move(reason), 0, true};
  int error = kernel::openFile(path, {.read = true, .append = true, .regular = true}, opened.descriptor);
  if (error == EACCES) error = kernel::openFile(path, {.append = true, .regular = true}, opened.descriptor);
  if (error == 0) error = kernel::readFileStatus(opened.descriptor.get(), opened.status);
  if (error != 0) return refused(error, !concernsEveryFile(error));
  // Checked again, because the file may have been replaced in the meantime.
  if (std::string reason = reasonAgainst(opened.status, owner); !reason.empty()) return {std::move(reason), 0, true};
  opened.endsInsideLine = endsInsideLine(opened.descriptor.get());
  file = std::move(opened);
  return {};
}

std::string printable(const NSString& path) {
  std::string text;
  appendEscaped(text, path.view());
  return text;
}

}  // namespace norvik::detail
