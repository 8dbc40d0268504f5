#include "NorvikCore/values/NKUITag.h"

#include "NorvikCore/platform/values/Format.h"

namespace norvik {
namespace {

std::uint64_t m_dynamicTab = 0;
std::uint64_t m_identifierIndex = 0;

constexpr std::uint64_t firstTag = 329;

}  // namespace

std::int64_t NKDeriveUniqueUITag(std::int64_t group) {
  return static_cast<std::int64_t>((m_dynamicTab++ + firstTag) | static_cast<std::uint64_t>(group) << 32U);
}

NSString NKViewIdentifier(const NSString& prefix) { return stringWithFormat("%@_%lu", prefix, m_identifierIndex++); }

}  // namespace norvik
