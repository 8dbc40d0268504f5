#include "NorvikCore/platform/object/internal/PermanentText.h"

#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/kernel/Mutex.h"

#include <string>
#include <unordered_set>

namespace norvik::detail {
namespace {

struct Texts {
  Mutex mutex;
  std::unordered_set<std::string> kept NK_GUARDED_BY(mutex);
};

Texts& texts() {
  return kernel::madeOnce([] { return new Texts; });
}

}  // namespace

NSString permanentText(const NSString& text) {
  if (!text.isWellFormed()) return text;  // it has no UTF-8 text to borrow
  Texts& all = texts();
  MutexLock lock(all.mutex);
  return NSString::borrowing(*all.kept.emplace(text.view()).first);
}

}  // namespace norvik::detail
