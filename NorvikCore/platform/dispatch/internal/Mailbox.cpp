#include "NorvikCore/platform/dispatch/internal/Mailbox.h"

#include "NorvikCore/platform/dispatch/internal/SyncWaiter.h"
#include "NorvikCore/platform/dispatch/internal/ThreadFrames.h"
#include "NorvikCore/platform/dispatch/internal/ThreadShortage.h"
#include "NorvikCore/platform/dispatch/internal/WorkerPool.h"
#include "NorvikCore/platform/kernel/internal/Futex.h"

#include <algorithm>
#include <cstddef>
#include <thread>

namespace norvik::detail {
namespace {

constexpr std::uint64_t usualLook = 1'000'000;  // a lingering worker checks once a millisecond
constexpr std::uint64_t quiet = 60'000'000;     // and ends when no letter has come for this long
// If there are letters that it may not read, it checks again soon, and then less and less often.
constexpr std::uint64_t firstRetry = 20'000, lastRetry = 64'000'000;
constexpr std::size_t blocksPerTurn = 256;

/// A letter is claimed and not yet posted: its sender is writing it, or is not running.
void waitForSender() noexcept {
  for (int spin = 0; spin < 50; ++spin) spinPause();
  std::this_thread::yield();
}

const std::atomic<bool>& relaxed() noexcept {
  static constinit std::atomic<bool> mayWait{true};
  return mayWait;
}

}  // namespace

// The initialisation writes to each page of the ring, so that no sender has to wait for a page fault.
Mailbox::Mailbox(const char* label, Read read)
    : SerialQueue(Kind::mailbox, label), read_(read), ring_(new Letter[ringSize]()) {}

Mailbox::~Mailbox() { delete[] ring_; }

// --- Senders ---

bool Mailbox::learnWhatIsRead(std::uint64_t sent) noexcept {
  const std::uint64_t done = done_.load(std::memory_order_acquire);
  knownRead_.store(done, std::memory_order_release);
  isCrowded_.store(sent - done > bound / 2, std::memory_order_relaxed);
  return sent - done < bound;
}

/// Makes a worker check for letters.
void Mailbox::wake() noexcept {
  if (isShort_.load(std::memory_order_acquire)) return WorkerPool::shared().attemptStart();
  if ((sent_.fetch_and(~asleep, std::memory_order_seq_cst) & asleep) == 0) return;  // another sender did it
  retain();
  lingerItem_.mailbox = this;
  lingerItem_.run = [](Item* item) {
    Mailbox* mailbox = static_cast<LingerItem*>(item)->mailbox;
    mailbox->linger();
    mailbox->release();
  };
  WorkerPool::shared().submit(&lingerItem_, relaxed());
  if (ThreadShortage::exists(ThreadShortage::Of::workers)) [[unlikely]] {
    isShort_.store(true, std::memory_order_release);
    sent_.fetch_or(asleep, std::memory_order_seq_cst);
  }
}

void Mailbox::hurryLingerer() noexcept {
  if (hurried_.exchange(1, std::memory_order_seq_cst) == 0) futexWake(&hurried_, 1);
}

bool Mailbox::waitForRoom(std::uint64_t deadline) {
  const auto hasRoom = [this] { return learnWhatIsRead(sent()); };
  const auto readSome = [this] {
    if (target() != nullptr || !tryEnter()) return false;
    const FrameScope frame(this);
    static_cast<void>(readRun());
    SerialQueue::leave(Order::normal);
    return true;
  };
  int spins = WorkerPool::shared().spinsBeforeSleep();
  PatientWait wait(HelpGoal{.queue = this});
  for (;;) {
    if (hasRoom()) return true;
    hurryLingerer();
    if (readSome()) continue;
    if (spins-- > 0) {
      spinPause();
      continue;
    }
    waitingForRoom_.fetch_add(1, std::memory_order_seq_cst);
    const std::uint32_t made = roomMade_.load(std::memory_order_seq_cst);
    bool inTime = true;
    if (!hasRoom()) {
      // If the reader stops without having made room, for example at a suspension, no thread wakes this one.
      const std::uint64_t look = monotonicNanoseconds() + 10 * usualLook;
      static_cast<void>(wait.sleep(roomMade_, made, 1, std::min(look, deadline)));
      inTime = monotonicNanoseconds() < deadline;
    }
    if (wait.hasForked()) [[unlikely]]
      return true;
    waitingForRoom_.fetch_sub(1, std::memory_order_relaxed);
    if (!inTime) return hasRoom();
  }
}

void Mailbox::post(LooseLetter* loose) {
  loose->mailbox = this;
  loose->run = [](Item* item) {
    auto* own = static_cast<LooseLetter*>(item);
    LetterRun run;
    run.letters_[run.count_++] = &own->letter;
    own->mailbox->read_(run);
    delete own;
  };
  push(loose, Delivery::relaxed, Order::normal);
}

void Mailbox::push(Item* item, Delivery delivery, Order) {
  append(item, marked(delivery == Delivery::relaxed ? itemRelaxed : 0, sent()), delivery);
}

void Mailbox::enter(Order) {
  while (!enterAfter(sent())) {
  }
}

/// The calling thread itself reads what was sent before the call, so it needs no other thread. A drain reads it instead
/// if the queue has a target or is suspended meanwhile. False if a block or a reader that ran meanwhile has forked and
/// this is the child.
bool Mailbox::enterAfter(std::uint64_t position) noexcept {
  const std::uint32_t flags = marked(itemWaiter, position);
  if (!tryEnter() && !waitForTurn(flags)) return false;
  const std::uint32_t life = life_;
  while (life_ == life && done_.load(std::memory_order_relaxed) < position) {
    if (target() == nullptr && !isSuspended()) {
      readBefore(position);
    } else {
      SyncWaiter waiter(false);
      putBack(&waiter, flags);
      passOn();
      if (!waiter.wait(this)) return false;
    }
  }
  return true;
}

// --- The reader ---

bool Mailbox::isNextPosted() const noexcept {
  const std::uint64_t next = done_.load(std::memory_order_relaxed);
  return ring_[next % ringSize].posted.load(std::memory_order_acquire) == next + 1;
}

/// Collects posted letters, from the first unread one up to the position `end`.
void Mailbox::collect(LetterRun& run, std::uint64_t end) noexcept {
  for (std::uint64_t at = done_.load(std::memory_order_relaxed); at != end && run.count_ < LetterRun::longest; ++at) {
    Letter& letter = ring_[at % ringSize];
    if (letter.posted.load(std::memory_order_acquire) != at + 1) return;
    run.letters_[run.count_++] = &letter;
  }
}

void Mailbox::handOver(LetterRun& run) noexcept {
  run.mailbox_ = this;
  run.life_ = life_;
  read_(run);
}

/// Reads some letters, unless a block comes before them. False if there is nothing to read now.
bool Mailbox::readRun() noexcept {
  if (!isNextPosted()) return false;
  LetterRun run;
  collect(run, UINT64_MAX);
  // Checked after collect(): a block that was enqueued before one of these letters was sent is visible now.
  if (const Item* item = peek(); item != nullptr) {
    const std::int32_t before = lettersBefore(*item);
    if (before <= 0) return false;
    run.count_ = std::min(run.count_, static_cast<std::size_t>(before));
  }
  handOver(run);
  return true;
}

bool LetterRun::finish(std::size_t count) noexcept {
  finished_ += count;
  if (mailbox_ == nullptr) return finished_ < count_;
  if (mailbox_->life_ != life_) return false;
  mailbox_->done_.store(mailbox_->done_.load(std::memory_order_relaxed) + count, std::memory_order_seq_cst);
  if (mailbox_->waitingForRoom_.load(std::memory_order_seq_cst) > 0) mailbox_->tellOfRoom();
  return finished_ < count_ && !mailbox_->isSuspended();
}

void Mailbox::tellOfRoom() noexcept {
  roomMade_.fetch_add(1, std::memory_order_seq_cst);
  futexWake(&roomMade_, INT32_MAX);
}

/// Reads letters that were claimed before the position, or waits for one to be posted. The blocks that are enqueued by
/// now were enqueued after these letters were claimed, so no block has to run first.
void Mailbox::readBefore(std::uint64_t position) noexcept {
  const FrameScope frame(this);
  LetterRun run;
  collect(run, position);
  if (run.count_ > 0) {
    handOver(run);
  } else {
    waitForSender();
  }
}

/// Reads some letters, or runs the next block. Returns `goal` if that block was `last`, `none` if ownership has ended.
Mailbox::Step Mailbox::step(const HelpGoal* goal, const Item* last) {
  for (;;) {
    if (isSuspended() && tryPark()) return Step::none;
    if (readRun()) return Step::letters;
    Item* item = peek();
    if (item == nullptr) {
      if (tryIdle() || tryPark()) return Step::none;
      continue;
    }
    // Checked after peek(): what was enqueued after the suspension stays.
    if (isSuspended() && tryPark()) return Step::none;
    const bool isWaiter = (item->queueFlags & itemWaiter) != 0;
    if (lettersBefore(*item) > 0 && (!isWaiter || target() != nullptr)) {
      waitForSender();
      continue;
    }
    takeReady();
    if (isWaiter) {
      static_cast<SyncWaiter*>(item)->grant();
      return Step::none;
    }
    if (item == last) {
      runTowards(item, this, *goal);
      return Step::goal;
    }
    runItem(item, this);
    return Step::block;
  }
}

void Mailbox::drain() {
  const FrameScope frame(this);
  for (std::size_t blocks = 0;;) {
    const Step done = step(nullptr, nullptr);
    if (done == Step::none) return;
    if (done == Step::block && ++blocks < blocksPerTurn) continue;
    blocks = 0;
    if (WorkerPool::shared().hasReadyItems()) return schedule(Delivery::prompt);
  }
}

void Mailbox::drainTowards(const HelpGoal& goal) {
  const FrameScope frame(this);
  const Item* last = lastTowards(goal);
  for (;;) {
    const Step done = step(&goal, last);
    if (done == Step::none) return;
    if (done == Step::goal || last == nullptr || goal.queue == this) return schedule(Delivery::prompt);
  }
}

// --- The worker that lingers ---

bool Mailbox::tryFallAsleep() noexcept {
  const std::uint64_t before = sent_.fetch_or(asleep, std::memory_order_seq_cst);
  if (before >> 1 == done_.load(std::memory_order_acquire)) return true;
  // A letter came meanwhile. If its sender has seen the flag, it has started another worker or is about to.
  return (sent_.fetch_and(~asleep, std::memory_order_seq_cst) & asleep) == 0;
}

void Mailbox::linger() {
  std::uint64_t retry = firstRetry, quietSince = monotonicNanoseconds();
  for (;;) {
    if (isShort_.load(std::memory_order_acquire)) [[unlikely]] {
      sent_.fetch_and(~asleep, std::memory_order_seq_cst);
      isShort_.store(false, std::memory_order_release);
    }
    const std::uint32_t life = life_;
    const std::uint64_t before = done_.load(std::memory_order_relaxed);
    const bool isMail = isNextPosted();
    if (isMail && tryEnter()) {
      if (target() != nullptr) {
        schedule(Delivery::prompt);
      } else {
        drain();
      }
    }
    if (life_ != life) return;  // this is a child that a reader has forked; its mailbox is asleep
    const std::uint64_t now = monotonicNanoseconds(), done = done_.load(std::memory_order_acquire);
    if (done != before || !isMail) {
      if (done != before || sent() != done) quietSince = now;
      retry = firstRetry;
      if (now - quietSince >= quiet && tryFallAsleep()) return;
    } else {
      retry = std::min(2 * retry, lastRetry);
    }
    const BlockingScope blocking;
    const std::uint64_t pause = isMail && done == before ? retry : usualLook;
    if (hurried_.load(std::memory_order_seq_cst) == 0) static_cast<void>(futexWait(hurried_, 0, now + pause));
    hurried_.store(0, std::memory_order_seq_cst);
  }
}

void Mailbox::endSuspension() noexcept {
  SerialQueue::endSuspension();
  hurryLingerer();
}

void Mailbox::resetAfterFork() noexcept {
  SerialQueue::resetAfterFork();
  ++life_;
  if (framesOnThisThread(this) > 0) ring_ = new Letter[ringSize]();  // a reader keeps using its letters in the old ring
  // Positions continue, so letters that the parent posted in the ring do not count as the child's.
  const std::uint64_t position = sent();
  sent_.store(position << 1 | asleep, std::memory_order_relaxed);
  knownRead_.store(position, std::memory_order_relaxed);
  isCrowded_.store(false, std::memory_order_relaxed);
  done_.store(position, std::memory_order_relaxed);
  waitingForRoom_.store(0, std::memory_order_relaxed);
  hurried_.store(0, std::memory_order_relaxed);
  isShort_.store(false, std::memory_order_relaxed);
}

}  // namespace norvik::detail
