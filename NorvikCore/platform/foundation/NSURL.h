// NorvikCore/platform/foundation/NSURL.h - the addresses of files and folders.
//
//   Ref<NSURL> url = NSURL::fileURLWithPath("/home/pat/Pay/April \u00A3.csv", false);
//   url->absoluteString();      // "file:///home/pat/Pay/April%20%C2%A3.csv"
//   url->path();                // "/home/pat/Pay/April £.csv"
//
// A folder's address ends with '/', its path does not. In the address every byte of the path stands for itself or,
// where RFC 3986 lets it not stand in a path, as '%' and two hexadecimal digits; a name that is not UTF-8 comes back as
// it was.
//
// Immutable, any thread. Equal where the addresses are: a file's and a folder's of the same path differ, and no link,
// "." or ".." is resolved.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/object/NSCoder.h"

namespace norvik {

class NK_EXPORT NSURL : public NSObject, public NSCoding {
  NK_OBJECT(NSURL, NSObject)
  NK_CODING

  /// Of the folder "/".
  NSURL() = default;
  ~NSURL() override;

  /// Of a folder where the path ends with '/' or a folder is there now, else of a file. A path that does not begin with
  /// '/' is taken from the current folder; '~' stands for itself.
  [[nodiscard]] static Ref<NSURL> fileURLWithPath(const NSString& path);
  /// Does not look what is there.
  [[nodiscard]] static Ref<NSURL> fileURLWithPath(const NSString& path, bool isDirectory);

  /// True: there is no other kind of address yet.
  [[nodiscard]] bool isFileURL() const noexcept { return true; }
  /// "file".
  [[nodiscard]] NSString scheme() const;
  /// Begins with '/', and has none at its end unless it is "/".
  [[nodiscard]] const NSString& path() const noexcept { return path_; }
  [[nodiscard]] bool hasDirectoryPath() const noexcept { return isDirectory_; }
  [[nodiscard]] NSString lastPathComponent() const { return path_.lastPathComponent(); }
  [[nodiscard]] NSString absoluteString() const;
  NK_METHOD(isFileURL)
  NK_METHOD(scheme)
  NK_METHOD(path)
  NK_METHOD(hasDirectoryPath)
  NK_METHOD(lastPathComponent)
  NK_METHOD(absoluteString)

  [[nodiscard]] bool isEqual(const NSObject& other) const override;
  [[nodiscard]] std::size_t hash() const override;
  /// The absolute string.
  [[nodiscard]] NSString description() const override;

  void encodeWithCoder(NSCoder& coder) const override;
  bool initWithCoder(NSCoder& coder) override;

 private:
  NSURL(NSString path, bool isDirectory) : path_(std::move(path)), isDirectory_(isDirectory) {}

  NSString path_ = "/";
  bool isDirectory_ = true;
};

}  // namespace norvik
