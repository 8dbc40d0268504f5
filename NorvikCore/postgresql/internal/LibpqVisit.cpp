#include "NorvikCore/postgresql/internal/LibpqVisit.h"

#include "NorvikCore/platform/foundation/internal/ProcessEnd.h"
#include "NorvikCore/platform/kernel/Fork.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/kernel/Mutex.h"

#include <openssl/crypto.h>

#include <atomic>
#include <cstdlib>
#include <utility>
#include <vector>

namespace norvik::detail {
namespace {

constexpr std::int64_t endPatience = NSEC_PER_SEC;

enum class Ended : std::uint8_t { nothing, openSSL, everything };
std::atomic<Ended> ended{Ended::nothing};

/// The visits of this process.
class Visits {
 public:
  [[nodiscard]] static dispatch_group_t group() {
    auto& visits = kernel::madeOnce([] { return new Visits; });
    const MutexLock lock(visits.mutex_);
    // Visits that other threads of the parent had begun at the fork do not end in the child.
    if (visits.generation_ != kernel::forkGeneration()) {
      visits.parents_.push_back(std::exchange(visits.group_, dispatch_group_create()));
      visits.generation_ = kernel::forkGeneration();
    }
    return visits.group_;
  }

 private:
  Mutex mutex_;
  dispatch_group_t group_ NK_GUARDED_BY(mutex_) = dispatch_group_create();
  std::vector<dispatch_group_t> parents_ NK_GUARDED_BY(mutex_);  // not destroyed, because visits have entered them
  std::uint32_t generation_ NK_GUARDED_BY(mutex_) = kernel::forkGeneration();
};

void endVisits(Ended what) {
  ended.store(what);
  dispatch_group_wait(Visits::group(), dispatch_time(DISPATCH_TIME_NOW, endPatience));
}

[[gnu::constructor]] void keepOpenSSL() {
  OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT, nullptr);
  OPENSSL_atexit([] { endVisits(Ended::openSSL); });
  // Called before a clean-up that was registered earlier.
  (void)std::atexit([] { callEndFunctions(); });
}

[[gnu::destructor]] void endLibpq() {
  callEndFunctions();
  endVisits(Ended::everything);
}

}  // namespace

bool LibpqVisit::begin(Use use) {
  calls_ = Visits::group();
  dispatch_group_enter(*calls_);
  const Ended now = ended.load();
  if (now == Ended::nothing || (now == Ended::openSSL && use == Use::ofLibpqAlone)) return true;
  end();
  return false;
}

void LibpqVisit::end() noexcept {
  if (!calls_) return;
  dispatch_group_leave(*calls_);
  calls_.reset();
}

}  // namespace norvik::detail
