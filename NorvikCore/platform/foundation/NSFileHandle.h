// NorvikCore/platform/foundation/NSFileHandle.h - an open file.
//
//   if (Ref<NSFileHandle> file = NSFileHandle::fileHandleForAppendingAtPath(path)) {
//     file->writeData("one more line\n");
//     file->synchronizeFile();
//   }
//
// Opening returns an empty Ref on failure. Every other operation raises the NSException NSFileHandleOperationException
// if the system refuses it; the reason names the operation, the file and the cause. A write is complete or raises:
// interrupted and partial writes are continued. A closed reader or a limit of the file's size does not end the process
// (kernel/FileDescriptor.h).
//
// The file is closed when the object is destroyed. Threads: confined to one thread at a time.
#pragma once

#include "NorvikCore/platform/collections/NSData.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/kernel/FileDescriptor.h"

#include <cstdint>
#include <string_view>

namespace norvik {

class NK_EXPORT NSFileHandle : public NSObject {
  NK_OBJECT(NSFileHandle, NSObject)

  /// Takes ownership of the descriptor; `name` is its name in the reasons of exceptions.
  NSFileHandle(kernel::FileDescriptor descriptor, NSString name);
  ~NSFileHandle() override;

  /// From the file's beginning. The file must exist.
  [[nodiscard]] static Ref<NSFileHandle> fileHandleForReadingAtPath(const NSString& path);
  /// From the file's beginning; existing content is overwritten in place. The file must exist.
  [[nodiscard]] static Ref<NSFileHandle> fileHandleForWritingAtPath(const NSString& path);
  /// Every write is appended to the present end of the file, so that several handles and processes may share a file
  /// without losing data. The file must exist.
  [[nodiscard]] static Ref<NSFileHandle> fileHandleForAppendingAtPath(const NSString& path);

  void writeData(const NSData& data);
  void writeData(std::string_view bytes);
  /// From the present offset.
  [[nodiscard]] Ref<NSData> readDataToEndOfFile();

  /// The offset of the next read or write; after an appending write, the end of that write.
  [[nodiscard]] std::uint64_t offsetInFile() const;
  std::uint64_t seekToEndOfFile();
  void seekToFileOffset(std::uint64_t offset);

  /// Blocks until everything that was written is on the disk.
  void synchronizeFile();
  /// Every later operation raises, except closeFile().
  void closeFile();
  /// -1 after closeFile().
  [[nodiscard]] int fileDescriptor() const noexcept { return descriptor_.get(); }

  [[nodiscard]] NSString description() const override;

 private:
  void check(int error, const char* operation) const;

  kernel::FileDescriptor descriptor_;
  NSString name_;
};

}  // namespace norvik
