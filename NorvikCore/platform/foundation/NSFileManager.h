// NorvikCore/platform/foundation/NSFileManager.h - files and folders by their paths.
//
//   NSFileManager& files = NSFileManager::defaultManager();
//   Ref<NSError> error;
//   if (!files.createDirectoryAtPath(folder, true, nullptr, &error)) NSLog("%@", error);
//   if (Ref<NSDictionary> file = files.attributesOfItemAtPath(path, &error)) file->objectForKey(NSFileSize);
//
// A path is a text; bytes of a file's name that are not UTF-8 take NSString's form for them in both directions, so
// every entry of a folder can be used by the name it was listed with. A '~' stands for itself; one that holds a NUL
// names nothing.
//
// An operation that fails says so by its result, and by an NSError that tells what failed, on which path, and why:
// domain NSPOSIXErrorDomain, the system's error number as code.
//
// Files and folders take their extended attributes along, also where the file system has none and they are side files
// (kernel/ExtendedAttributes.h). Any thread.
#pragma once

#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/collections/NSData.h"
#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/collections/NSError.h"
#include "NorvikCore/platform/export.h"

#include <optional>

namespace norvik {

// Keys of an item's attributes, and the texts that stand under NSFileType.
NK_EXPORT extern const NSString NSFileType;
NK_EXPORT extern const NSString NSFileTypeRegular;
NK_EXPORT extern const NSString NSFileTypeDirectory;
NK_EXPORT extern const NSString NSFileTypeSymbolicLink;
NK_EXPORT extern const NSString NSFileTypeCharacterSpecial;
NK_EXPORT extern const NSString NSFileTypeBlockSpecial;
NK_EXPORT extern const NSString NSFileTypeSocket;
/// Pipes too.
NK_EXPORT extern const NSString NSFileTypeUnknown;
/// Bytes.
NK_EXPORT extern const NSString NSFileSize;
NK_EXPORT extern const NSString NSFileModificationDate;
/// kernel/FileStatus.h says what it is where the file system keeps none.
NK_EXPORT extern const NSString NSFileCreationDate;
/// The lower twelve bits of the mode, as a number.
NK_EXPORT extern const NSString NSFilePosixPermissions;
NK_EXPORT extern const NSString NSFileOwnerAccountID;
NK_EXPORT extern const NSString NSFileGroupOwnerAccountID;
/// The number of names.
NK_EXPORT extern const NSString NSFileReferenceCount;
NK_EXPORT extern const NSString NSFileSystemNumber;
NK_EXPORT extern const NSString NSFileSystemFileNumber;

class NK_EXPORT NSFileManager : public NSObject {
  NK_OBJECT(NSFileManager, NSObject)

  NSFileManager() = default;
  ~NSFileManager() override;

  [[nodiscard]] static NSFileManager& defaultManager();

  // A subclass may replace these two, which Categories/NSFileManager+... build on.

  /// Follows links: one that leads nowhere does not exist. `*isDirectory`, if given, is set only where something
  /// exists.
  [[nodiscard]] virtual bool fileExistsAtPath(const NSString& path, bool* isDirectory = nullptr) const;

  /// Makes a folder, with the missing ones above it or only where its parent exists. With intermediate folders one that
  /// is there already is success, without it is a failure. Of the attributes NSFilePosixPermissions counts (of the
  /// folder itself), less the process's umask.
  virtual bool createDirectoryAtPath(const NSString& path, bool withIntermediateDirectories,
                                     const Ref<NSDictionary>& attributes, Ref<NSError>* error = nullptr);

  /// The names in the folder, in the order of the file system, side files of attributes left out. Empty Ref on failure.
  [[nodiscard]] Ref<NSArray> contentsOfDirectoryAtPath(const NSString& path, Ref<NSError>* error = nullptr) const;

  /// Under the keys above; of a link itself, not of what it leads to. Empty Ref on failure.
  [[nodiscard]] Ref<NSDictionary> attributesOfItemAtPath(const NSString& path, Ref<NSError>* error = nullptr) const;
  /// Of the attributes NSFilePosixPermissions and NSFileModificationDate count.
  bool setAttributes(const NSDictionary& attributes, const NSString& ofItemAtPath, Ref<NSError>* error = nullptr);

  /// Writes a file with that content (absent: empty), in the place of one that is there. Attributes as for
  /// setAttributes().
  bool createFileAtPath(const NSString& path, const Ref<NSData>& contents,
                        const Ref<NSDictionary>& attributes = nullptr);
  /// The whole content; an empty Ref where it cannot be read.
  [[nodiscard]] Ref<NSData> contentsAtPath(const NSString& path) const;

  /// Where something is at `toPath` already, that is a failure (EEXIST). To another file system the item is copied and
  /// then removed.
  bool moveItemAtPath(const NSString& path, const NSString& toPath, Ref<NSError>* error = nullptr);
  /// Files, links (as such), and folders with all that is in them; permissions, modification times and extended
  /// attributes too. What cannot be copied whole is not left at `toPath` in part.
  bool copyItemAtPath(const NSString& path, const NSString& toPath, Ref<NSError>* error = nullptr);
  /// A folder with all that is in it, however deep; a link, not what it leads to, also with '/' behind it. "/" (EBUSY)
  /// and a path that ends with "." or ".." (EINVAL) are refused.
  bool removeItemAtPath(const NSString& path, Ref<NSError>* error = nullptr);
};

}  // namespace norvik
