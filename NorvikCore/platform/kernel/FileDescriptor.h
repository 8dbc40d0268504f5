// NorvikCore/platform/kernel/FileDescriptor.h - open files: owned descriptors, whole reads and whole writes.
//
//   kernel::FileDescriptor file;
//   if (int error = kernel::openFile(path, {.write = true, .create = true}, file)) return error;
//   if (int error = kernel::writeAll(file.get(), text)) return error;   // all of it, or the reason why not
//   return file.close();
//
// Operations answer 0 or an error number (see SystemError.h), never raise but for lack of memory, and begin again
// where a signal interrupts them. Any thread; one descriptor from several threads only as the kernel allows it.
#pragma once  // include time: <string> is a result type

#include "NorvikCore/platform/export.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace norvik::kernel {

/// Owns an open descriptor, or none, and closes it. Value, movable only.
class NK_EXPORT FileDescriptor {
 public:
  FileDescriptor() noexcept = default;
  explicit FileDescriptor(int descriptor) noexcept : descriptor_(descriptor) {}
  FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(other.release()) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept;
  ~FileDescriptor();

  [[nodiscard]] bool isOpen() const noexcept { return descriptor_ >= 0; }
  /// -1 where none is owned.
  [[nodiscard]] int get() const noexcept { return descriptor_; }
  /// Gives the descriptor away.
  [[nodiscard]] int release() noexcept { return std::exchange(descriptor_, -1); }
  /// Closes it, if one is owned. An error here may be the first word of a write that failed late (a network disk, a
  /// quota); the descriptor is gone in any case.
  int close() noexcept;

 private:
  int descriptor_ = -1;
};

struct OpenOptions {
  bool read = false;
  bool write = false;
  bool append = false;     ///< every write goes to the end, wherever it is then; implies write
  bool create = false;     ///< make the file where there is none
  bool exclusive = false;  ///< with create: refuse a file that exists (EEXIST)
  bool truncate = false;
  /// Refuse anything but a regular file, without waiting for it: a symbolic link (ELOOP; those in the path before the
  /// last name are followed), a folder (EISDIR), a pipe, socket or device (ENXIO).
  bool regular = false;
  unsigned mode = 0666;  ///< permissions of a new file, less the process's umask
};

/// Opens `path`; `file` is set on success only. A path that holds a NUL names nothing (ENOENT). The descriptor is not
/// inherited by programs that are started, and is never one of the three standard ones, even where those are closed.
[[nodiscard]] NK_EXPORT int openFile(const std::string& path, const OpenOptions& options, FileDescriptor& file);

/// Writes all of `bytes`; waits where the descriptor does not block. When it fails, `*written` (if given) tells how
/// many bytes came through. A reader that is gone gives EPIPE and a file at its size limit EFBIG; the signals that go
/// with them (SIGPIPE, SIGXFSZ) are swallowed, for this thread and this write only: see WriteSignalGuard.
[[nodiscard]] NK_EXPORT int writeAll(int descriptor, std::string_view bytes, std::size_t* written = nullptr) noexcept;

/// Appends to `text` all that can be read from where the descriptor stands.
[[nodiscard]] NK_EXPORT int readAll(int descriptor, std::string& text);

/// Replaces `text` with the content of a file; on failure `text` is empty or cut short.
[[nodiscard]] NK_EXPORT int readFile(const std::string& path, std::string& text);

/// Reads at `offset`, wherever the descriptor stands, until `size` bytes are read or the file ends; `*count` tells how
/// many were read.
[[nodiscard]] NK_EXPORT int readAt(int descriptor, std::uint64_t offset, char* bytes, std::size_t size,
                                   std::size_t* count) noexcept;

/// Waits for a write to the same regular file that another process is in the middle of, on file systems that write one
/// after another; changes nothing.
NK_EXPORT void awaitOtherWrites(int descriptor) noexcept;

/// Waits until what was written has reached the disk. A descriptor that has no disk behind it (a pipe, a terminal) is
/// fine.
[[nodiscard]] NK_EXPORT int synchronize(int descriptor) noexcept;

/// Where the next read or write takes place.
[[nodiscard]] NK_EXPORT int offsetOf(int descriptor, std::uint64_t& offset) noexcept;
[[nodiscard]] NK_EXPORT int seekTo(int descriptor, std::uint64_t offset) noexcept;
[[nodiscard]] NK_EXPORT int seekToEnd(int descriptor, std::uint64_t& offset) noexcept;

/// Keeps SIGPIPE and SIGXFSZ from ending the process while writes of the calling thread fail. The process's own
/// handlers and dispositions stay as they are: the two signals are blocked for this thread only, and what such a write
/// sent is taken back before they are let through again. A signal that was waiting before is left waiting. writeAll()
/// makes its own; one around several writes makes each of those cheaper. To be destroyed on its own thread.
class NK_EXPORT WriteSignalGuard {
 public:
  WriteSignalGuard() noexcept;
  ~WriteSignalGuard();
  WriteSignalGuard(const WriteSignalGuard&) = delete;
  WriteSignalGuard& operator=(const WriteSignalGuard&) = delete;

  /// To be told the error of each failed write: only EPIPE and EFBIG leave a signal behind.
  void failed(int error) noexcept;

 private:
  bool outermost_;
};

}  // namespace norvik::kernel
