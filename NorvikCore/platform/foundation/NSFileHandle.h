// NorvikCore/platform/foundation/NSFileHandle.h - an open file.
//
//   if (Ref<NSFileHandle> file = NSFileHandle::fileHandleForAppendingAtPath(path)) {
//     file->writeData("one more line\n");
//     file->synchronizeFile();
//   }
//
// Opening answers an empty Ref where it fails. Everything else raises the NSException NSFileHandleOperationException
// where the system refuses; its reason tells the operation, the file and why. A write is whole or raises: interrupted
// and cut writes go on, and neither a reader that is gone nor a limit of the file's size ends the process
// (kernel/FileDescriptor.h).
//
// The file is closed with the object. Threads: confined to one at a time.
#pragma once

#include "NorvikCore/platform/collections/NSData.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/kernel/FileDescriptor.h"

#include <cstdint>
#include <string_view>

namespace norvik {

class NK_EXPORT NSFileHandle : public NSObject {
  NK_OBJECT(NSFileHandle, NSObject)

  /// Takes the descriptor over; `name` is what the reasons of exceptions call it.
  NSFileHandle(kernel::FileDescriptor descriptor, NSString name);
  ~NSFileHandle() override;

  /// From the file's beginning. The file must exist.
  [[nodiscard]] static Ref<NSFileHandle> fileHandleForReadingAtPath(const NSString& path);
  /// From the file's beginning, over what stands there. The file must exist.
  [[nodiscard]] static Ref<NSFileHandle> fileHandleForWritingAtPath(const NSString& path);
  /// Every write goes to the end of the file, wherever that is then: several handles and processes may share a file and
  /// lose nothing. The file must exist.
  [[nodiscard]] static Ref<NSFileHandle> fileHandleForAppendingAtPath(const NSString& path);

  void writeData(const NSData& data);
  void writeData(std::string_view bytes);
  /// From where the handle stands.
  [[nodiscard]] Ref<NSData> readDataToEndOfFile();

  /// Where the next read or write takes place; after an appending write, its end.
  [[nodiscard]] std::uint64_t offsetInFile() const;
  std::uint64_t seekToEndOfFile();
  void seekToFileOffset(std::uint64_t offset);

  /// Waits until what was written is on the disk.
  void synchronizeFile();
  /// After that every operation but this one raises.
  void closeFile();
  /// -1 once it is closed.
  [[nodiscard]] int fileDescriptor() const noexcept { return descriptor_.get(); }

  [[nodiscard]] NSString description() const override;

 private:
  void check(int error, const char* operation) const;

  kernel::FileDescriptor descriptor_;
  NSString name_;
};

}  // namespace norvik
