// URLs from texts of other programs. A valid URL stays the same, and has the parts that its text shows.
//
// - A URL that is written and read again is equal and is written the same. So is a URL that was resolved against
//   another.
// - The parts of a URL, joined by the rule of RFC 3986, section 5.3, are its text.
// - Its text, split by the regular expression of RFC 3986, appendix B (here a plain search), gives those parts.
// - Its text contains only the characters that RFC 3986 allows.
// - The tolerant reader accepts every URL unchanged.
#include "NorvikCore/Categories/NSURL+NorvikCore.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

using namespace norvik;

namespace {

void require(bool isTrue, const char* what, std::string_view text) {
  if (isTrue) return;
  std::fprintf(stderr, "%s: %.*s\n", what, static_cast<int>(text.size()), text.data());
  std::abort();
}

using Part = std::optional<std::string>;

Part partOf(const std::optional<NSString>& text) { return text ? Part(text->bytes()) : std::nullopt; }

struct Split {
  Part scheme, authority, query, fragment;
  std::string path;
};

/// ^(([^:/?#]+):)?(//([^/?#]*))?([^?#]*)(\?([^#]*))?(#(.*))?
Split split(std::string text) {
  Split parts;
  if (const std::size_t hash = text.find('#'); hash != text.npos) {
    parts.fragment = text.substr(hash + 1);
    text.resize(hash);
  }
  if (const std::size_t mark = text.find('?'); mark != text.npos) {
    parts.query = text.substr(mark + 1);
    text.resize(mark);
  }
  if (const std::size_t colon = text.find_first_of(":/"); colon != text.npos && colon > 0 && text[colon] == ':') {
    parts.scheme = text.substr(0, colon);
    text.erase(0, colon + 1);
  }
  if (text.starts_with("//")) {
    const std::size_t end = std::min(text.find('/', 2), text.size());
    parts.authority = text.substr(2, end - 2);
    text.erase(0, end);
  }
  parts.path = text;
  return parts;
}

void check(const NSURL& url) {
  const std::string text = url.absoluteString().bytes();
  const Split parts = split(text);
  require(parts.scheme == partOf(url.scheme()), "another scheme", text);
  require(parts.path == url.percentEncodedPath().bytes(), "another path", text);
  require(parts.query == partOf(url.query()), "another query", text);
  require(parts.fragment == partOf(url.fragment()), "another fragment", text);
  std::string authority;
  if (url.user()) {
    authority += url.user()->bytes();
    if (url.password()) authority += ":" + url.password()->bytes();
    authority += "@";
  }
  const std::string host = url.host() ? url.host()->bytes() : "";
  authority += host.find(':') == host.npos ? host : "[" + host + "]";
  if (url.port()) authority += ":" + std::to_string(*url.port());
  require(parts.authority.value_or("") == authority, "another authority", text);
  for (const char c : text) {
    const bool isPlain = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
    require(isPlain || std::string_view("-._~!$&'()*+,;=:@/?#[]%").find(c) != std::string_view::npos, "a wrong byte",
            text);
  }
  for (const char c : host) require(c < 'A' || c > 'Z', "a capital in the host", text);
  const Ref<NSURL> again = NSURL::URLWithString(url.absoluteString());
  require(again && again->isEqual(url) && again->hash() == url.hash(), "it is not equal when it is read again", text);
  require(again->absoluteString() == url.absoluteString(), "it is not written the same again", text);
  require(nk_URLWithString(url.absoluteString())->isEqual(url), "the tolerant reader changes it", text);
  require(!nk_domain(url) || url.host(), "a domain without a host", text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const std::size_t end = std::min(bytes.find('\n'), bytes.size());
  const NSString first = NSString::fromBytes(bytes.substr(0, end));
  const NSString second = NSString::fromBytes(bytes.substr(std::min(end + 1, bytes.size())));
  const Ref<NSURL> strict = NSURL::URLWithString(first), tolerant = nk_URLWithString(first);
  if (strict) {
    check(*strict);
    require(tolerant && tolerant->isEqual(*strict), "the tolerant reader reads another", bytes);
    if (const Ref<NSURL> resolved = NSURL::URLWithString(second, *strict)) {
      check(*resolved);
      require(resolved->scheme().has_value(), "a resolved address without a scheme", bytes);
    }
  } else if (tolerant) {
    check(*tolerant);
  }
  return 0;
}
