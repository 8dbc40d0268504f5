// NorvikCore/platform/appkit/internal/Binding.h - one binding: the observer of both of its sides.
#pragma once

#include "NorvikCore/platform/appkit/NSValueTransformer.h"
#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/keyvalue/KeyValueObserving.h"
#include "NorvikCore/platform/object/Weak.h"

#include <atomic>

namespace norvik::detail {

/// Kept by its receiver. KeyValueBinding.h tells what it does.
class Binding final : public NSObject {
 public:
  /// Raises where the options name no transformer.
  Binding(NSObject& receiver, NSString name, NSObject& observed, NSString keyPath, Ref<NSDictionary> options);
  ~Binding() override;

  /// Observes the key path; changes have no effect yet. Raises where the path or the receiver's key is unknown.
  void observe();
  /// Sets the receiver, then follows both sides.
  void start();
  /// Stops observing, for good. A change that is being carried sets nothing more.
  void end();

  [[nodiscard]] const NSString& name() const noexcept { return name_; }
  /// Empty once the observed object is gone.
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
