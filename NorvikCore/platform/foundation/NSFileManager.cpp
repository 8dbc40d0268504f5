#include "NorvikCore/platform/foundation/NSFileManager.h"

#include "NorvikCore/platform/kernel/Clock.h"
#include "NorvikCore/platform/kernel/CopyTree.h"
#include "NorvikCore/platform/kernel/Directory.h"
#include "NorvikCore/platform/kernel/ExtendedAttributes.h"
#include "NorvikCore/platform/kernel/FileDescriptor.h"
#include "NorvikCore/platform/kernel/FileStatus.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/kernel/ReplaceFile.h"

#include <errno.h>

#include <cmath>
#include <string>
#include <vector>

namespace norvik {

constexpr NSString NSFileType = "NSFileType";
constexpr NSString NSFileTypeRegular = "NSFileTypeRegular";
constexpr NSString NSFileTypeDirectory = "NSFileTypeDirectory";
constexpr NSString NSFileTypeSymbolicLink = "NSFileTypeSymbolicLink";
constexpr NSString NSFileTypeCharacterSpecial = "NSFileTypeCharacterSpecial";
constexpr NSString NSFileTypeBlockSpecial = "NSFileTypeBlockSpecial";
constexpr NSString NSFileTypeSocket = "NSFileTypeSocket";
constexpr NSString NSFileTypeUnknown = "NSFileTypeUnknown";
constexpr NSString NSFileSize = "NSFileSize";
constexpr NSString NSFileModificationDate = "NSFileModificationDate";
constexpr NSString NSFileCreationDate = "NSFileCreationDate";
constexpr NSString NSFilePosixPermissions = "NSFilePosixPermissions";
constexpr NSString NSFileOwnerAccountID = "NSFileOwnerAccountID";
constexpr NSString NSFileGroupOwnerAccountID = "NSFileGroupOwnerAccountID";
constexpr NSString NSFileReferenceCount = "NSFileReferenceCount";
constexpr NSString NSFileSystemNumber = "NSFileSystemNumber";
constexpr NSString NSFileSystemFileNumber = "NSFileSystemFileNumber";

namespace {

// The path as bytes for the system, which would end it at a NUL and use another file. A path that holds a NUL therefore
// becomes the empty path, which names nothing (ENOENT).
std::string systemPath(const NSString& path) {
  std::string bytes = path.fileSystemRepresentation();
  return bytes.find('\0') == bytes.npos ? bytes : "";
}

// True for success; otherwise sets the error's operation, subject and cause.
bool report(int number, const char* operation, const NSString& subject, Ref<NSError>* error) {
  if (number != 0 && error) *error = NSError::posixError(number, operation, subject);
  return number == 0;
}

Date dateOf(std::int64_t nanoseconds) {
  constexpr std::int64_t perSecond = 1'000'000'000;
  const std::int64_t seconds = nanoseconds / perSecond - kernel::referenceDateInUnixSeconds;
  return Date::fromReferenceSeconds(static_cast<double>(seconds) + static_cast<double>(nanoseconds % perSecond) * 1e-9);
}

NSString typeOf(kernel::FileKind kind) {
  switch (kind) {
    case kernel::FileKind::regular:
      return NSFileTypeRegular;
    case kernel::FileKind::directory:
      return NSFileTypeDirectory;
    case kernel::FileKind::symbolicLink:
      return NSFileTypeSymbolicLink;
    case kernel::FileKind::characterDevice:
      return NSFileTypeCharacterSpecial;
    case kernel::FileKind::blockDevice:
      return NSFileTypeBlockSpecial;
    case kernel::FileKind::socket:
      return NSFileTypeSocket;
    case kernel::FileKind::pipe:
    case kernel::FileKind::unknown:
      break;
  }
  return NSFileTypeUnknown;
}

unsigned permissionsIn(const Ref<NSDictionary>& attributes, unsigned usual) {
  const Value value = attributes ? attributes->objectForKey(NSFilePosixPermissions) : Value();
  return value.isAbsent() ? usual : value.as<std::uint32_t>() & 07777U;
}

int applyAttributes(const std::string& path, const NSDictionary& attributes) {
  if (const Value value = attributes.objectForKey(NSFilePosixPermissions); !value.isAbsent()) {
    if (const int error = kernel::setPermissions(path, value.as<std::uint32_t>() & 07777U)) return error;
  }
  if (const Value value = attributes.objectForKey(NSFileModificationDate); !value.isAbsent()) {
    const double seconds = value.as<Date>().timeIntervalSinceReferenceDate();
    // Whole seconds and fraction are converted separately, because a double cannot hold nanoseconds since 1970.
    const double whole = std::floor(seconds);
    if (!(std::abs(whole) < 8e9)) return EINVAL;
    const std::int64_t nanoseconds =
        (static_cast<std::int64_t>(whole) + kernel::referenceDateInUnixSeconds) * 1'000'000'000 +
        std::llround((seconds - whole) * 1e9);
    if (const int error = kernel::setModificationTime(path, nanoseconds)) return error;
  }
  return 0;
}

}  // namespace

NSFileManager::~NSFileManager() = default;

NSFileManager& NSFileManager::defaultManager() {
  return kernel::madeOnce([] { return make<NSFileManager>().take(); });
}

bool NSFileManager::fileExistsAtPath(const NSString& path, bool* isDirectory) const {
  kernel::FileStatus status;
  if (kernel::readFileStatus(systemPath(path), status) != 0) return false;
  if (isDirectory) *isDirectory = status.kind == kernel::FileKind::directory;
  return true;
}

bool NSFileManager::createDirectoryAtPath(const NSString& path, bool withIntermediateDirectories,
                                          const Ref<NSDictionary>& attributes, Ref<NSError>* error) {
  const std::string directory = systemPath(path);
  const unsigned permissions = permissionsIn(attributes, 0777);
  std::string failed = directory;
  const int number = withIntermediateDirectories ? kernel::createDirectories(directory, permissions, &failed)
                                                 : kernel::createDirectory(directory, permissions);
  return report(number, "create folder", NSString::fromBytes(failed), error);
}

Ref<NSArray> NSFileManager::contentsOfDirectoryAtPath(const NSString& path, Ref<NSError>* error) const {
  std::vector<std::string> names;
  if (!report(kernel::listDirectory(systemPath(path), names), "list folder", path, error)) return nullptr;
  kernel::leaveOutSideFiles(systemPath(path), names);
  return NSArray::arrayFrom(names);
}

Ref<NSDictionary> NSFileManager::attributesOfItemAtPath(const NSString& path, Ref<NSError>* error) const {
  kernel::FileStatus status;
  const int number = kernel::readFileStatus(systemPath(path), status, kernel::Links::stay);
  if (!report(number, "read attributes of", path, error)) return nullptr;
  return NSDictionary::dictionaryWith({
      {NSFileType, typeOf(status.kind)},
      {NSFileSize, status.size},
      {NSFileModificationDate, dateOf(status.modification)},
      {NSFileCreationDate, dateOf(status.creation)},
      {NSFilePosixPermissions, status.permissions},
      {NSFileOwnerAccountID, status.owner},
      {NSFileGroupOwnerAccountID, status.group},
      {NSFileReferenceCount, status.links},
      {NSFileSystemNumber, status.device},
      {NSFileSystemFileNumber, status.inode},
  });
}

bool NSFileManager::setAttributes(const NSDictionary& attributes, const NSString& ofItemAtPath, Ref<NSError>* error) {
  return report(applyAttributes(systemPath(ofItemAtPath), attributes), "set attributes of", ofItemAtPath, error);
}

bool NSFileManager::createFileAtPath(const NSString& path, const Ref<NSData>& contents,
                                     const Ref<NSDictionary>& attributes, Ref<NSError>* error) {
  const std::string file = systemPath(path);
  int number = kernel::replaceFile(file, contents ? std::string_view(contents->text()) : std::string_view());
  if (number == 0 && attributes) number = applyAttributes(file, *attributes);
  return report(number, "write file", path, error);
}

Ref<NSData> NSFileManager::contentsAtPath(const NSString& path, Ref<NSError>* error) const {
  std::string text;
  if (!report(kernel::readFile(systemPath(path), text), "read file", path, error)) return nullptr;
  return NSData::dataWithText(text);
}

bool NSFileManager::moveItemAtPath(const NSString& path, const NSString& toPath, Ref<NSError>* error) {
  const std::string from = systemPath(path), to = systemPath(toPath);
  int number = kernel::renameWithAttributes(from, to, kernel::Replace::no);
  if (number == EXDEV) {
    number = kernel::copyTree(from, to);
    if (number == 0) number = kernel::removeTree(from);
  }
  return report(number, "move", path + " to " + toPath, error);
}

bool NSFileManager::copyItemAtPath(const NSString& path, const NSString& toPath, Ref<NSError>* error) {
  return report(kernel::copyTree(systemPath(path), systemPath(toPath)), "copy", path + " to " + toPath, error);
}

bool NSFileManager::removeItemAtPath(const NSString& path, Ref<NSError>* error) {
  std::string failed = systemPath(path);
  const int number = kernel::removeTree(failed, &failed);
  return report(number, "remove", NSString::fromBytes(failed), error);
}

}  // namespace norvik
