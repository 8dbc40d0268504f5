// NorvikCore/logging/DDLogFileInfo.h - a log file on disk: its name, dates and size, and whether it is archived.
//
//   auto info = DDLogFileInfo::logFileWithPath("/var/log/pay/log-3F2504.txt");
//   info->creationDate();       // read once, then kept until reset()
//   info->setIsArchived(true);
//
// A file is archived, which means that no logger writes to it any more, when it has the extended attribute
// "quillmarch.log.archived" (on Linux "user.quillmarch.log.archived"). If the file system has no attributes, a hidden
// side file replaces it: see ExtendedAttributes.h in platform/kernel.
//
// Values of the file system are read on first use and then stored; a stored size of 0 counts as not read. reset()
// discards all stored values except the size, which it keeps on purpose.
//
// If the path names a symbolic link, everything here concerns the link, not its target. A link has no attributes, so it
// is never archived and cannot be archived; renaming renames the link.
//
// Threads: confined to one thread at a time.
// Errors:  attributes and renames that fail are reported on the system console; nothing is raised.
#pragma once

#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/Date.h"
#include "NorvikCore/platform/values/NSComparisonResult.h"

#include <cstdint>
#include <optional>

namespace norvik {

class NK_EXPORT DDLogFileInfo : public NSObject {
  NK_OBJECT(DDLogFileInfo, NSObject)

  [[nodiscard]] static Ref<DDLogFileInfo> logFileWithPath(const NSString& filePath);
  [[nodiscard]] static Ref<DDLogFileInfo> initWithFilePath(const NSString& filePath);

  [[nodiscard]] const NSString& filePath() const noexcept { return filePath_; }
  /// The last component of the path.
  [[nodiscard]] NSString fileName() const;
  /// The file system's attributes of the file (keys in NSFileManager.h); empty if it reports none.
  [[nodiscard]] Ref<NSDictionary> fileAttributes() const;
  [[nodiscard]] std::optional<Date> creationDate() const;
  [[nodiscard]] std::optional<Date> modificationDate() const;
  /// In bytes. Read again at each call while it is 0.
  [[nodiscard]] std::uint64_t fileSize() const;
  /// Seconds since the creation by the system's clock; 0 if there is no creation date.
  [[nodiscard]] NSTimeInterval age() const;

  [[nodiscard]] bool isArchived() const;
  void setIsArchived(bool isArchived);

  /// Discards name, attributes and dates, so that they are read again; keeps the size.
  void reset();
  /// Renames the file within its folder; a name that leads out of it ("../old", "", "a/b") fails. Even if renaming
  /// fails, this info refers to the new path afterwards.
  void renameFile(const NSString& newFileName);

  [[nodiscard]] bool hasExtendedAttributeWithName(const NSString& attributeName) const;
  /// Both report a failure with the system's error number.
  void addExtendedAttributeWithName(const NSString& attributeName);
  void removeExtendedAttributeWithName(const NSString& attributeName);

  /// Newest first: ascending if this file is the later one. An absent date counts as the earliest.
  [[nodiscard]] NSComparisonResult reverseCompareByCreationDate(const DDLogFileInfo& another) const;
  [[nodiscard]] NSComparisonResult reverseCompareByModificationDate(const DDLogFileInfo& another) const;

  /// True for infos about the same path.
  [[nodiscard]] bool isEqual(const NSObject& other) const override;
  [[nodiscard]] std::size_t hash() const override;
  [[nodiscard]] NSString description() const override;

 protected:
  explicit DDLogFileInfo(NSString filePath);
  ~DDLogFileInfo() override;

 private:
  template <class T, class... Args>
  friend Ref<T> make(Args&&... args);

  NSString filePath_;
  mutable std::optional<NSString> fileName_;
  mutable Ref<NSDictionary> fileAttributes_;
  mutable std::optional<Date> creationDate_, modificationDate_;
  mutable std::uint64_t fileSize_ = 0;
};

}  // namespace norvik
