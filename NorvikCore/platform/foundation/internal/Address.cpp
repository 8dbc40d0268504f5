#include "NorvikCore/platform/foundation/internal/Address.h"

#include "NorvikCore/platform/foundation/internal/HostName.h"
#include "NorvikCore/platform/foundation/internal/UriLibrary.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>
#include <vector>

namespace norvik::detail {
namespace {

constexpr std::size_t longestAddress = 2'097'152;  // bytes, as in browsers

/// The schemes for which WHATWG has rules beyond RFC 3986, and their default ports.
constexpr std::pair<std::string_view, std::uint16_t> specialSchemes[] = {
    {"http", 80}, {"https", 443}, {"ws", 80}, {"wss", 443}, {"ftp", 21}, {"file", 0},
};

std::optional<std::uint16_t> usualPort(std::string_view scheme) {
  const auto found = std::ranges::find(specialSchemes, scheme, [](const auto& special) { return special.first; });
  return found == std::end(specialSchemes) ? std::nullopt : std::optional(found->second);
}

bool isSpecial(std::string_view scheme) { return usualPort(scheme).has_value(); }

/// In lower case; absent if the text is a relative reference.
std::optional<std::string> schemeOf(std::string_view text) {
  const std::size_t colon = text.find(':');
  if (colon == text.npos || colon == 0 || !isAsciiLetter(text.front())) return std::nullopt;
  const auto mayFollow = [](char c) { return isAsciiLetter(c) || isAsciiDigit(c) || c == '+' || c == '-' || c == '.'; };
  if (!std::ranges::all_of(text.substr(0, colon), mayFollow)) return std::nullopt;
  return asciiLower(text.substr(0, colon));
}

/// Replaces backslashes by slashes, because users type them for slashes. In a query or fragment they stay, and are not
/// allowed.
void turnBackslashes(std::string& text) {
  const std::size_t end = std::min(text.find_first_of("?#"), text.size());
  std::replace(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(end), '\\', '/');
}

std::string trimmed(std::string_view text) {
  const auto isBlank = [](char c) { return static_cast<unsigned char>(c) <= ' '; };
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
  std::string kept(text);
  std::erase_if(kept, [](char c) { return c == '\t' || c == '\n' || c == '\r'; });
  return kept;
}

/// The parts of a text as uriparser found them. Its memory is freed by the destructor.
class ParsedUri {
 public:
  ParsedUri() = default;
  ParsedUri(const ParsedUri&) = delete;
  ParsedUri& operator=(const ParsedUri&) = delete;
  ~ParsedUri() {
    if (isOwner_) uriLibrary().uriFreeUriMembersA(&uri_);
  }

  /// The result refers to the text.
  [[nodiscard]] bool parse(const std::string& text) {
    isOwner_ = uriLibrary().uriParseSingleUriExA(&uri_, text.data(), text.data() + text.size(), nullptr) == URI_SUCCESS;
    return isOwner_;
  }
  [[nodiscard]] bool resolve(const ParsedUri& reference, const ParsedUri& base) {
    isOwner_ = uriLibrary().uriAddBaseUriExA(&uri_, &reference.uri_, &base.uri_, URI_RESOLVE_STRICTLY) == URI_SUCCESS;
    return isOwner_;
  }
  [[nodiscard]] std::string text() const {
    int size = 0;
    if (uriLibrary().uriToStringCharsRequiredA(&uri_, &size) != URI_SUCCESS) return {};
    std::string text(static_cast<std::size_t>(size) + 1, '\0');
    if (uriLibrary().uriToStringA(text.data(), &uri_, size + 1, nullptr) != URI_SUCCESS) return {};
    text.pop_back();
    return text;
  }

  [[nodiscard]] const UriUriA& operator*() const noexcept { return uri_; }

 private:
  UriUriA uri_{};
  bool isOwner_ = false;
};

std::optional<std::string> partOf(const UriTextRangeA& range) {
  if (!range.first) return std::nullopt;
  return std::string(range.first, range.afterLast);
}

/// False if it is not a port. An empty port and the scheme's default port are left out.
bool readPort(const UriTextRangeA& range, Address& address) {
  if (!range.first || range.first == range.afterLast) return true;
  std::uint16_t port = 0;
  const auto [end, error] = std::from_chars(range.first, range.afterLast, port);
  if (error != std::errc() || end != range.afterLast) return false;
  if (!address.scheme || usualPort(*address.scheme) != port) address.port = port;
  return true;
}

bool readHost(const UriUriA& uri, Address& address) {
  if (uri.hostData.ip6) {
    std::array<unsigned char, 16> bytes{};
    std::ranges::copy(uri.hostData.ip6->data, bytes.begin());
    address.host = ipv6Text(bytes);
  } else if (uri.hostData.ipFuture.first) {
    return false;
  } else if (const std::optional<std::string> written = partOf(uri.hostText)) {
    address.host = canonicalHost(*written);
    if (!address.host) return false;
  }
  return true;
}

std::string_view withoutEscapedDots(std::string_view segment) {
  // "%2e" is a full stop here too.
  static constexpr std::pair<std::string_view, std::string_view> forms[] = {
      {"%2e", "."}, {".%2e", ".."}, {"%2e.", ".."}, {"%2e%2e", ".."}};
  if (segment.size() <= 6 && segment.find('%') != segment.npos) {
    const std::string lower = asciiLower(segment);
    for (const auto& [form, dots] : forms) {
      if (lower == form) return dots;
    }
  }
  return segment;
}

/// For a path that begins with '/': "/a/./b/../c" becomes "/a/c".
std::string withoutDotSegments(std::string_view path) {
  std::vector<std::string_view> kept;
  bool isFolder = false;
  for (std::size_t start = 1; start <= path.size();) {
    const std::size_t end = std::min(path.find('/', start), path.size());
    const std::string_view segment = path.substr(start, end - start), meant = withoutEscapedDots(segment);
    isFolder = meant == "." || meant == "..";
    if (meant == ".." && !kept.empty()) kept.pop_back();
    if (!isFolder) kept.push_back(segment);
    start = end + 1;
  }
  std::string result;
  for (const std::string_view segment : kept) (result += '/') += segment;
  if (isFolder || result.empty()) result += '/';
  return result;
}

/// The text between the authority, or the scheme, and the query.
std::string pathIn(std::string_view text, const UriUriA& uri) {
  const char* start = text.data();
  if (uri.scheme.first) start = uri.scheme.afterLast + 1;
  const std::string_view rest(start, static_cast<std::size_t>(text.data() + text.size() - start));
  std::size_t from = 0;
  if (rest.starts_with("//")) from = std::min(rest.find_first_of("/?#", 2), rest.size());
  return std::string(rest.substr(from, std::min(rest.find_first_of("?#", from), rest.size()) - from));
}

std::optional<Address> readTidied(const std::string& text) {
  if (text.empty() || text.size() > longestAddress) return std::nullopt;
  ParsedUri uri;
  if (!uri.parse(text)) return std::nullopt;
  Address address;
  if ((*uri).scheme.first) address.scheme = asciiLower({(*uri).scheme.first, (*uri).scheme.afterLast});
  address.userInfo = partOf((*uri).userInfo);
  if (!readHost(*uri, address) || !readPort((*uri).portText, address)) return std::nullopt;
  address.path = pathIn(text, *uri);
  address.query = partOf((*uri).query);
  address.fragment = partOf((*uri).fragment);
  if (!address.scheme || !isSpecial(*address.scheme)) return address;
  if (*address.scheme == "file") {
    if (!address.path.starts_with('/') || address.userInfo || address.port) return std::nullopt;
    if (!address.host || *address.host == "localhost") address.host = "";
    return address;
  }
  if (!address.host || address.host->empty()) return std::nullopt;
  address.path = withoutDotSegments(address.path);
  return address;
}

}  // namespace

std::string Address::text() const {
  std::string text;
  if (scheme) text = *scheme + ":";
  if (host) {
    text += "//";
    if (userInfo) text += *userInfo + "@";
    text += host->find(':') == host->npos ? *host : "[" + *host + "]";
    if (port) text += ":" + std::to_string(*port);
  }
  text += path;
  if (query) text += "?" + *query;
  if (fragment) text += "#" + *fragment;
  return text;
}

std::string tidiedAddress(std::string_view written) {
  std::string text = trimmed(written);
  if (const auto scheme = schemeOf(text); scheme && isSpecial(*scheme)) turnBackslashes(text);
  return text;
}

std::optional<Address> readAddress(std::string_view text) { return readTidied(tidiedAddress(text)); }

std::optional<Address> resolveAddress(const Address& base, std::string_view written) {
  if (!base.scheme) return std::nullopt;
  std::string reference = trimmed(written);
  const std::string scheme = schemeOf(reference).value_or(*base.scheme);
  if (isSpecial(scheme)) turnBackslashes(reference);
  const std::string baseText = base.text();
  if (reference.size() > longestAddress) return std::nullopt;
  ParsedUri parsedBase, parsedReference, resolved;
  if (!parsedBase.parse(baseText) || !parsedReference.parse(reference) ||
      !resolved.resolve(parsedReference, parsedBase)) {
    return std::nullopt;
  }
  return readTidied(resolved.text());
}

}  // namespace norvik::detail
