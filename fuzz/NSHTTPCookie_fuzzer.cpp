// "Set-Cookie" lines and lines of cookie files, from servers and other programs. The first line of the input is a URL,
// the rest is the line.
//
// - A slow model, written from the text of RFC 6265, section 5.2, finds the name and the value of a line, if it has
//   them. An accepted cookie has the same name and value.
// - An accepted cookie is sent to the URL that it came from, has a domain that is the host or above it, and contains no
//   byte that would end a line of a request or a file.
// - A cookie is unchanged after conversion to a line of a cookie file and back, and to properties and back.
#include "NorvikCore/platform/foundation/NSHTTPCookie.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

using namespace norvik;

namespace {

void require(bool isTrue, const char* what, std::string_view text) {
  if (isTrue) return;
  std::fprintf(stderr, "%s: %.*s\n", what, static_cast<int>(text.size()), text.data());
  std::abort();
}

std::string trimmedByModel(std::string text) {
  while (!text.empty() && (text[0] == ' ' || text[0] == '\t')) text.erase(0, 1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.pop_back();
  return text;
}

std::optional<std::pair<std::string, std::string>> pairByModel(const std::string& line) {
  for (const char c : line) {
    if (c != '\t' && ((c >= 0 && c < ' ') || c == 127)) return std::nullopt;
  }
  std::string pair;
  for (std::size_t i = 0; i < line.size() && line[i] != ';'; ++i) pair += line[i];
  std::string name, value;
  bool isInValue = false;
  for (const char c : pair) {
    if (c == '=' && !isInValue) {
      isInValue = true;
    } else {
      (isInValue ? value : name) += c;
    }
  }
  name = trimmedByModel(name);
  value = trimmedByModel(value);
  const bool hasTab = (name + value).find('\t') != std::string::npos;
  if (!isInValue || name.empty() || hasTab || name.size() + value.size() > 4096) return std::nullopt;
  return std::pair(name, value);
}

void check(const NSHTTPCookie& cookie, std::string_view input) {
  const NSString line = cookie.cookieFileLine();
  require(line.bytes().find_first_of("\r\n") == std::string::npos, "a line end in a line", input);
  const Ref<NSHTTPCookie> again = NSHTTPCookie::cookieWithCookieFileLine(line);
  const bool isSame = again && again->cookieFileLine() == line && again->name() == cookie.name() &&
                      again->value() == cookie.value() && again->domain() == cookie.domain() &&
                      again->path() == cookie.path() && again->isSecure() == cookie.isSecure() &&
                      again->isHTTPOnly() == cookie.isHTTPOnly() && again->isSessionOnly() == cookie.isSessionOnly();
  require(isSame, "it is another after it was a line", input);
  const Ref<NSHTTPCookie> copy = NSHTTPCookie::cookieWithProperties(*cookie.properties());
  require(copy && copy->isEqual(cookie), "it is another after it was properties", input);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string input(reinterpret_cast<const char*>(data), size);
  const std::size_t end = std::min(input.find('\n'), input.size());
  const std::string line = input.substr(std::min(end + 1, input.size()));
  if (const auto cookie = NSHTTPCookie::cookieWithCookieFileLine(NSString::fromBytes(line))) check(*cookie, input);
  const Ref<NSURL> url = NSURL::URLWithString(NSString::fromBytes(input.substr(0, end)));
  if (!url) return 0;
  const Ref<NSHTTPCookie> cookie = NSHTTPCookie::cookieWithSetCookieLine(NSString::fromBytes(line), *url);
  const auto pair = pairByModel(line);
  if (!cookie) {
    // Other reasons to refuse it: attributes, a name that requires some, and a host that is the domain of others.
    const bool isPlain = pair && line.find(';') == line.npos && !pair->first.starts_with("__") && url->host() &&
                         !url->host()->hasPrefix(".");
    require(!isPlain, "a plain cookie is refused", input);
    return 0;
  }
  require(pair && cookie->name().bytes() == pair->first && cookie->value().bytes() == pair->second, "another cookie",
          input);
  check(*cookie, input);
  const std::string host = url->host()->bytes(), domain = cookie->domain().bytes();
  require(domain.starts_with('.') ? ("." + host).ends_with(domain) : domain == host, "a foreign domain", input);
  if (line.find(';') == line.npos) require(cookie->matchesURL(*url), "it does not go where it came from", input);
  return 0;
}
