#include "NorvikCore/logging/DDLogFileInfo.h"

#include "NorvikCore/logging/internal/LogFile.h"
#include "NorvikCore/platform/foundation/NSFileManager.h"
#include "NorvikCore/platform/foundation/NSLog.h"
#include "NorvikCore/platform/kernel/ExtendedAttributes.h"

#include <cerrno>
#include <functional>
#include <string_view>
#include <utility>

namespace norvik {
namespace {

constexpr NSString archivedAttribute = "quillmarch.log.archived";

template <class T>
std::optional<T> attribute(const Ref<NSDictionary>& attributes, const NSString& key) {
  const Value* value = attributes ? attributes->find(key) : nullptr;
  return value ? value->as<std::optional<T>>() : std::nullopt;
}

NSComparisonResult newestFirst(const std::optional<Date>& date, const std::optional<Date>& other) {
  return date < other ? NSOrderedDescending : other < date ? NSOrderedAscending : NSOrderedSame;
}

/// Returns false for a name that would lead out of the folder.
bool namesOneFile(const NSString& name) {
  const std::string_view text = name.view();
  return !text.empty() && text != "." && text != ".." && text.find('/') == text.npos;
}

}  // namespace

DDLogFileInfo::DDLogFileInfo(NSString filePath) : filePath_(std::move(filePath)) {}

DDLogFileInfo::~DDLogFileInfo() = default;

Ref<DDLogFileInfo> DDLogFileInfo::logFileWithPath(const NSString& filePath) { return initWithFilePath(filePath); }

Ref<DDLogFileInfo> DDLogFileInfo::initWithFilePath(const NSString& filePath) { return make<DDLogFileInfo>(filePath); }

NSString DDLogFileInfo::fileName() const {
  if (!fileName_) fileName_ = filePath_.lastPathComponent();
  return *fileName_;
}

Ref<NSDictionary> DDLogFileInfo::fileAttributes() const {
  if (!fileAttributes_) fileAttributes_ = NSFileManager::defaultManager().attributesOfItemAtPath(filePath_);
  return fileAttributes_;
}

std::optional<Date> DDLogFileInfo::creationDate() const {
  if (!creationDate_) creationDate_ = attribute<Date>(fileAttributes(), NSFileCreationDate);
  return creationDate_;
}

std::optional<Date> DDLogFileInfo::modificationDate() const {
  if (!modificationDate_) modificationDate_ = attribute<Date>(fileAttributes(), NSFileModificationDate);
  return modificationDate_;
}

std::uint64_t DDLogFileInfo::fileSize() const {
  if (fileSize_ == 0) {
    // The stored attributes may date from a time when the file was empty.
    if (attribute<std::uint64_t>(fileAttributes_, NSFileSize).value_or(0) == 0) fileAttributes_ = nullptr;
    fileSize_ = attribute<std::uint64_t>(fileAttributes(), NSFileSize).value_or(0);
  }
  return fileSize_;
}

NSTimeInterval DDLogFileInfo::age() const {
  const std::optional<Date> creation = creationDate();
  return creation ? Date::systemDate().timeIntervalSinceDate(*creation) : 0;
}

bool DDLogFileInfo::isArchived() const { return hasExtendedAttributeWithName(archivedAttribute); }

void DDLogFileInfo::setIsArchived(bool isArchived) {
  if (isArchived) {
    addExtendedAttributeWithName(archivedAttribute);
  } else {
    removeExtendedAttributeWithName(archivedAttribute);
  }
}

void DDLogFileInfo::reset() {
  fileName_.reset();
  fileAttributes_ = nullptr;
  creationDate_.reset();
  modificationDate_.reset();
}

void DDLogFileInfo::renameFile(const NSString& newFileName) {
  if (newFileName == fileName()) return;
  const NSString newPath = filePath_.stringByDeletingLastPathComponent().stringByAppendingPathComponent(newFileName);
  Ref<NSError> error;
  if (!namesOneFile(newFileName)) {
    error = NSError::posixError(EINVAL, "move", filePath_ + " to " + newPath);
  } else {
    NSFileManager::defaultManager().moveItemAtPath(filePath_, newPath, &error);
  }
  if (error) {
    NSLog("DDLogFileInfo: Error renaming file (%@): %@", detail::printable(fileName()),
          detail::printable(error->description()));
  }
  filePath_ = newPath;
  reset();
}

bool DDLogFileInfo::hasExtendedAttributeWithName(const NSString& attributeName) const {
  return kernel::hasAttribute(filePath_.fileSystemRepresentation(), attributeName.view(), kernel::Links::stay);
}

void DDLogFileInfo::addExtendedAttributeWithName(const NSString& attributeName) {
  const int error =
      kernel::setAttribute(filePath_.fileSystemRepresentation(), attributeName.view(), "", kernel::Links::stay);
  if (error == 0) return;
  NSLog("DDLogFileInfo: setxattr(%@, %@): error = %i", attributeName, detail::printable(fileName()), error);
}

void DDLogFileInfo::removeExtendedAttributeWithName(const NSString& attributeName) {
  const int error =
      kernel::removeAttribute(filePath_.fileSystemRepresentation(), attributeName.view(), kernel::Links::stay);
  if (error == 0 || error == kernel::attributeAbsent) return;
  NSLog("DDLogFileInfo: removexattr(%@, %@): error = %i", attributeName, detail::printable(fileName()), error);
}

NSComparisonResult DDLogFileInfo::reverseCompareByCreationDate(const DDLogFileInfo& another) const {
  return newestFirst(creationDate(), another.creationDate());
}

NSComparisonResult DDLogFileInfo::reverseCompareByModificationDate(const DDLogFileInfo& another) const {
  return newestFirst(modificationDate(), another.modificationDate());
}

bool DDLogFileInfo::isEqual(const NSObject& other) const {
  const auto* info = dynamic_cast<const DDLogFileInfo*>(&other);
  return info && info->filePath_ == filePath_;
}

std::size_t DDLogFileInfo::hash() const { return std::hash<NSString>()(filePath_); }

NSString DDLogFileInfo::description() const {
  const auto orEmpty = [](const auto& content) { return content ? Value(content) : Value(""); };
  return NSDictionary::dictionaryWith({{"filePath", filePath_},
                                       {"fileName", fileName()},
                                       {"fileAttributes", orEmpty(fileAttributes())},
                                       {"creationDate", orEmpty(creationDate())},
                                       {"modificationDate", orEmpty(modificationDate())},
                                       {"fileSize", fileSize()},
                                       {"age", age()},
                                       {"isArchived", isArchived()}})
      ->description();
}

}  // namespace norvik
