#include "NorvikCore/platform/foundation/internal/PublicSuffixes.h"

#include "NorvikCore/platform/foundation/internal/SharedLibrary.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"

#include <libpsl.h>

#include <memory>

namespace norvik::detail {
namespace {

struct List {
  decltype(&::psl_is_cookie_domain_acceptable) isAcceptable = nullptr;
  decltype(&::psl_is_public_suffix) isPublicSuffix = nullptr;
  const psl_ctx_t* list = nullptr;
};

const List& publicSuffixes() {
  return kernel::madeOnce([] {
    const SharedLibrary library("libpsl.so.5", "cookies of a domain cannot be checked without libpsl");
    decltype(&::psl_latest) latest = nullptr;
    decltype(&::psl_builtin) builtin = nullptr;
    auto made = std::make_unique<List>();
    library.find("psl_is_cookie_domain_acceptable", made->isAcceptable);
    library.find("psl_is_public_suffix", made->isPublicSuffix);
    library.find("psl_latest", latest);
    library.find("psl_builtin", builtin);
    made->list = latest(nullptr);
    if (!made->list) made->list = builtin();
    return made.release();
  });
}

}  // namespace

bool mayHostSetCookiesFor(const std::string& domain, const std::string& host) {
  const List& suffixes = publicSuffixes();
  return suffixes.isAcceptable(suffixes.list, host.c_str(), domain.c_str()) == 1;
}

bool isPublicSuffix(const std::string& domain) {
  const List& suffixes = publicSuffixes();
  return suffixes.isPublicSuffix(suffixes.list, domain.c_str()) == 1;
}

}  // namespace norvik::detail
