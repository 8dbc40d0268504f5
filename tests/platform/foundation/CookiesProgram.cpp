// A program that has cookies and makes HTTP transfers with libcurl, for tests of two processes: cookies_program
// DATABASE PORT STEP...
//
//   get:URL      makes a transfer with the storage's cookies; every host is the local server on PORT
//   jar:FILE     uses libcurl's own cookie file FILE in later "plain" steps
//   plain:URL    makes a transfer with that file, by libcurl alone
//   line:LINE    sets a "Set-Cookie" line of http://pay.example.co.uk/
//   import:FILE  adds the cookies of a cookie file
//   export:FILE  writes the cookies to a cookie file
//   show         prints each cookie as a line of a cookie file, and an empty line
//   wait         reads a line from standard input
#include "NorvikCore/platform/foundation/NSHTTPCookieStorage_curl.h"

#include <cstdio>
#include <string>

using namespace norvik;

namespace {

std::size_t ignore(char*, std::size_t size, std::size_t count, void*) { return size * count; }

bool transfer(CURL* curl, const std::string& url, const std::string& port, NSHTTPCookieStorage* storage) {
  curl_slist* hosts = curl_slist_append(nullptr, ("::127.0.0.1:" + port).c_str());
  curl_easy_setopt(curl, CURLOPT_CONNECT_TO, hosts);
  curl_easy_setopt(curl, CURLOPT_PROXY, "");
  curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, &ignore);
  curl_easy_setopt(curl, CURLOPT_FOLLOWLOCATION, 1L);
  curl_easy_setopt(curl, CURLOPT_FORBID_REUSE, 1L);
  curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
  const CURLcode result = storage ? performWithCookies(curl, *storage) : curl_easy_perform(curl);
  if (result != CURLE_OK) std::fprintf(stderr, "%s: %s\n", url.c_str(), curl_easy_strerror(result));
  curl_easy_setopt(curl, CURLOPT_CONNECT_TO, nullptr);
  curl_slist_free_all(hosts);
  return result == CURLE_OK;
}

}  // namespace

int main(int count, char** arguments) {
  const auto storage = make<NSHTTPCookieStorage>(NSString(arguments[1]));
  const std::string port = arguments[2];
  CURL* shared = curl_easy_init();
  std::string jar;
  for (int i = 3; i < count; ++i) {
    const std::string step = arguments[i];
    const std::string name = step.substr(0, step.find(':'));
    const std::string rest = name.size() < step.size() ? step.substr(name.size() + 1) : "";
    if (name == "get") {
      if (!transfer(shared, rest, port, storage.get())) return 2;
    } else if (name == "jar") {
      jar = rest;
    } else if (name == "plain") {
      CURL* plain = curl_easy_init();
      curl_easy_setopt(plain, CURLOPT_COOKIEFILE, jar.c_str());
      curl_easy_setopt(plain, CURLOPT_COOKIEJAR, jar.c_str());
      const bool isDone = transfer(plain, rest, port, nullptr);
      curl_easy_cleanup(plain);
      if (!isDone) return 3;
    } else if (name == "line") {
      if (!storage->setCookieLine(rest, *NSURL::URLWithString("http://pay.example.co.uk/"))) return 4;
    } else if (name == "import") {
      if (!storage->addFromCookieFile(rest)) return 5;
    } else if (name == "export") {
      if (!storage->writeToCookieFile(rest)) return 6;
    } else if (name == "show") {
      const Ref<NSArray> cookies = storage->cookies();
      for (const NSHTTPCookie& cookie : cookies->as<NSHTTPCookie>()) {
        std::printf("%s\n", cookie.cookieFileLine().bytes().c_str());
      }
      std::printf("\n");
      std::fflush(stdout);
    } else if (name == "wait") {
      if (std::getchar() == EOF) return 7;
    } else {
      return 8;
    }
  }
  curl_easy_cleanup(shared);
}
