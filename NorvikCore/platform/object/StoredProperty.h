// NorvikCore/platform/object/StoredProperty.h - the storage of a declared property: a member of its object that only
// the object's class can read and write. The statement macros declare it; users need not read it.
#pragma once

#include "NorvikCore/platform/kernel/BusyWord.h"
#include "NorvikCore/platform/kernel/Fork.h"

#include <utility>

namespace norvik::detail {

/// Access for the accessors, which are compiled even in a class with mistakes.
struct StoredAccess {
  template <class Storage>
  static decltype(auto) read(const Storage& storage) {
    return *storage;
  }
  template <class Storage, class T>
  static void write(Storage& storage, T&& value) {
    storage = std::forward<T>(value);
  }
  template <class Storage>
  static auto load(const Storage& storage) {
    return storage.load();
  }
  template <class Storage, class T>
  static void store(Storage& storage, T&& value) {
    storage.store(std::forward<T>(value));
  }
};

/// Readable and writable by its class as `*field_` and `field_ = value`; not accessible to other code.
template <class Owner, class T>
class Stored {
 public:
  Stored() = default;

 private:
  friend typename Owner::Class;
  friend StoredAccess;
  Stored& operator=(T value) {
    value_ = std::move(value);
    return *this;
  }
  T& operator*() { return value_; }
  const T& operator*() const { return value_; }
  T* operator->() { return &value_; }
  const T* operator->() const { return &value_; }

  T value_{};
};

/// Storage that several threads may read and write; a reader always gets one whole value that was written.
template <class Owner, class T>
class AtomicStored {
 public:
  AtomicStored() = default;

 private:
  friend typename Owner::Class;
  friend StoredAccess;
  [[nodiscard]] T load() const {
    Guard guard(busy_);
    return value_;
  }
  void store(T value) {
    Guard guard(busy_);
    std::swap(value_, value);
  }
  struct Guard {
    explicit Guard(BusyWord& word) noexcept : busy(word) {
      kernel::holdForks();
      if (busy.exchangeAcquire(1) != 0) waitForBusy(busy);
    }
    ~Guard() {
      if (busy.exchangeRelease(0) != 1) wakeForBusy(busy);
      kernel::releaseForks();
    }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;
    BusyWord& busy;
  };

  T value_{};
  mutable BusyWord busy_;
};

}  // namespace norvik::detail
