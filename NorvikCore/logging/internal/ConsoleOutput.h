// NorvikCore/logging/internal/ConsoleOutput.h - lines on standard error, which may be slow, full or closed.
//
//   ConsoleOutput output;
//   const std::string_view line[] = {"40 payslips written", "\n"};
//   output.write(line);
//
// A line is written by one writev(). A call waits for standard error a second at most: what it does not take by then is
// lost, and so are the lines that follow, without a wait, until it takes something again. A line of which a part was
// taken is finished before another is begun, so lines are whole and in order; the rest of a line that was begun before
// a fork is the parent's. If writing fails the line is lost, and the next one is attempted; nothing is reported, since
// this is where reports appear. std::bad_alloc means that the line is lost; one that was begun is ended where it is.
//
// The calling thread writes where it cannot be held up (kernel::mayBlock). A terminal, or a pipe that is not empty, may
// hold up a thread for any time: these lines are handed to a thread of the pool. If none can be started within the
// second, the calling thread writes them after all.
//
// Threads: confined.
#pragma once

#include "NorvikCore/platform/dispatch/Queue.h"
#include "NorvikCore/platform/dispatch/Semaphore.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace norvik::detail {

class ConsoleOutput {
 public:
  ConsoleOutput();
  ~ConsoleOutput();

  /// At most 15 pieces.
  void write(std::span<const std::string_view> pieces);

 private:
  struct Handed;
  using Pieces = std::span<const std::string_view>;

  /// In a forked child: what is being written is the parent's.
  void noticeFork();
  void writeHere(Pieces pieces);
  void handOver(Pieces pieces);
  /// False where standard error has taken nothing for a second, or no thread has begun in that time.
  [[nodiscard]] bool awaitHanded();
  /// False while a line that was handed over is still being written.
  [[nodiscard]] bool isFree();
  /// Keeps the rest of a line of which a part was taken. The first piece is what an earlier one left.
  void keepRest(Pieces pieces, std::size_t written, int error);

  std::string rest_;
  bool isStalled_ = false;  // standard error, which does not block, has taken nothing for a second
  dispatch_queue_t queue_;
  dispatch_semaphore_t finished_;
  std::shared_ptr<Handed> handed_;  // not known to be finished
  std::uint32_t generation_;        // the process that rest_ and handed_ belong to (kernel::forkGeneration)
};

}  // namespace norvik::detail
