// NorvikCore/logging/internal/ConsoleOutput.h - writes lines to standard error, which may be slow, full or closed.
//
//   ConsoleOutput output;
//   const std::string_view line[] = {"40 payslips written", "\n"};
//   output.write(line);
//
// A line is written by one writev(). A call waits at most a second for standard error to accept the line. After that
// the line is lost, and so are the following lines, without a wait, until standard error accepts output again. If part
// of a line was accepted, its rest is written before the next line, so lines are whole and in order. The rest of a line
// that was begun before a fork is written by the parent. If writing fails, the line is lost and the next one is
// attempted; nothing is reported, because reports would be written here. std::bad_alloc means that the line is lost; a
// line that was begun is ended with a line feed.
//
// The calling thread writes the line itself if it cannot block (kernel::mayBlock). A terminal, or a pipe that is not
// empty, may block a thread for any time; such a line is handed to a thread of the pool. If no thread can be started
// within the second, the calling thread writes the line after all.
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

  /// Writes one line of at most 15 pieces.
  void write(std::span<const std::string_view> pieces);

 private:
  struct Handed;
  using Pieces = std::span<const std::string_view>;

  /// In a forked child: drops the line that is being written, because the parent writes it.
  void noticeFork();
  void writeHere(Pieces pieces);
  void handOver(Pieces pieces);
  /// False if standard error has accepted nothing for a second, or if no thread has begun the line in that time.
  [[nodiscard]] bool awaitHanded();
  /// False while another thread is still writing a line.
  [[nodiscard]] bool isFree();
  /// Stores the rest of a line that was accepted in part. The first piece is the rest of an earlier line.
  void keepRest(Pieces pieces, std::size_t written, int error);

  std::string rest_;
  bool isStalled_ = false;  // standard error, which does not block, has accepted nothing for a second
  dispatch_queue_t queue_;
  dispatch_semaphore_t finished_;
  std::shared_ptr<Handed> handed_;  // the line that another thread may still be writing
  std::uint32_t generation_;        // the process to which rest_ and handed_ belong (kernel::forkGeneration)
};

}  // namespace norvik::detail
