// NorvikCore/platform/foundation/internal/UriLibrary.h - the functions of uriparser, loaded on first use.
//
//   const UriLibrary& library = uriLibrary();
//   library.uriParseSingleUriExA(&uri, first, afterLast, nullptr);
//
// uriparser reads exactly the grammar of RFC 3986, resolves relative references by it, and has no dependencies.
#pragma once

#include <uriparser/Uri.h>

namespace norvik::detail {

#define NK_URI_FUNCTIONS(function)                                                                              \
  function(uriAddBaseUriExA) function(uriFreeUriMembersA) function(uriParseSingleUriExA) function(uriToStringA) \
      function(uriToStringCharsRequiredA)

struct UriLibrary {
#define NK_URI_MEMBER(name) decltype(&::name) name;
  NK_URI_FUNCTIONS(NK_URI_MEMBER)
#undef NK_URI_MEMBER
};

/// Raises NSGenericException if it cannot be loaded; the next call tries again.
[[nodiscard]] const UriLibrary& uriLibrary();

}  // namespace norvik::detail
