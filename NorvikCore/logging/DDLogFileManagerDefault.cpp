#include "NorvikCore/logging/DDLogFileManagerDefault.h"

#include "NorvikCore/logging/DDLog.h"
#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/collections/NSError.h"
#include "NorvikCore/platform/foundation/NSFileManager.h"
#include "NorvikCore/platform/foundation/NSLog.h"
#include "NorvikCore/platform/foundation/NSProcessInfo.h"
#include "NorvikCore/platform/foundation/NSSearchPath.h"
#include "NorvikCore/platform/kernel/Directory.h"
#include "NorvikCore/platform/kernel/ExtendedAttributes.h"
#include "NorvikCore/platform/kernel/FileDescriptor.h"
#include "NorvikCore/platform/kernel/FileStatus.h"
#include "NorvikCore/platform/kernel/HostInfo.h"
#include "NorvikCore/platform/kernel/Paths.h"
#include "NorvikCore/platform/kernel/UUID.h"
#include "NorvikCore/platform/keyvalue/KeyValueObserving.h"
#include "NorvikCore/platform/values/NSException.h"

#include <algorithm>
#include <cerrno>
#include <string>
#include <string_view>
#include <utility>

namespace norvik {
namespace {

/// If more names than this are in use, it is an error.
constexpr int mostNames = 1000;

constexpr NSString limitKey = "maximumNumberOfLogFiles";

std::vector<NSString> lastComponents(const std::vector<NSString>& paths) {
  std::vector<NSString> names;
  names.reserve(paths.size());
  for (const NSString& path : paths) names.push_back(path.lastPathComponent());
  return names;
}

/// The sort keys of a file, read once because the file may be archived during the sort.
struct SortedFile {
  Ref<DDLogFileInfo> info;
  bool isArchived;
};

bool comesFirst(const SortedFile& a, const SortedFile& b) {
  const bool aIsThere = a.info->creationDate().has_value(), bIsThere = b.info->creationDate().has_value();
  if (aIsThere != bIsThere) return aIsThere;  // the other was removed in the meantime
  const NSComparisonResult byCreation = a.info->reverseCompareByCreationDate(*b.info);
  if (byCreation != NSOrderedSame) return byCreation == NSOrderedAscending;
  if (a.isArchived != b.isArchived) return b.isArchived;
  return a.info->reverseCompareByModificationDate(*b.info) == NSOrderedAscending;
}

/// The user's library folder; absent if no home is known.
std::optional<NSString> libraryFolder() {
  const Ref<NSArray> libraries = NSSearchPathForDirectoriesInDomains(NSLibraryDirectory, NSUserDomainMask, true);
  if (!libraries || libraries->count() == 0) return std::nullopt;
  return libraries->firstObject().as<NSString>();
}

NSString processFolderIn(const NSString& logs) {
  return logs.stringByAppendingPathComponent(NSProcessInfo::processInfo().processName());
}

/// Finds the first name for this user's logs in the temporary folder for which `attempt(path)` does not return EPERM,
/// and returns the result of that attempt.
template <class Attempt>
int findTemporaryLogs(std::string& path, const Attempt& attempt) {
  const std::string usual = kernel::temporaryDirectory() + "/Logs";
  const std::string own = usual + "-" + std::to_string(kernel::effectiveUserId());
  int error = attempt(path = usual);
  if (error == EPERM) error = attempt(path = own);
  for (int number = 2; error == EPERM && number < 10; ++number) {
    error = attempt(path = own + "-" + std::to_string(number));
  }
  return error;
}

void requirePermissions(std::uint32_t permissions, std::uint32_t least) {
  if (permissions <= 0777 && (permissions & least) == least) return;
  NSException::raise(
      NSInvalidArgumentException,
      stringWithFormat("DDLogFileManagerDefault: the permissions %#o are not from %#o to 0777", permissions, least));
}

}  // namespace

DDLogFileManager::~DDLogFileManager() = default;
std::uint32_t DDLogFileManager::logFilePermissions() const { return 0600; }
void DDLogFileManager::didArchiveLogFile(const NSString&) {}
void DDLogFileManager::didRollAndArchiveLogFile(const NSString&) {}

DDLogFileManagerDefault::DDLogFileManagerDefault(std::optional<NSString> logsDirectory)
    : _logsDirectory(std::move(logsDirectory)) {}

// The observation that init() began ends with the object, because the runtime removes destroyed observers.
DDLogFileManagerDefault::~DDLogFileManagerDefault() = default;

Ref<DDLogFileManagerDefault> DDLogFileManagerDefault::initWithLogsDirectory(std::optional<NSString> logsDirectory) {
  return make<DDLogFileManagerDefault>(std::move(logsDirectory));
}

bool DDLogFileManagerDefault::init() {
  if (!DDLogFileManager::init()) return false;
  if (!_logsDirectory) {
    _logsDirectory = defaultLogsDirectory();
    isInTemporaryFolder_ = !libraryFolder() && *_logsDirectory == DDLogFileManagerDefault::defaultLogsDirectory();
  }
  if (_logsDirectory->empty()) {  // files would be made in the process's current folder
    NSLog("DDLogFileManagerDefault: the folder for log files has an empty name");
    return false;
  }
  addObserver(*this, limitKey, NSKeyValueObservingOptionNew | NSKeyValueObservingOptionOld);
  // The file manager is created here, and not while another thread may fork: the child would wait for its creation
  // without end.
  (void)NSFileManager::defaultManager();
  return true;
}

std::uint64_t DDLogFileManagerDefault::maximumNumberOfLogFiles() const { return maximumNumberOfLogFiles_.load(); }

void DDLogFileManagerDefault::setMaximumNumberOfLogFiles(std::uint64_t number) {
  detail::changeProperty(*this, "maximumNumberOfLogFiles", [&] { maximumNumberOfLogFiles_.store(number); });
}

std::uint32_t DDLogFileManagerDefault::logFilePermissions() const { return logFilePermissions_.load(); }

void DDLogFileManagerDefault::setLogFilePermissions(std::uint32_t permissions) {
  requirePermissions(permissions, 0600);
  logFilePermissions_.store(permissions);
}

std::uint32_t DDLogFileManagerDefault::logsDirectoryPermissions() const { return logsDirectoryPermissions_.load(); }

void DDLogFileManagerDefault::setLogsDirectoryPermissions(std::uint32_t permissions) {
  requirePermissions(permissions, 0700);
  logsDirectoryPermissions_.store(permissions);
}

void DDLogFileManagerDefault::observeValueForKeyPath(const NSString& keyPath, NSObject& object,
                                                     const KeyValueChange& change, void* context) {
  if (keyPath != limitKey || &object != this) {
    return DDLogFileManager::observeValueForKeyPath(keyPath, object, change, context);
  }
  if (change.oldValue() == change.newValue()) return;
  dispatch_async(DDLog::loggingQueue(), [self = ref(*this)] { self->deleteOldLogFiles(); });
}

NSString DDLogFileManagerDefault::defaultLogsDirectory() const {
  if (const std::optional<NSString> library = libraryFolder())
    return processFolderIn(library->stringByAppendingPathComponent("Logs"));
  std::string logs;
  static_cast<void>(findTemporaryLogs(logs, [](const std::string& path) { return kernel::checkOwnDirectory(path); }));
  return processFolderIn(NSString::fromBytes(logs));
}

NSString DDLogFileManagerDefault::logsDirectory() {
  NSFileManager& files = NSFileManager::defaultManager();
  const std::uint32_t permissions = logsDirectoryPermissions();
  NSString directory = *_logsDirectory;
  Ref<NSError> error;
  if (isInTemporaryFolder_) {
    std::string logs;
    static_cast<void>(kernel::createDirectories(kernel::temporaryDirectory(), permissions));  // if it is missing
    const int failure =
        findTemporaryLogs(logs, [&](const std::string& path) { return kernel::createOwnDirectory(path, permissions); });
    directory = processFolderIn(NSString::fromBytes(logs));
    if (failure != 0) error = NSError::posixError(failure, "create folder", NSString::fromBytes(logs));
  }
  bool isFolder = false;
  if (!error && (!files.fileExistsAtPath(directory, &isFolder) || !isFolder)) {
    const auto attributes = NSDictionary::dictionaryWith({{NSFilePosixPermissions, permissions}});
    if (files.createDirectoryAtPath(directory, true, attributes, &error)) {
      // If this fails, on a disk without permissions, the folder has the permissions of the disk.
      static_cast<void>(kernel::setFolderPermissions(directory.fileSystemRepresentation(), permissions));
    }
  }
  reportFolder(error);
  return directory;
}

bool DDLogFileManagerDefault::hasFolder() const {
  const MutexLock lock(mutex_);
  return folderFailure_.empty();
}

/// Reports that the folder cannot be created, unless that was reported before. An empty error means success.
void DDLogFileManagerDefault::reportFolder(const Ref<NSError>& error) {
  const NSString failure = error ? error->localizedDescription() : NSString();
  {
    const MutexLock lock(mutex_);
    if (folderFailure_ == failure) return;
    folderFailure_ = failure;
  }
  if (error) NSLog("DDFileLogManagerDefault: Error creating logsDirectory: %@", error);
}

/// Does the same for the list of the folder's files. A missing folder has been reported already. If the process has no
/// descriptor or memory left, the code that makes the next file reports that.
void DDLogFileManagerDefault::reportListing(const Ref<NSError>& error) {
  const std::int64_t failure = error ? error->code() : 0;
  if (failure == EMFILE || failure == ENFILE || failure == ENOMEM) return;
  {
    const MutexLock lock(mutex_);
    if (!folderFailure_.empty() || listingFailure_ == failure) return;
    listingFailure_ = failure;
  }
  if (error) {
    NSLog("DDFileLogManagerDefault: Error listing logsDirectory, no old file is used or removed: %@",
          error->localizedDescription());
  }
}

/// Does the same for a file. Only the error is compared, because each file has another name. A missing folder has been
/// reported already.
void DDLogFileManagerDefault::reportFile(const NSString& path, int error) {
  {
    const MutexLock lock(mutex_);
    if (!folderFailure_.empty() || fileFailure_ == error) return;
    fileFailure_ = error;
  }
  if (error != 0) {
    NSLog("DDFileLogManagerDefault: Error creating log file: %@", NSError::posixError(error, "create", path));
  }
}

bool DDLogFileManagerDefault::isLogFile(const NSString& fileName) const {
  const std::string_view name = fileName.view();
  return name.size() >= 10 && name.starts_with("log-") &&
         name.substr(4, 6).find_first_not_of("0123456789ABCDEF") == std::string_view::npos;
}

std::vector<NSString> DDLogFileManagerDefault::unsortedLogFilePaths() {
  const NSString directory = logsDirectory();
  std::vector<NSString> paths;
  if (!hasFolder()) return paths;
  Ref<NSError> error;
  const Ref<NSArray> names = NSFileManager::defaultManager().contentsOfDirectoryAtPath(directory, &error);
  reportListing(error);
  if (!names) return paths;
  for (const Value& element : *names) {
    const NSString name = element.as<NSString>();
    if (isLogFile(name)) paths.push_back(directory.stringByAppendingPathComponent(name));
  }
  return paths;
}

std::vector<NSString> DDLogFileManagerDefault::unsortedLogFileNames() { return lastComponents(unsortedLogFilePaths()); }

std::vector<Ref<DDLogFileInfo>> DDLogFileManagerDefault::unsortedLogFileInfos() {
  std::vector<Ref<DDLogFileInfo>> infos;
  for (const NSString& path : unsortedLogFilePaths()) infos.push_back(DDLogFileInfo::logFileWithPath(path));
  return infos;
}

std::vector<Ref<DDLogFileInfo>> DDLogFileManagerDefault::sortedLogFileInfos() {
  std::vector<SortedFile> files;
  for (Ref<DDLogFileInfo>& info : unsortedLogFileInfos()) files.push_back({info, info->isArchived()});
  std::stable_sort(files.begin(), files.end(), comesFirst);
  std::vector<Ref<DDLogFileInfo>> infos;
  for (SortedFile& file : files) infos.push_back(std::move(file.info));
  return infos;
}

std::vector<NSString> DDLogFileManagerDefault::sortedLogFilePaths() {
  std::vector<NSString> paths;
  for (const Ref<DDLogFileInfo>& info : sortedLogFileInfos()) paths.push_back(info->filePath());
  return paths;
}

std::vector<NSString> DDLogFileManagerDefault::sortedLogFileNames() { return lastComponents(sortedLogFilePaths()); }

NSString DDLogFileManagerDefault::generateShortUUID() const { return kernel::makeUUID().text().substr(0, 6); }

NSString DDLogFileManagerDefault::createNewLogFile() {
  const NSString directory = logsDirectory();
  NSString path;
  for (int attempt = 1;; ++attempt) {
    path = directory.stringByAppendingPathComponent(stringWithFormat("log-%@.txt", generateShortUUID()));
    {
      const MutexLock lock(mutex_);  // before other threads and processes can find the file
      newestPath_ = path;
    }
    kernel::FileDescriptor file;
    const std::string systemPath = path.fileSystemRepresentation();
    const std::uint32_t permissions = logFilePermissions();
    const kernel::OpenOptions options{.write = true, .create = true, .exclusive = true, .mode = permissions};
    const int error = hasFolder() ? kernel::openFile(systemPath, options, file) : ENOENT;
    if (error == EEXIST && attempt < mostNames) continue;
    if (error == 0) {
      kernel::FileStatus status;
      if (kernel::readFileStatus(file.get(), status) == 0) {
        const MutexLock lock(mutex_);
        newestDevice_ = status.device;
        newestInode_ = status.inode;
        newestCreation_ = status.creation;
      }
      // Has no effect on a disk without permissions. If the creation time cannot be stored, the file seems younger.
      static_cast<void>(kernel::setPermissions(file.get(), permissions));
      static_cast<void>(kernel::noteCreation(systemPath));
    }
    reportFile(path, error);
    break;
  }
  deleteOldLogFiles();
  return path;
}

bool DDLogFileManagerDefault::didMake(const kernel::FileStatus& status) const {
  const MutexLock lock(mutex_);
  return status.device == newestDevice_ && status.inode == newestInode_ && status.creation == newestCreation_;
}

void DDLogFileManagerDefault::deleteOldLogFiles() {
  const std::uint64_t kept = maximumNumberOfLogFiles();
  if (kept == 0) return;
  std::vector<Ref<DDLogFileInfo>> infos = sortedLogFileInfos();
  NSString newest;
  {
    const MutexLock lock(mutex_);
    newest = newestPath_;
  }
  if (!infos.empty() && !infos.front()->isArchived()) infos.erase(infos.begin());
  for (std::size_t i = kept; i < infos.size(); ++i) {
    if (infos[i]->filePath() == newest && !infos[i]->isArchived()) continue;
    const Ref<NSDictionary> attributes = infos[i]->fileAttributes();  // of a link itself
    if (!attributes || attributes->objectForKey(NSFileType) == Value(NSFileTypeDirectory)) continue;
    // Without the content, because a folder may have replaced the file since it was checked.
    static_cast<void>(kernel::removeWithAttributes(infos[i]->filePath().fileSystemRepresentation()));
  }
}

}  // namespace norvik
