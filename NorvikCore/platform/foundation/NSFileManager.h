// NorvikCore/platform/foundation/NSFileManager.h - files and folders by their paths.
//
//   NSFileManager& files = NSFileManager::defaultManager();
//   Ref<NSError> error;
//   if (!files.createDirectoryAtPath(folder, true, nullptr, &error)) NSLog("%@", error);
//   if (Ref<NSDictionary> file = files.attributesOfItemAtPath(path, &error)) file->objectForKey(NSFileSize);
//
// A path is a text. Bytes of a file name that are not UTF-8 are mapped to NSString's form for them and back, so that
// every entry of a folder can be used under its listed name. A '~' is not expanded. A path that holds a NUL names no
// file.
//
// An operation that fails reports it by its result and by an NSError, which describes the operation, the path and the
// cause: domain NSPOSIXErrorDomain, the system's error number as code.
//
// Extended attributes are moved, copied and removed together with their file or folder, also if the file system has
// none and they are in side files (kernel/ExtendedAttributes.h). Any thread.
#pragma once

#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/collections/NSData.h"
#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/collections/NSError.h"
#include "NorvikCore/platform/export.h"

#include <optional>

namespace norvik {

// Keys of an item's attributes, and the values of NSFileType.
NK_EXPORT extern const NSString NSFileType;
NK_EXPORT extern const NSString NSFileTypeRegular;
NK_EXPORT extern const NSString NSFileTypeDirectory;
NK_EXPORT extern const NSString NSFileTypeSymbolicLink;
NK_EXPORT extern const NSString NSFileTypeCharacterSpecial;
NK_EXPORT extern const NSString NSFileTypeBlockSpecial;
NK_EXPORT extern const NSString NSFileTypeSocket;
/// Also the type of pipes.
NK_EXPORT extern const NSString NSFileTypeUnknown;
/// In bytes.
NK_EXPORT extern const NSString NSFileSize;
NK_EXPORT extern const NSString NSFileModificationDate;
/// kernel/FileStatus.h describes the value if the file system stores no creation time.
NK_EXPORT extern const NSString NSFileCreationDate;
/// The lower twelve bits of the mode, as a number.
NK_EXPORT extern const NSString NSFilePosixPermissions;
NK_EXPORT extern const NSString NSFileOwnerAccountID;
NK_EXPORT extern const NSString NSFileGroupOwnerAccountID;
/// The number of names (hard links).
NK_EXPORT extern const NSString NSFileReferenceCount;
NK_EXPORT extern const NSString NSFileSystemNumber;
NK_EXPORT extern const NSString NSFileSystemFileNumber;

class NK_EXPORT NSFileManager : public NSObject {
  NK_OBJECT(NSFileManager, NSObject)

  NSFileManager() = default;
  ~NSFileManager() override;

  [[nodiscard]] static NSFileManager& defaultManager();

  // A subclass may override these two, which Categories/NSFileManager+... build on.

  /// Follows links; a dangling link does not exist. `*isDirectory`, if given, is set only if the path exists.
  [[nodiscard]] virtual bool fileExistsAtPath(const NSString& path, bool* isDirectory = nullptr) const;

  /// Creates a folder. If `withIntermediateDirectories` is true, missing parents are created too and an existing folder
  /// is a success; else the parent must exist and an existing folder is a failure. Of the attributes only
  /// NSFilePosixPermissions is used, for the folder itself, reduced by the process's umask.
  virtual bool createDirectoryAtPath(const NSString& path, bool withIntermediateDirectories,
                                     const Ref<NSDictionary>& attributes, Ref<NSError>* error = nullptr);

  /// The names in the folder, in the order of the file system, without side files of attributes. Empty Ref on failure.
  [[nodiscard]] Ref<NSArray> contentsOfDirectoryAtPath(const NSString& path, Ref<NSError>* error = nullptr) const;

  /// The attributes under the keys above. Links are not followed. Empty Ref on failure.
  [[nodiscard]] Ref<NSDictionary> attributesOfItemAtPath(const NSString& path, Ref<NSError>* error = nullptr) const;
  /// Of the attributes only NSFilePosixPermissions and NSFileModificationDate are used.
  bool setAttributes(const NSDictionary& attributes, const NSString& ofItemAtPath, Ref<NSError>* error = nullptr);

  /// Writes a file with that content (absent: empty). An existing file is replaced as a whole: after a failure, such as
  /// a full disk, it has its old content. Its owner, permissions and extended attributes stay, a symbolic link too.
  /// Only a file with hard links, a file in a folder that is not writable, and a pipe or device are written in place.
  /// Attributes as for setAttributes().
  bool createFileAtPath(const NSString& path, const Ref<NSData>& contents,
                        const Ref<NSDictionary>& attributes = nullptr, Ref<NSError>* error = nullptr);
  /// The whole content; an empty Ref if it cannot be read.
  [[nodiscard]] Ref<NSData> contentsAtPath(const NSString& path, Ref<NSError>* error = nullptr) const;

  /// Fails with EEXIST if `toPath` exists. On another file system the item is copied and then removed.
  bool moveItemAtPath(const NSString& path, const NSString& toPath, Ref<NSError>* error = nullptr);
  /// Copies a file, a link (not its target) or a folder with its content, including permissions, modification times and
  /// extended attributes. If the copy fails, no partial copy is left at `toPath`.
  bool copyItemAtPath(const NSString& path, const NSString& toPath, Ref<NSError>* error = nullptr);
  /// Removes a file, a folder with its content at any depth, or a link (not its target, also if '/' follows its name).
  /// Refuses "/" (EBUSY) and a path that ends with "." or ".." (EINVAL).
  bool removeItemAtPath(const NSString& path, Ref<NSError>* error = nullptr);
};

}  // namespace norvik
