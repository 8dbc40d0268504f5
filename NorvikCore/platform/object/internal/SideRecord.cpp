#include "NorvikCore/platform/object/internal/SideRecord.h"

#include "NorvikCore/platform/object/internal/ObjectAccess.h"

#include <array>
#include <bit>
#include <memory>
#include <new>
#include <utility>

namespace norvik::detail {

/// Numbers count from 1. Piece p holds 2^p times as many records as the first one. Free records form a stack. Its top
/// includes a count of changes, so a thread does not mistake a record that was taken and returned for an unchanged top.
class SideRecordPool {
 public:
  [[nodiscard]] static SideRecord& at(std::uint32_t number) noexcept {
    const Place place = placeOf(number);
    return pieces_[place.piece].load(std::memory_order_acquire)[place.offset];
  }

  static SideRecord& take() {
    std::uint64_t top = top_.load(std::memory_order_acquire);
    while (const auto number = static_cast<std::uint32_t>(top)) {
      SideRecord& record = at(number);
      const std::uint64_t next = changed(top) | record.nextFree_.load(std::memory_order_relaxed);
      if (top_.compare_exchange_weak(top, next, std::memory_order_acquire)) return record;
    }
    return makeNew();
  }

  static void giveBack(SideRecord& record) noexcept {
    std::uint64_t top = top_.load(std::memory_order_relaxed);
    do {
      record.nextFree_.store(static_cast<std::uint32_t>(top), std::memory_order_relaxed);
    } while (!top_.compare_exchange_weak(top, changed(top) | record.number_, std::memory_order_release,
                                         std::memory_order_relaxed));
  }

 private:
  struct Place {
    std::size_t piece, offset;
  };
  static constexpr std::uint32_t firstPiece = 64;
  static constexpr std::size_t pieceCount = std::bit_width(ObjectAccess::greatestRecord / firstPiece) + 1;

  static Place placeOf(std::uint32_t number) noexcept {
    const std::uint32_t counted = number - 1 + firstPiece;
    const auto piece = static_cast<std::size_t>(std::bit_width(counted / firstPiece) - 1);
    return {piece, counted - (std::size_t{firstPiece} << piece)};
  }
  static std::uint64_t changed(std::uint64_t top) noexcept { return ((top >> 32) + 1) << 32; }

  static SideRecord& makeNew() {
    const std::uint32_t number = made_.fetch_add(1, std::memory_order_relaxed) + 1;
    if (number > ObjectAccess::greatestRecord) {
      made_.fetch_sub(1, std::memory_order_relaxed);
      throw std::bad_alloc();
    }
    const Place place = placeOf(number);
    auto& piece = pieces_[place.piece];
    if (!piece.load(std::memory_order_acquire)) {
      auto fresh = std::make_unique<SideRecord[]>(std::size_t{firstPiece} << place.piece);
      SideRecord* none = nullptr;
      if (piece.compare_exchange_strong(none, fresh.get(), std::memory_order_acq_rel))
        static_cast<void>(fresh.release());
    }
    SideRecord& record = at(number);
    record.number_ = number;
    return record;
  }

  static constinit std::array<std::atomic<SideRecord*>, pieceCount> pieces_;
  static constinit std::atomic<std::uint64_t> top_;
  static constinit std::atomic<std::uint32_t> made_;
};

constinit std::array<std::atomic<SideRecord*>, SideRecordPool::pieceCount> SideRecordPool::pieces_{};
constinit std::atomic<std::uint64_t> SideRecordPool::top_{0};
constinit std::atomic<std::uint32_t> SideRecordPool::made_{0};

SideRecord* SideRecord::find(const NSObject& object) noexcept {
  const std::uint32_t number = ObjectAccess::record(object);
  return number != 0 ? &SideRecordPool::at(number) : nullptr;
}

SideRecord& SideRecord::findOrMake(const NSObject& object) {
  if (SideRecord* present = find(object)) return *present;
  SideRecord& made = SideRecordPool::take();
  made.object_.store(const_cast<NSObject*>(&object), std::memory_order_relaxed);
  made.count_.store(1, std::memory_order_relaxed);
  const std::uint32_t kept = ObjectAccess::setRecord(object, made.number_);
  if (kept == made.number_) return made;
  made.object_.store(nullptr, std::memory_order_relaxed);
  made.release();
  return SideRecordPool::at(kept);
}

SideRecord& SideRecord::makeGone() {
  SideRecord& made = SideRecordPool::take();
  made.count_.store(1, std::memory_order_relaxed);
  return made;
}

void SideRecord::giveBack() noexcept { SideRecordPool::giveBack(*this); }

NSObject* SideRecord::retainedObject() noexcept {
  const WordLock lock(mutex);
  NSObject* object = object_.load(std::memory_order_relaxed);
  return object && ObjectAccess::retainUnlessGoing(*object) ? object : nullptr;
}

bool SideRecord::isGone() noexcept {
  if (!object_.load(std::memory_order_acquire)) return true;
  const WordLock lock(mutex);
  const NSObject* object = object_.load(std::memory_order_relaxed);
  return !object || ObjectAccess::isGoing(*object);
}

SideRecord::Remains SideRecord::forgetObject() noexcept {
  AssociationList* associated = nullptr;
  {
    const WordLock lock(mutex);
    object_.store(nullptr, std::memory_order_release);
    associated = std::exchange(associations, nullptr);
  }
  return {observers.take(), associated};
}

}  // namespace norvik::detail
