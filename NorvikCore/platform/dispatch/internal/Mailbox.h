// NorvikCore/platform/dispatch/internal/Mailbox.h - a serial queue to which many threads also send small messages of
// fixed size, called letters. Sending one costs a compare-and-swap and a copy.
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
// Letters are stored in a ring, which is all the memory they use. At most `bound` of them may be claimed and not yet
// finished by the reader; a claim beyond that fails until the reader has finished the oldest letter. Two positions
// count them: the senders write one, the reader writes the other.
//
// The reader runs as blocks of the queue, and letters and blocks keep their order: what a thread sends or enqueues
// first is read or run first. For that purpose each block records how many letters had been claimed when it was
// enqueued.
//
// While letters arrive, a worker checks for them once a millisecond; between two checks it does not own the queue. So a
// sender wakes no thread. The exception is the first sender after a pause, when the worker sleeps; a flag beside the
// senders' position shows that. A thread in a synchronous call reads what was sent before the call. A sender that finds
// the ring full also reads, unless another thread does. Neither needs a worker. While no worker can be started, each
// sender attempts to start one.
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

/// A letter of fixed size, in the ring or separate. It belongs to the sender from the claim until it is posted, then to
/// the reader.
struct alignas(64) Letter {
  static constexpr std::size_t contentSize = 240;

  std::atomic<std::uint64_t> posted{0};  // its position plus one, once it is posted
  std::uint64_t ticket = 0;              // the value of sent_ when it was claimed
  char content[contentSize];
};
static_assert(sizeof(Letter) == 256);

class Mailbox;

/// Letters in order, as the reader receives them: at least one.
class NK_EXPORT_FOR_TESTS LetterRun {
 public:
  static constexpr std::size_t longest = 256;

  [[nodiscard]] std::size_t count() const noexcept { return count_ - finished_; }
  [[nodiscard]] Letter& operator[](std::size_t index) const noexcept { return *letters_[finished_ + index]; }
  [[nodiscard]] Letter& first() const noexcept { return (*this)[0]; }
  /// Releases the memory of the first `count` letters, which other senders may then claim. The reader must stop when
  /// the result is false: the run is at its end; or the queue is suspended, and the other letters wait in the mailbox;
  /// or a reader has forked, and they belong to the parent.
  [[nodiscard]] bool finish(std::size_t count) noexcept;

 private:
  friend class Mailbox;
  LetterRun() noexcept = default;

  Mailbox* mailbox_ = nullptr;  // null for a letter outside the ring
  std::uint32_t life_ = 0;
  std::size_t count_ = 0, finished_ = 0;
  Letter* letters_[longest];
};

/// A letter on the heap, which does not count in the bound, for a sender that must not wait. It is read in its turn
/// among the blocks.
struct LooseLetter final : Item {
  Letter letter;
  Mailbox* mailbox = nullptr;
};

class NK_EXPORT_FOR_TESTS Mailbox final : public SerialQueue {
 public:
  /// How many letters may be claimed and not yet finished by the reader.
  static constexpr std::uint64_t bound = 1000;

  /// Finishes at least one letter. An exception that leaves it ends the process.
  using Read = void (*)(LetterRun& run);

  Mailbox(const char* label, Read read);
  ~Mailbox() override;

  /// Null if `bound` letters wait.
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
  /// Waits for room, or makes room by reading. Not for code that the reader waits for. False if the deadline, a point
  /// of the monotonic clock, passed first.
  [[nodiscard]] bool waitForRoom(std::uint64_t deadline);

  /// Takes ownership of the letter.
  void post(LooseLetter* letter);

  /// True if the ring was more than half full when a sender last checked: the reader is slower than its senders, so a
  /// sender may do part of the reader's work.
  [[nodiscard]] bool isCrowded() const noexcept { return isCrowded_.load(std::memory_order_relaxed); }

  /// Prefetches the memory that the next claim will write.
  void prefetch() const noexcept { kernel::prefetchForWrite(&sent_); }

  // For a process that is about to end and whose reader may be gone: callable from any thread and in signal handlers,
  // without a lock. The positions count all letters ever sent and read.
  [[nodiscard]] std::uint64_t sentPosition() const noexcept { return sent(); }
  [[nodiscard]] std::uint64_t readPosition() const noexcept { return done_.load(std::memory_order_acquire); }
  /// A letter that was posted and is not yet read; null if it was only claimed.
  [[nodiscard]] Letter* unreadLetter(std::uint64_t position) const noexcept {
    Letter& letter = ring_[position % ringSize];
    return letter.posted.load(std::memory_order_acquire) == position + 1 ? &letter : nullptr;
  }
  /// The first unread letter, if its sender has claimed but not posted it; null otherwise. A sender that has crashed
  /// never posts its letter, so the caller may post it instead.
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
  static constexpr std::uint64_t asleep = 1;  // bit in sent_: no worker checks for letters

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

  // For the owner.
  [[nodiscard]] bool isNextPosted() const noexcept;
  void collect(LetterRun& run, std::uint64_t end) noexcept;
  [[nodiscard]] bool readRun() noexcept;
  void handOver(LetterRun& run) noexcept;
  void readBefore(std::uint64_t position) noexcept;
  [[nodiscard]] bool enterAfter(std::uint64_t position) noexcept;
  /// How many unread letters come before the item; 0 or negative if there are none.
  [[nodiscard]] std::int32_t lettersBefore(const Item& item) const noexcept {
    constexpr std::uint32_t mask = ~std::uint32_t{0} << itemFlagBits;
    const auto done = static_cast<std::uint32_t>(done_.load(std::memory_order_relaxed)) << itemFlagBits;
    const std::int32_t before = static_cast<std::int32_t>((item.queueFlags & mask) - done) >> itemFlagBits;
    return std::min(before, static_cast<std::int32_t>(sent() - done_.load(std::memory_order_relaxed)));
  }
  /// The flags of an item that comes after the letters before that position.
  [[nodiscard]] static std::uint32_t marked(std::uint32_t flags, std::uint64_t position) noexcept {
    return flags | static_cast<std::uint32_t>(position) << itemFlagBits;
  }

  const Read read_;

  // Written by senders.
  alignas(64) std::atomic<std::uint64_t> sent_{asleep};  // twice the number of letters claimed, plus the bit `asleep`
  std::atomic<std::uint64_t> knownRead_{0};              // the value of done_ when a sender last checked
  std::atomic<bool> isCrowded_{false};                   // determined at the same time
  Letter* ring_;                                         // an array of ringSize letters

  // Written by the reader.
  alignas(64) std::atomic<std::uint64_t> done_{0};  // number of letters read
  std::uint32_t life_ = 0;                          // changes in a forked child

  // For threads that wait for room, and for the worker that lingers.
  alignas(64) std::atomic<std::uint32_t> waitingForRoom_{0};
  std::atomic<std::uint32_t> roomMade_{0};
  std::atomic<std::uint32_t> hurried_{0};
  std::atomic<bool> isShort_{false};  // no worker could be started: each sender attempts to start one
  LingerItem lingerItem_;
};

}  // namespace norvik::detail
