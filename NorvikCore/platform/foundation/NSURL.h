// NorvikCore/platform/foundation/NSURL.h - addresses: of files and folders, of what is on the web, and any other.
//
//   Ref<NSURL> url = NSURL::fileURLWithPath("/home/pat/Pay/April \u00A3.csv", false);
//   url->absoluteString();      // "file:///home/pat/Pay/April%20%C2%A3.csv"
//   url->path();                // "/home/pat/Pay/April £.csv"
//
//   Ref<NSURL> slips = NSURL::URLWithString("HTTPS://Pay.Example.com:443/a/../slips?month=4");
//   slips->absoluteString();                                          // "https://pay.example.com/slips?month=4"
//   NSURL::URLWithString("april.pdf", *slips)->path();                // "/april.pdf"
//
// Which texts are addresses: what RFC 3986 calls a URI or a relative reference ("slips/april", without scheme and
// host), up to 2 MiB. So no space, no letter beyond ASCII and no '%' without two digits; nk_URLWithString() encodes
// those. What browsers and libcurl do differently is done as WHATWG says:
// - Control characters and spaces at the ends, and tabs and line ends anywhere, are left out.
// - With http, https, ws, wss, ftp and file a backslash before the query is a slash.
// - Those but file need a host; their path begins with '/', and "." and ".." in it are resolved; the scheme's
//   usual port is left out. A port above 65535 makes the text no address.
// - The host is in lower case, an international name in its ASCII form ("xn--..."), numbers and IPv6 addresses in their
//   usual form ("0x7f.1" is "127.0.0.1"). A full stop at its end stays: "example.com." is another host.
// - The host of a file may be "localhost", which is left out; its path begins with '/' and keeps "." and "..".
// Everything else is kept as it was written.
//
// A file's address: a folder's ends with '/', its path does not. A byte that RFC 3986 does not allow in a path is
// written as '%' and two hexadecimal digits; a name that is not UTF-8 comes back as it was.
//
// Immutable, any thread. Equal where the addresses are: a file's and a folder's of the same path differ, and no link is
// resolved. What is no file's address is read by uriparser, loaded with the first of them (NSGenericException without
// it).
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/kernel/Hidden.h"
#include "NorvikCore/platform/object/NSCoder.h"

namespace norvik {

namespace detail {
struct Address;
}

class NK_EXPORT NSURL : public NSObject, public NSCoding {
  NK_OBJECT(NSURL, NSObject)
  NK_CODING

  /// Of the folder "/".
  NSURL();
  ~NSURL() override;

  /// Empty where the text is no address.
  [[nodiscard]] static Ref<NSURL> URLWithString(const NSString& text);
  /// What the text, which may have no scheme of its own, refers to at that address, which has one. Empty where it is
  /// none. It is resolved at once; no part of it remains relative.
  [[nodiscard]] static Ref<NSURL> URLWithString(const NSString& text, const NSURL& relativeToURL);

  /// Of a folder where the path ends with '/' or a folder is there now, else of a file. A path that does not begin with
  /// '/' is taken from the current folder, and an empty one is that folder; '~' is not expanded.
  [[nodiscard]] static Ref<NSURL> fileURLWithPath(const NSString& path);
  /// Does not look what is there.
  [[nodiscard]] static Ref<NSURL> fileURLWithPath(const NSString& path, bool isDirectory);

  /// Of a file or folder of this machine. False for a "file:" address with a host, a query or a fragment: it names
  /// something else, or more, than a file here.
  [[nodiscard]] bool isFileURL() const noexcept { return !address_; }
  /// In lower case; absent from a relative reference.
  [[nodiscard]] std::optional<NSString> scheme() const;
  /// Without the brackets of an IPv6 address. Absent where there is none, as in "mailto:pat@example.com", "slips/april"
  /// and the address of a file.
  [[nodiscard]] std::optional<NSString> host() const;
  /// Absent where it is the scheme's usual one.
  [[nodiscard]] std::optional<std::int64_t> port() const;
  // As they are written in the address, with their escapes.
  [[nodiscard]] std::optional<NSString> user() const;
  [[nodiscard]] std::optional<NSString> password() const;
  [[nodiscard]] NSString percentEncodedPath() const;
  [[nodiscard]] std::optional<NSString> query() const;
  [[nodiscard]] std::optional<NSString> fragment() const;

  /// Without escapes and, unless it is "/", without '/' at its end. Of a file it begins with '/'.
  [[nodiscard]] const NSString& path() const noexcept { return path_; }
  /// The path in the address ends with '/'.
  [[nodiscard]] bool hasDirectoryPath() const noexcept { return isDirectory_; }
  [[nodiscard]] NSString lastPathComponent() const { return path_.lastPathComponent(); }
  /// The whole address, a password in it included.
  [[nodiscard]] NSString absoluteString() const;
  NK_METHOD(isFileURL)
  NK_METHOD(scheme)
  NK_METHOD(host)
  NK_METHOD(port)
  NK_METHOD(user)
  NK_METHOD(password)
  NK_METHOD(percentEncodedPath)
  NK_METHOD(query)
  NK_METHOD(fragment)
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
  NSURL(NSString path, bool isDirectory);
  bool take(detail::Address address);

  NSString path_ = "/";
  bool isDirectory_ = true;
  detail::Hidden<const detail::Address> address_;  ///< none for a file of this machine
};

}  // namespace norvik
