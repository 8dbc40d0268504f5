#include "NorvikCore/platform/keyvalue/internal/KeyPathText.h"

#include "NorvikCore/platform/values/NSException.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace norvik::detail {
namespace {

constexpr std::ptrdiff_t greatestKeyCount = 1000;

void checkKeyCount(const NSString& keyPath) {
  const std::string_view path = keyPath.view();
  if (path.size() < greatestKeyCount) [[likely]]
    return;
  const std::ptrdiff_t keyCount = std::ranges::count(path, '.') + 1;
  if (keyCount <= greatestKeyCount) return;
  NSException::raise(NSInvalidArgumentException, "a key path of " + std::to_string(keyCount) +
                                                     " keys is too long: there may be " +
                                                     std::to_string(greatestKeyCount));
}

/// The number of units before a byte of the path. Cutting a path by units preserves lone surrogate halves.
NSUInteger unitsBefore(const NSString& keyPath, std::size_t byte) {
  return keyPath.isAscii() ? byte : utf8::unitCount(keyPath.view().substr(0, byte));
}

}  // namespace

FirstKey firstKey(const NSString& keyPath) {
  const std::size_t dot = keyPath.view().find('.');
  if (dot == std::string_view::npos) return {keyPath, std::nullopt};
  checkKeyCount(keyPath);
  const NSUInteger units = unitsBefore(keyPath, dot);
  return {keyPath.substringToIndex(units), keyPath.substringFromIndex(units + 1)};
}

LastKey lastKey(const NSString& keyPath) {
  const std::size_t dot = keyPath.view().rfind('.');
  if (dot == std::string_view::npos) return {std::nullopt, keyPath};
  checkKeyCount(keyPath);
  const NSUInteger units = unitsBefore(keyPath, dot);
  return {keyPath.substringToIndex(units), keyPath.substringFromIndex(units + 1)};
}

std::vector<NSString> allKeys(const NSString& keyPath) {
  checkKeyCount(keyPath);
  return keyPath.componentsSeparatedBy(".");
}

}  // namespace norvik::detail
