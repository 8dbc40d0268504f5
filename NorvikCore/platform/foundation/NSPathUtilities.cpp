#include "NorvikCore/platform/foundation/NSPathUtilities.h"

#include "NorvikCore/platform/kernel/Paths.h"

#include <string>

namespace norvik {
namespace {

NSString withoutSlashesAtEnd(std::string path) {
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  return NSString::fromBytes(path);
}

}  // namespace

NSString stringByExpandingTildeInPath(const NSString& path) {
  return withoutSlashesAtEnd(kernel::expandTilde(path.bytes()));
}

NSString stringByAbbreviatingWithTildeInPath(const NSString& path) {
  const std::string home = kernel::homeDirectory(), bytes = path.bytes();
  const bool isInHome =
      home != "/" && bytes.starts_with(home) && (bytes.size() == home.size() || bytes[home.size()] == '/');
  return withoutSlashesAtEnd(isInHome ? "~" + bytes.substr(home.size()) : bytes);
}

}  // namespace norvik
