#include "NorvikCore/platform/foundation/internal/SQLiteLibrary.h"

#include "NorvikCore/platform/foundation/internal/SharedLibrary.h"
#include "NorvikCore/platform/kernel/Fork.h"
#include "NorvikCore/platform/values/NSException.h"

#include <atomic>
#include <memory>
#include <new>

namespace norvik::detail::sqlite {
namespace {

constinit std::atomic<const Library*> loaded{nullptr};

/// Holds no lock while it waits for the loader's (see load()), unlike kernel::madeOnce. Two threads may load SQLite at
/// once; both find the same functions.
[[gnu::noinline]] const Library& loadNow() {
  const kernel::ForkHold hold;
  const SharedLibrary library("libsqlite3.so.0", "databases cannot be opened without SQLite");
  auto functions = std::make_unique<Library>();
#define NK_SQLITE_LOAD(name) library.find(#name, functions->name);
  NK_SQLITE_FUNCTIONS(NK_SQLITE_LOAD)
#undef NK_SQLITE_LOAD
  const Library* earlier = nullptr;
  if (!loaded.compare_exchange_strong(earlier, functions.get(), std::memory_order_acq_rel, std::memory_order_acquire))
    return *earlier;
  return *functions.release();
}

}  // namespace

const Library& library() {
  if (const Library* present = loaded.load(std::memory_order_acquire)) [[likely]]
    return *present;
  return loadNow();
}

void load() noexcept {
  try {
    (void)library();
  } catch (const NSException&) {
  } catch (const std::bad_alloc&) {
  }
}

}  // namespace norvik::detail::sqlite
