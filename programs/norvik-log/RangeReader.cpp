#include "RangeReader.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace norvik_log {
namespace {

constexpr std::size_t window = 512 << 10;  // about the size of a processor core's own cache
constexpr std::size_t behindRange = 4 << 10;

}  // namespace

std::size_t endOfPiece(std::string_view line) noexcept {
  const char* const end = line.data() + line.size();
  std::size_t piece = line.size() - longestHeadTime;
  while (headTime(line.data() + piece, end)) --piece;
  return piece;
}

RangeReader::RangeReader(ReadAt read, BlockScan& scan, IsSecondPass isSecondPass, std::string_view source,
                         const WallClock& clock, Watch watch)
    : read_(std::move(read)),
      scan_(scan),
      isSecondPass_(std::move(isSecondPass)),
      source_(source),
      clock_(clock),
      watch_(std::move(watch)) {}

void RangeReader::begin(std::int64_t from, std::int64_t to) {
  base_ = from > 0 ? from - 1 : 0;  // the byte before shows whether a line begins at `from`
  to_ = to;
  begin_ = size_ = 0;
  isAtEnd_ = isDone_ = false;
  isBegun_ = from == 0;
  continued_.reset();
}

void RangeReader::fill(std::size_t wanted) {
  if (capacity_ - begin_ < wanted) {
    if (capacity_ < wanted) {
      auto larger = std::make_unique_for_overwrite<char[]>(wanted + behindRange);
      if (size_ > 0) std::memcpy(larger.get(), buffer_.get() + begin_, size_);
      buffer_ = std::move(larger);
      capacity_ = wanted + behindRange;
    } else {
      std::memmove(buffer_.get(), buffer_.get() + begin_, size_);
    }
    begin_ = 0;
  }
  while (size_ < wanted && !isAtEnd_) {
    const std::size_t count =
        read_(buffer_.get() + begin_ + size_, wanted - size_, base_ + static_cast<std::int64_t>(size_));
    size_ += count;
    isAtEnd_ = count == 0;
  }
}

/// The number of bytes to have in the buffer before a block is scanned.
std::size_t RangeReader::usualSize() const noexcept {
  const std::size_t range = to_ == toTheEnd ? window : static_cast<std::size_t>(std::max<std::int64_t>(to_ - base_, 0));
  return std::max(range + behindRange, size_);
}

void RangeReader::drop(std::size_t count) {
  begin_ += count;
  size_ -= count;
  base_ += static_cast<std::int64_t>(count);
}

bool RangeReader::skipToFirstRecord() {
  for (;;) {
    fill(usualSize());
    const char* const bytes = buffer_.get() + begin_;
    const void* const feed = std::memchr(bytes, '\n', size_);
    if (feed == nullptr) {
      drop(size_);
      if (isAtEnd_ || base_ >= to_) return false;
      continue;
    }
    drop(static_cast<std::size_t>(static_cast<const char*>(feed) - bytes) + 1);
    if (base_ >= to_) return false;
    fill(std::max(size_, longestHeadTime));
    if (headTime(buffer_.get() + begin_, buffer_.get() + begin_ + size_)) return true;
  }
}

std::size_t RangeReader::endOfLines() const noexcept {
  if (isAtEnd_) return size_;
  const char* const bytes = buffer_.get() + begin_;
  const void* const feed = ::memrchr(bytes, '\n', size_);
  return feed == nullptr ? 0 : static_cast<std::size_t>(static_cast<const char*>(feed) - bytes) + 1;
}

std::optional<std::size_t> RangeReader::recordBehindRange(std::size_t size) const noexcept {
  if (to_ == toTheEnd || base_ + static_cast<std::int64_t>(size) <= to_) return std::nullopt;
  const char *const bytes = buffer_.get() + begin_, *const end = bytes + size;
  if (base_ >= to_ && headTime(bytes, end)) return 0;  // after a piece
  const auto first = static_cast<std::size_t>(std::max<std::int64_t>(to_ - base_, 1));
  for (const char* at = bytes + first - 1; at != end;) {
    const void* const feed = std::memchr(at, '\n', static_cast<std::size_t>(end - at));
    if (feed == nullptr) return std::nullopt;
    at = static_cast<const char*>(feed) + 1;
    if (at != end && headTime(at, end)) return static_cast<std::size_t>(at - bytes);
  }
  return std::nullopt;
}

void RangeReader::scan(std::size_t size, Batch& found) {
  const std::string_view block(buffer_.get() + begin_, size);
  if (watch_) watch_(block, base_);
  scan_.scan(block, base_, continued_ ? &*continued_ : nullptr, isSecondPass_, source_, found);
}

void RangeReader::continueFrom(std::size_t size) {
  const std::string_view bytes(buffer_.get() + begin_, size);
  const auto time = headTime(bytes.data(), bytes.data() + size);
  if (continued_ && !time) return;
  continued_ = continuationOf(time ? timedRecord(bytes, *time, clock_, isSecondPass_, base_) : Record());
}

bool RangeReader::step(Batch& found) {
  if (isDone_) return false;
  if (!isBegun_) {
    if (!skipToFirstRecord()) {
      isDone_ = true;
      return false;
    }
    isBegun_ = true;
  }
  std::size_t wanted = usualSize();
  for (;;) {
    fill(wanted);
    const std::size_t lines = endOfLines();
    if (const auto end = recordBehindRange(lines)) {
      scan(*end, found);
      isDone_ = true;
      return true;
    }
    if (isAtEnd_) {
      scan(size_, found);
      isDone_ = true;
      return true;
    }
    const char* const bytes = buffer_.get() + begin_;
    const auto records = static_cast<std::size_t>(lastHead(bytes, bytes + lines) - bytes);
    if (records > 0) {
      scan(records, found);
      drop(records);
      continued_.reset();
      return true;
    }
    if (size_ >= longestRecord) {
      const std::size_t piece = lines > 0 ? lines : endOfPiece({bytes, size_});
      scan(piece, found);
      continueFrom(piece);
      drop(piece);
      return true;
    }
    wanted = size_ + window;
  }
}

}  // namespace norvik_log
