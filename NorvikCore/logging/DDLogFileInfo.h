// NorvikCore/logging/DDLogFileInfo.h - one log file on disk: its name, dates and size, and whether it is archived.
//
//   auto info = DDLogFileInfo::logFileWithPath("/var/log/pay/log-3F2504.txt");
//   info->creationDate();       // read once, then kept until reset()
//   info->setIsArchived(true);
//
// A file is archived, done with, when it carries the extended attribute "quillmarch.log.archived" (on Linux
// "user.quillmarch.log.archived"; where the file system has no attributes, a hidden side file: ExtendedAttributes.h in
// platform/kernel).
//
// What is read from the file system is read on first use and then kept; a size of 0 counts as not read. reset() forgets
// all of it but the size, which is kept on purpose.
//
// Everything here is about the entry of that name itself: a symbolic link in the place of a log file is not followed.
// It has no attributes, so it is never archived, and can be given none; renaming moves the link.
//
// Threads: confined to one at a time.
// Errors:  attributes and renames that fail are reported on the system console, and nothing is raised.
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
  /// What the file system says of the file (keys in NSFileManager.h); empty where it says nothing.
  [[nodiscard]] Ref<NSDictionary> fileAttributes() const;
  [[nodiscard]] std::optional<Date> creationDate() const;
  [[nodiscard]] std::optional<Date> modificationDate() const;
  /// Bytes; asked again each time while it is 0.
  [[nodiscard]] std::uint64_t fileSize() const;
  /// Seconds since the creation by the system's clock; 0 where there is no creation date.
  [[nodiscard]] NSTimeInterval age() const;

  [[nodiscard]] bool isArchived() const;
  void setIsArchived(bool isArchived);

  /// Forgets name, attributes and dates, so that they are read again; keeps the size.
  void reset();
  /// Renames the file within its folder; a name that would lead out of it ("../old", "", "a/b") fails. Whether or not
  /// that works, this info is about the new path from then on.
  void renameFile(const NSString& newFileName);

  [[nodiscard]] bool hasExtendedAttributeWithName(const NSString& attributeName) const;
  /// Both report a failure with the error number that the system gave.
  void addExtendedAttributeWithName(const NSString& attributeName);
  void removeExtendedAttributeWithName(const NSString& attributeName);

  /// Newest first: ascending when this file is the later one. Absent dates are the earliest.
  [[nodiscard]] NSComparisonResult reverseCompareByCreationDate(const DDLogFileInfo& another) const;
  [[nodiscard]] NSComparisonResult reverseCompareByModificationDate(const DDLogFileInfo& another) const;

  /// Infos about the same path.
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
