#include "NorvikCore/platform/object/SEL.h"

#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/kernel/Mutex.h"
#include "NorvikCore/platform/object/internal/PermanentText.h"

#include <algorithm>
#include <ostream>
#include <string>
#include <unordered_map>

namespace norvik {
namespace {

struct Selectors {
  Mutex mutex;
  std::unordered_map<std::string_view, const NSString*> names NK_GUARDED_BY(mutex);
};

Selectors& selectors() {
  return kernel::madeOnce([] { return new Selectors; });
}

}  // namespace

SEL::SEL(std::string_view name) {
  if (name.empty()) return;
  Selectors& known = selectors();
  MutexLock lock(known.mutex);
  if (const auto found = known.names.find(name); found != known.names.end()) {
    name_ = found->second;
    return;
  }
  const auto* kept = new NSString(detail::permanentText(NSString(name)));
  known.names.emplace(kept->view(), kept);
  name_ = kept;
}

NSString SEL::name() const noexcept { return name_ ? *name_ : NSString(); }

std::size_t SEL::argumentCount() const noexcept {
  return name_ ? static_cast<std::size_t>(std::ranges::count(name_->view(), ':')) : 0;
}

std::ostream& operator<<(std::ostream& out, SEL selector) { return out << selector.name(); }

}  // namespace norvik
