// NorvikCore/platform/appkit/internal/Binding.h - one binding, as the observer of both of its sides.
#pragma once

#include "NorvikCore/platform/appkit/NSValueTransformer.h"
#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/keyvalue/KeyValueObserving.h"
#include "NorvikCore/platform/object/Weak.h"

#include <atomic>

namespace norvik::detail {

/// Owned by its receiver. KeyValueBinding.h describes its behaviour.
class Binding final : public NSObject {
 public:
  /// Raises if the options do not name a transformer that exists.
  Binding(NSObject& receiver, NSString name, NSObject& observed, NSString keyPath, Ref<NSDictionary> options);
  ~Binding() override;

  /// Observes the key path; changes have no effect yet. Raises if the path or the receiver's key is unknown.
  void observe();
  /// Sets the receiver, then lets each side follow the other.
  void start();
  /// Stops observing permanently. A change that is being carried sets nothing more.
  void end();

  [[nodiscard]] const NSString& name() const noexcept { return name_; }
  /// Empty once the observed object was destroyed.
  [[nodiscard]] Ref<NSDictionary> info() const;

  void observeValueForKeyPath(const NSString& keyPath, NSObject& object, const KeyValueChange& change,
                              void* context) override;

 private:
  struct Carry;

  void carry(bool toReceiver);
  bool setReceiver(NSObject& receiver, const NSObject& observed, const Carry& carry);
  void setObserved(const NSObject& receiver, NSObject& observed) const;
  [[nodiscard]] bool canWrite(const NSObject& observed) const;
  void showWhetherWritable(NSObject& receiver, const NSObject& observed) const;
  [[nodiscard]] bool isOn(const NSString& option, bool otherwise) const;

  const Weak<NSObject> receiver_, observed_;
  const NSString name_, keyPath_;
  const Ref<NSDictionary> options_;
  const Ref<NSValueTransformer> transformer_;  ///< may be empty
  std::atomic<bool> isStarted_{false}, isEnded_{false};
  std::atomic<bool> observesReceiver_{false}, observesObserved_{false};
};

}  // namespace norvik::detail
