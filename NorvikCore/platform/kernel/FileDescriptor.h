// NorvikCore/platform/kernel/FileDescriptor.h - open files: owned descriptors, complete reads and complete writes.
//
//   kernel::FileDescriptor file;
//   if (int error = kernel::openFile(path, {.write = true, .create = true}, file)) return error;
//   if (int error = kernel::writeAll(file.get(), text)) return error;   // all of it, or the error
//   return file.close();
//
// Operations return 0 or an error number (see SystemError.h), raise only std::bad_alloc, and repeat a call that a
// signal interrupts. Any thread; one descriptor from several threads only as the kernel allows it.
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
  /// -1 if none is owned.
  [[nodiscard]] int get() const noexcept { return descriptor_; }
  /// Passes the descriptor to the caller.
  [[nodiscard]] int release() noexcept { return std::exchange(descriptor_, -1); }
  /// Closes the descriptor, if one is owned. An error here may be the first report of an earlier write that failed (a
  /// network disk, a quota); the descriptor is closed in any case.
  int close() noexcept;

 private:
  int descriptor_ = -1;
};

/// How openFile() opens a file. Without `write` and `append` it is opened for reading.
struct OpenOptions {
  bool read = false;
  bool write = false;
  bool append = false;     ///< every write goes to the current end of the file; implies write
  bool create = false;     ///< create the file if it does not exist
  bool exclusive = false;  ///< with create: fail for an existing file (EEXIST)
  bool truncate = false;
  /// Accept only a regular file, and fail at once for anything else: a symbolic link (ELOOP; links in the path before
  /// the last name are followed), a folder (EISDIR), a pipe, socket or device (ENXIO).
  bool regular = false;
  unsigned mode = 0666;  ///< permissions of a new file, less the process's umask
};

/// Opens `path`; `file` is set only on success. A path that contains a NUL gives ENOENT. Programs that are started do
/// not inherit the descriptor. It is never one of the three standard descriptors, even if those are closed.
[[nodiscard]] NK_EXPORT int openFile(const std::string& path, const OpenOptions& options, FileDescriptor& file);

/// Writes all of `bytes`; waits for room if the descriptor is non-blocking. On failure `*written` (if given) is the
/// number of bytes written. A pipe without a reader gives EPIPE, a file at its size limit EFBIG; the signals for these
/// errors (SIGPIPE, SIGXFSZ) are suppressed, for this thread and this write only: see WriteSignalGuard.
[[nodiscard]] NK_EXPORT int writeAll(int descriptor, std::string_view bytes, std::size_t* written = nullptr) noexcept;

/// Appends to `text` everything that can be read from the descriptor's current position.
[[nodiscard]] NK_EXPORT int readAll(int descriptor, std::string& text);

/// Replaces `text` with the content of a file; on failure `text` is empty or incomplete.
[[nodiscard]] NK_EXPORT int readFile(const std::string& path, std::string& text);

/// Reads at `offset`, independent of the descriptor's position, until `size` bytes are read or the file ends; `*count`
/// is the number of bytes read.
[[nodiscard]] NK_EXPORT int readAt(int descriptor, std::uint64_t offset, char* bytes, std::size_t size,
                                   std::size_t* count) noexcept;

/// Waits for a write to the same regular file that another process has begun, on file systems that serialise writes;
/// changes nothing.
NK_EXPORT void awaitOtherWrites(int descriptor) noexcept;

/// Waits until what was written has reached the disk. Success for a descriptor without a disk behind it (a pipe, a
/// terminal).
[[nodiscard]] NK_EXPORT int synchronize(int descriptor) noexcept;

/// The position of the next read or write.
[[nodiscard]] NK_EXPORT int offsetOf(int descriptor, std::uint64_t& offset) noexcept;
[[nodiscard]] NK_EXPORT int seekTo(int descriptor, std::uint64_t offset) noexcept;
[[nodiscard]] NK_EXPORT int seekToEnd(int descriptor, std::uint64_t& offset) noexcept;

/// Prevents SIGPIPE and SIGXFSZ from ending the process when writes of the calling thread fail. The process's handlers
/// and dispositions are unchanged: the two signals are blocked for this thread only, and a signal that such a write
/// sent is removed before they are unblocked. A signal that was pending before stays pending. writeAll() makes its own
/// guard; one guard around several writes makes each of them cheaper. It must be destroyed on the thread that made it.
class NK_EXPORT WriteSignalGuard {
 public:
  WriteSignalGuard() noexcept;
  ~WriteSignalGuard();
  WriteSignalGuard(const WriteSignalGuard&) = delete;
  WriteSignalGuard& operator=(const WriteSignalGuard&) = delete;

  /// Call it with the error of each failed write; only EPIPE and EFBIG leave a signal.
  void failed(int error) noexcept;

 private:
  bool outermost_;
};

}  // namespace norvik::kernel
