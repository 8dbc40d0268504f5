#include "NorvikCore/logging/internal/ConsoleOutput.h"

#include "NorvikCore/platform/dispatch/Time.h"
#include "NorvikCore/platform/kernel/Clock.h"
#include "NorvikCore/platform/kernel/Fork.h"
#include "NorvikCore/platform/kernel/GatherWrite.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <new>
#include <utility>
#include <vector>

namespace norvik::detail {
namespace {

constexpr int standardError = 2;

std::size_t sizeOf(std::span<const std::string_view> pieces) noexcept {
  std::size_t size = 0;
  for (const std::string_view piece : pieces) size += piece.size();
  return size;
}

}  // namespace

/// A line that is handed to another thread, with its bytes.
struct ConsoleOutput::Handed {
  explicit Handed(Pieces given) {
    bytes.reserve(sizeOf(given));
    for (const std::string_view piece : given) {
      pieces.emplace_back(bytes.data() + bytes.size(), piece.size());
      bytes += piece;
    }
  }
  void write() noexcept { error = kernel::writeGathered(standardError, pieces, INT64_MAX, written); }

  std::string bytes;
  std::vector<std::string_view> pieces;
  std::atomic<bool> isBegun = false;
  std::size_t written = 0;
  int error = 0;
};

ConsoleOutput::ConsoleOutput()
    : queue_(dispatch_queue_create("cocoa.quillmarch.ttyLogger.writer")),
      finished_(dispatch_semaphore_create(0)),
      generation_(kernel::forkGeneration()) {}

ConsoleOutput::~ConsoleOutput() = default;

void ConsoleOutput::write(Pieces pieces) {
  noticeFork();
  if (!isFree()) return;
  std::string_view all[kernel::mostGatheredPieces];
  std::size_t count = 0;
  if (!rest_.empty()) all[count++] = rest_;
  for (const std::string_view piece : pieces) all[count++] = piece;
  const Pieces line(all, count);
  if (kernel::mayBlock(standardError, sizeOf(line))) {
    handOver(line);
  } else {
    writeHere(line);
  }
}

void ConsoleOutput::noticeFork() {
  if (generation_ == kernel::forkGeneration()) return;
  if (handed_) {  // the thread that wrote the line belongs to the parent
    finished_ = dispatch_semaphore_create(0);
    handed_ = nullptr;
  }
  rest_.clear();
  generation_ = kernel::forkGeneration();
}

void ConsoleOutput::writeHere(Pieces pieces) {
  const std::int64_t patience = isStalled_ ? 0 : NSEC_PER_SEC;
  std::size_t written = 0;
  const int error = kernel::writeGathered(standardError, pieces, kernel::monotonicNanoseconds() + patience, written);
  isStalled_ = error == ETIMEDOUT;
  keepRest(pieces, written, error);
}

void ConsoleOutput::handOver(Pieces pieces) {
  handed_ = std::make_shared<Handed>(pieces);
  try {
    dispatch_async(queue_, [handed = handed_, finished = finished_] {
      if (handed->isBegun.exchange(true)) return;
      handed->write();
      dispatch_semaphore_signal(finished);
    });
  } catch (const std::bad_alloc&) {
    if (!handed_->isBegun.exchange(true)) {
      handed_ = nullptr;
      throw;
    }
  }
  if (!awaitHanded()) {
    if (handed_->isBegun.exchange(true)) return;
    handed_->write();  // no thread could be started for it
  }
  const std::shared_ptr<Handed> done = std::move(handed_);
  keepRest(pieces, done->written, done->error);
}

// While standard error has room, the other thread is merely delayed, and the caller waits on.
bool ConsoleOutput::awaitHanded() {
  constexpr int mostSeconds = 30;
  for (int second = 0; second < mostSeconds; ++second) {
    if (dispatch_semaphore_wait(finished_, dispatch_time(DISPATCH_TIME_NOW, NSEC_PER_SEC)) == 0) return true;
    if (!handed_->isBegun || !kernel::awaitRoom(standardError, 0)) return false;
  }
  return false;
}

bool ConsoleOutput::isFree() {
  if (!handed_) return true;
  if (dispatch_semaphore_wait(finished_, DISPATCH_TIME_NOW) != 0) return false;
  const std::shared_ptr<Handed> done = std::move(handed_);
  keepRest(done->pieces, done->written, done->error);
  return true;
}

void ConsoleOutput::keepRest(Pieces pieces, std::size_t written, int error) {
  const std::size_t before = rest_.size();
  if (error == 0) return rest_.clear();
  if (written < before) {
    if (error != ETIMEDOUT) return rest_.clear();
    rest_.erase(0, written);
    return;
  }
  std::string rest;
  try {
    if (written > before) {
      for (const std::string_view piece : pieces) rest += piece;
      rest.erase(0, written);
    }
  } catch (const std::bad_alloc&) {
    rest_.assign(1, '\n');
    throw;
  }
  rest_ = std::move(rest);
}

}  // namespace norvik::detail
