// NorvikCore/platform/foundation/NSURL.h - URLs of files and folders, of web resources, and any other URL.
//
//   Ref<NSURL> url = NSURL::fileURLWithPath("/home/pat/Pay/April \u00A3.csv", false);
//   url->absoluteString();      // "file:///home/pat/Pay/April%20%C2%A3.csv"
//   url->path();                // "/home/pat/Pay/April £.csv"
//
//   Ref<NSURL> slips = NSURL::URLWithString("HTTPS://Pay.Example.com:443/a/../slips?month=4");
//   slips->absoluteString();                                          // "https://pay.example.com/slips?month=4"
//   NSURL::URLWithString("april.pdf", *slips)->path();                // "/april.pdf"
//
// A text is a URL if RFC 3986 calls it a URI or a relative reference ("slips/april", without scheme and host) and it
// has 2 MiB at most. It therefore has no space, no character beyond ASCII and no '%' without two digits;
// nk_URLWithString() encodes those. Where browsers and libcurl differ from RFC 3986, the rules of WHATWG are used:
// - Control characters and spaces at the ends, and tabs and line ends anywhere, are removed.
// - With http, https, ws, wss, ftp and file a backslash before the query is a slash.
// - Except for file, these schemes need a host; their path begins with '/', and "." and ".." in it are resolved; the
//   scheme's default port is removed. A text with a port above 65535 is not a URL.
// - The host is in lower case, an international name in its ASCII form ("xn--..."), numbers and IPv6 addresses in their
//   canonical form ("0x7f.1" is "127.0.0.1"). A full stop at its end stays: "example.com." is another host.
// - The host of a file may be "localhost", which is removed; its path begins with '/' and keeps "." and "..".
// Everything else stays as it was written.
//
// The URL of a folder ends with '/'; its path does not. A byte that RFC 3986 does not allow in a path is written as '%'
// and two hexadecimal digits, so that a name that is not UTF-8 is preserved.
//
// Immutable, any thread. Two objects are equal if their URLs are equal: the URLs of a file and a folder with the same
// path differ, and links are not resolved. URLs that are not of files are parsed by uriparser, which is loaded when the
// first one is parsed (NSGenericException if that fails).
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

  /// The URL of the folder "/".
  NSURL();
  ~NSURL() override;

  /// An empty Ref if the text is not a URL.
  [[nodiscard]] static Ref<NSURL> URLWithString(const NSString& text);
  /// Resolves the text, which may have no scheme, against that URL, which must have one. An empty Ref if it cannot be
  /// resolved. It is resolved at once; no part of it remains relative.
  [[nodiscard]] static Ref<NSURL> URLWithString(const NSString& text, const NSURL& relativeToURL);

  /// The URL of a folder if the path ends with '/' or a folder exists there now, else of a file. A path that does not
  /// begin with '/' is relative to the current folder; an empty path is that folder; '~' is not expanded.
  [[nodiscard]] static Ref<NSURL> fileURLWithPath(const NSString& path);
  /// The same without access to the file system.
  [[nodiscard]] static Ref<NSURL> fileURLWithPath(const NSString& path, bool isDirectory);

  /// True for a file or folder of this machine. False for a "file:" URL with a host, a query or a fragment, because it
  /// names something else or something more than a local file.
  [[nodiscard]] bool isFileURL() const noexcept { return !address_; }
  /// In lower case; absent in a relative reference.
  [[nodiscard]] std::optional<NSString> scheme() const;
  /// Without the brackets of an IPv6 address. Absent if there is no host, as in "mailto:pat@example.com", "slips/april"
  /// and the URL of a file.
  [[nodiscard]] std::optional<NSString> host() const;
  /// Absent if it is the scheme's default port.
  [[nodiscard]] std::optional<std::int64_t> port() const;
  // As written in the URL, with escapes.
  [[nodiscard]] std::optional<NSString> user() const;
  [[nodiscard]] std::optional<NSString> password() const;
  [[nodiscard]] NSString percentEncodedPath() const;
  [[nodiscard]] std::optional<NSString> query() const;
  [[nodiscard]] std::optional<NSString> fragment() const;

  /// Without escapes and, unless it is "/", without a trailing '/'. The path of a file begins with '/'.
  [[nodiscard]] const NSString& path() const noexcept { return path_; }
  /// True if the path in the URL ends with '/'.
  [[nodiscard]] bool hasDirectoryPath() const noexcept { return isDirectory_; }
  [[nodiscard]] NSString lastPathComponent() const { return path_.lastPathComponent(); }
  /// The whole URL, including a password.
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
  detail::Hidden<const detail::Address> address_;  ///< null for a file of this machine
};

}  // namespace norvik
