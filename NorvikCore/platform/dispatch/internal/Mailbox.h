// NorvikCore/platform/dispatch/internal/Mailbox.h - a serial queue that many threads also send small letters to, each
// for the price of one compare-and-swap and a copy.
//
//   auto* mailbox = newForkAware<Mailbox>("payroll.log", [](LetterRun& run) {
//     do {
//       consume(run.first().content);
//     } while (run.finish(1));
//   });
//   if (Letter* letter = mailbox->tryClaim()) {
//     ::new (letter->content) Line(...);                                   // nothing may raise here
//     mailbox->post(*letter);
//   }
//
// Letters lie in a ring, which is all their memory. `bound` of them may wait or be in the reader's hands; a claim
// beyond that fails until the reader is done with the oldest. The bound is counted by the two positions, of which the
// senders write one and the reader the other.
//
// The reader runs as blocks of the queue, and letters and blocks keep their order: what a thread sends or queues first
// is read or run first. For that every block notes how many letters had been claimed when it was queued.
//
// A worker looks for letters once a millisecond while any come, and owns nothing between two looks. So a sender wakes
// no thread, except the first sender after a silence, when the worker sleeps: a flag beside the senders' position says
// so. A thread in a synchronous call reads what was sent before the call; a sender that finds the ring full reads too
// unless another thread does. Both need no worker. While no worker can be started each sender attempts to start one.
//
// Threads: synchronised.
#pragma once

#include "NorvikCore/platform/dispatch/internal/SerialQueue.h"
#include "NorvikCore/platform/kernel/internal/Prefetch.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace norvik::detail {

/// Of a fixed size, in the ring or on its own. The sender's from its claim to its posting, then the reader's.
struct alignas(64) Letter {
  static constexpr std::size_t contentSize = 240;

  std::atomic<std::uint64_t> posted{0};  // its position plus one, once it is posted there
  std::uint64_t ticket = 0;              // what the claim found
  char content[contentSize];
};
static_assert(sizeof(Letter) == 256);

class Mailbox;

/// Letters in order, as their reader gets them: one at least.
class NK_EXPORT LetterRun {
 public:
  static constexpr std::size_t longest = 256;

  [[nodiscard]] std::size_t count() const noexcept { return count_ - finished_; }
  [[nodiscard]] Letter& operator[](std::size_t index) const noexcept { return *letters_[finished_ + index]; }
  [[nodiscard]] Letter& first() const noexcept { return (*this)[0]; }
  /// Gives back the memory of the first `count`, which then belongs to other senders. False where the reader stops: the
  /// run is at its end, the queue is suspended and the others wait in the mailbox, or a reader has forked and they are
  /// the parent's.
  [[nodiscard]] bool finish(std::size_t count) noexcept;

 private:
  friend class Mailbox;
  LetterRun() noexcept = default;

  Mailbox* mailbox_ = nullptr;  // null for a letter outside the ring
  std::uint32_t life_ = 0;
  std::size_t count_ = 0, finished_ = 0;
  Letter* letters_[longest];
};

/// A letter from the heap, outside the bound, for a sender that must not wait. It is read in its turn among the blocks.
struct LooseLetter final : Item {
  Letter letter;
  Mailbox* mailbox = nullptr;
};

class NK_EXPORT Mailbox final : public SerialQueue {
 public:
  /// Letters that wait, or are read.
  static constexpr std::uint64_t bound = 1000;

  /// Finishes one letter at least. What it raises ends the process.
  using Read = void (*)(LetterRun& run);

  Mailbox(const char* label, Read read);
  ~Mailbox() override;

  /// Null where `bound` letters wait.
  [[nodiscard]] Letter* tryClaim() noexcept {
    std::uint64_t sent = sent_.load(std::memory_order_relaxed);
    do {
      if ((sent >> 1) - knownRead_.load(std::memory_order_acquire) >= bound) [[unlikely]] {
        if (!learnWhatIsRead(sent >> 1)) return nullptr;
      }
    } while (!sent_.compare_exchange_weak(sent, sent + 2, std::memory_order_relaxed));
    Letter& letter = ring_[(sent >> 1) % ringSize];
    letter.ticket = sent;
    return &letter;
  }
  void post(Letter& letter) noexcept {
    const std::uint64_t ticket = letter.ticket;
    letter.posted.store((ticket >> 1) + 1, std::memory_order_release);
    prefetch((ticket >> 1) + 1);
    if ((ticket & asleep) != 0) [[unlikely]]
      wake();
  }
  /// Waits for room, or makes some by reading. Not for code that the reader waits for. False when the deadline, a point
  /// of the monotonic clock, came first.
  [[nodiscard]] bool waitForRoom(std::uint64_t deadline);

  /// Takes over the letter.
  void post(LooseLetter* letter);

  /// True where more than half of what may wait did wait when a sender last looked: the reader holds up its senders,
  /// who have time to do a part of its work.
  [[nodiscard]] bool isCrowded() const noexcept { return isCrowded_.load(std::memory_order_relaxed); }

  /// Asks for the memory of the next claim, which is about to change.
  void prefetch() const noexcept { kernel::prefetchForWrite(&sent_); }

  // For a process that is about to end, whose reader may be gone: from any thread, in signal handlers too, without a
  // lock. The positions count all letters that there ever were.
  [[nodiscard]] std::uint64_t sentPosition() const noexcept { return sent(); }
  [[nodiscard]] std::uint64_t readPosition() const noexcept { return done_.load(std::memory_order_acquire); }
  /// A letter that was posted and is not yet read; null for one that was only claimed.
  [[nodiscard]] Letter* unreadLetter(std::uint64_t position) const noexcept {
    Letter& letter = ring_[position % ringSize];
    return letter.posted.load(std::memory_order_acquire) == position + 1 ? &letter : nullptr;
  }
  /// The first letter that is not read, where its sender has not posted it: a sender that has crashed never will. The
  /// caller may then post it in its place.
  [[nodiscard]] Letter* abandonedLetter() const noexcept {
    const std::uint64_t position = readPosition();
    return position < sent() && !unreadLetter(position) ? &ring_[position % ringSize] : nullptr;
  }

  void push(Item* item, Delivery delivery, Order order) override;
  void enter(Order order) override;
  void resetAfterFork() noexcept override;

 private:
  friend class LetterRun;
  static constexpr std::uint64_t ringSize = 1024;
  static constexpr std::uint64_t asleep = 1;  // in sent_: no worker looks for letters

  struct LingerItem : Item {
    Mailbox* mailbox = nullptr;
  };

  enum class Step : std::uint8_t { letters, block, goal, none };
  [[nodiscard]] Step step(const HelpGoal* goal, const Item* last);
  void drain() override;
  void drainTowards(const HelpGoal& goal) override;
  void endSuspension() noexcept override;
  [[nodiscard]] bool grantsAtOnce() const noexcept override { return target() == nullptr; }

  [[nodiscard]] std::uint64_t sent() const noexcept { return sent_.load(std::memory_order_seq_cst) >> 1; }
  [[nodiscard]] bool learnWhatIsRead(std::uint64_t sent) noexcept;
  void prefetch(std::uint64_t position) const noexcept {
    const auto* memory = reinterpret_cast<const char*>(&ring_[position % ringSize]);
    for (std::size_t at = 0; at < sizeof(Letter); at += 64) kernel::prefetchForWrite(memory + at);
  }
  void wake() noexcept;
  void hurryLingerer() noexcept;
  void tellOfRoom() noexcept;
  void linger();
  [[nodiscard]] bool tryFallAsleep() noexcept;

  // The owner's.
  [[nodiscard]] bool isNextPosted() const noexcept;
  void collect(LetterRun& run, std::uint64_t end) noexcept;
  [[nodiscard]] bool readRun() noexcept;
  void handOver(LetterRun& run) noexcept;
  void readBefore(std::uint64_t position) noexcept;
  [[nodiscard]] bool enterAfter(std::uint64_t position) noexcept;
  /// How many letters come before the item that are not yet read; not above 0 where there are none.
  [[nodiscard]] std::int32_t lettersBefore(const Item& item) const noexcept {
    constexpr std::uint32_t mask = ~std::uint32_t{0} << itemFlagBits;
    const auto done = static_cast<std::uint32_t>(done_.load(std::memory_order_relaxed)) << itemFlagBits;
    const std::int32_t before = static_cast<std::int32_t>((item.queueFlags & mask) - done) >> itemFlagBits;
    return std::min(before, static_cast<std::int32_t>(sent() - done_.load(std::memory_order_relaxed)));
  }
  /// The flags of an item that comes after that position.
  [[nodiscard]] static std::uint32_t marked(std::uint32_t flags, std::uint64_t position) noexcept {
    return flags | static_cast<std::uint32_t>(position) << itemFlagBits;
  }

  const Read read_;

  // The senders'.
  alignas(64) std::atomic<std::uint64_t> sent_{asleep};  // letters claimed, times two, and `asleep`
  std::atomic<std::uint64_t> knownRead_{0};              // what done_ was when a sender last looked
  std::atomic<bool> isCrowded_{false};                   // then
  Letter* ring_;                                         // of ringSize

  // The reader's.
  alignas(64) std::atomic<std::uint64_t> done_{0};  // letters that were read
  std::uint32_t life_ = 0;                          // changes in a forked child

  // Those who wait for room, and the worker that lingers.
  alignas(64) std::atomic<std::uint32_t> waitingForRoom_{0};
  std::atomic<std::uint32_t> roomMade_{0};
  std::atomic<std::uint32_t> hurried_{0};
  std::atomic<bool> isShort_{false};  // no worker could be started: each sender attempts to
  LingerItem lingerItem_;
};

}  // namespace norvik::detail
