// Zone files and rules from any source. Damaged data is refused, and accepted data is consistent. A slow model computes
// each answer too. It finds the span by walking from change to change, and the local time by trying every span.
#include "NorvikCore/platform/foundation/internal/ZoneRules.h"

#include <cstdint>
#include <cstdlib>
#include <string_view>

using norvik::detail::ZoneRules;
using norvik::detail::ZoneSpan;

namespace {

void require(bool condition) {
  if (!condition) std::abort();
}

void checkAt(const ZoneRules& rules, std::int64_t instant) {
  const ZoneSpan span = rules.spanAt(instant);
  require(span.type && (span.from <= instant || span.from == INT64_MIN));
  require(instant < span.until || span.until == INT64_MAX);
  require(*span.type == rules.typeAt(instant));
  if (const auto next = rules.nextChangeAfter(instant)) {
    require(*next > instant);
    require(!(rules.typeAt(*next) == *span.type));
    require(rules.typeAt(*next - 1) == *span.type);
  }

  const std::int64_t local = instant + span.type->offset;
  const std::int64_t found = rules.instantOfLocal(local);
  require(found <= instant);
  require(found + rules.typeAt(found).offset == local);
  std::int64_t first = instant;
  for (ZoneSpan earlier = rules.spanAt(local - 30 * 3600); earlier.from <= instant;
       earlier = rules.spanAt(earlier.until)) {
    const std::int64_t candidate = local - earlier.type->offset;
    if (candidate >= earlier.from && candidate < earlier.until && candidate < first) first = candidate;
    if (earlier.until == INT64_MAX) break;
  }
  require(found == first);
}

void check(const ZoneRules& rules) {
  constexpr std::int64_t century = 100 * 365 * 86'400LL;
  for (std::int64_t instant = -2 * century; instant <= 2 * century; instant += century / 7) checkAt(rules, instant);
  std::size_t checked = 0;
  for (const std::int64_t change : rules.instants()) {
    if (change < -1000 * century || change > 1000 * century) continue;
    for (const std::int64_t near : {-1, 0, 1, 3600}) checkAt(rules, change + near);
    if (++checked == 64) break;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  if (const auto rules = ZoneRules::fromTzif(bytes)) check(*rules);
  if (const auto rules = ZoneRules::fromPosix(bytes)) check(*rules);
  return 0;
}
