#include "NorvikCore/platform/foundation/NSFileHandle.h"

#include "NorvikCore/platform/kernel/SystemError.h"
#include "NorvikCore/platform/values/Format.h"
#include "NorvikCore/platform/values/NSException.h"

#include <errno.h>

#include <string>
#include <utility>

namespace norvik {

namespace {

Ref<NSFileHandle> openHandle(const NSString& path, const kernel::OpenOptions& options) {
  const std::string file = path.fileSystemRepresentation();
  kernel::FileDescriptor descriptor;
  if (file.find('\0') != file.npos || kernel::openFile(file, options, descriptor) != 0) return nullptr;
  return make<NSFileHandle>(std::move(descriptor), path);
}

}  // namespace

NSFileHandle::NSFileHandle(kernel::FileDescriptor descriptor, NSString name)
    : descriptor_(std::move(descriptor)), name_(std::move(name)) {}
NSFileHandle::~NSFileHandle() = default;

Ref<NSFileHandle> NSFileHandle::fileHandleForReadingAtPath(const NSString& path) {
  return openHandle(path, {.read = true});
}
Ref<NSFileHandle> NSFileHandle::fileHandleForWritingAtPath(const NSString& path) {
  return openHandle(path, {.write = true});
}
Ref<NSFileHandle> NSFileHandle::fileHandleForAppendingAtPath(const NSString& path) {
  return openHandle(path, {.append = true});
}

void NSFileHandle::writeData(const NSData& data) { writeData(data.text()); }

void NSFileHandle::writeData(std::string_view bytes) {
  if (const int error = kernel::writeAll(descriptor_.get(), bytes)) [[unlikely]]
    check(error, "writeData");
  if (!descriptor_.isOpen()) check(EBADF, "writeData");  // also if there is nothing to write
}

Ref<NSData> NSFileHandle::readDataToEndOfFile() {
  std::string text;
  check(kernel::readAll(descriptor_.get(), text), "readDataToEndOfFile");
  return NSData::dataWithText(text);
}

std::uint64_t NSFileHandle::offsetInFile() const {
  std::uint64_t offset = 0;
  check(kernel::offsetOf(descriptor_.get(), offset), "offsetInFile");
  return offset;
}

std::uint64_t NSFileHandle::seekToEndOfFile() {
  std::uint64_t offset = 0;
  check(kernel::seekToEnd(descriptor_.get(), offset), "seekToEndOfFile");
  return offset;
}

void NSFileHandle::seekToFileOffset(std::uint64_t offset) {
  check(kernel::seekTo(descriptor_.get(), offset), "seekToFileOffset");
}

void NSFileHandle::synchronizeFile() { check(kernel::synchronize(descriptor_.get()), "synchronizeFile"); }

void NSFileHandle::closeFile() { check(descriptor_.close(), "closeFile"); }

NSString NSFileHandle::description() const {
  return stringWithFormat("<NSFileHandle: %p>{%@, descriptor %d}", static_cast<const void*>(this), name_,
                          descriptor_.get());
}

void NSFileHandle::check(int error, const char* operation) const {
  if (error == 0) [[likely]]
    return;
  NSException::raise(NSFileHandleOperationException,
                     stringWithFormat("NSFileHandle %s: %@: %s", operation, name_, kernel::errorText(error)));
}

}  // namespace norvik
