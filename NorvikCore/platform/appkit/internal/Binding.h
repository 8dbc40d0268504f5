// NorvikCore/platform/appkit/internal/Binding.h - one binding, which observes both of its sides.
#pragma once

#include "NorvikCore/platform/appkit/NSValueTransformer.h"
#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/kernel/Mutex.h"
#include "NorvikCore/platform/object/Class.h"
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

 private:
  struct Carry;
  class Side;
  /// The property of a class that a key names, looked up once; null if the value must be read by the key.
  struct KnownProperty {
    KnownProperty(const NSObject& owner, const NSString& key);
    /// Null if the object has another class, as after it was bound by a constructor.
    [[nodiscard]] const Property* of(const NSObject& object) const {
      return &object.classObject() == &ofClass ? property : nullptr;
    }

    const Class& ofClass;
    const Property* const property;
  };
  struct Sides {
    Ref<Side> ofObserved, ofReceiver;
  };

  [[nodiscard]] Sides sides() const NK_EXCLUDES(mutex_);
  /// True if a change of a side needs no carry: the binding is not active, or it counted the change for the carry that
  /// is running on this thread.
  [[nodiscard]] bool hasNoted(bool observedChanged);
  void carry(bool toReceiver, NSObject& receiver, NSObject& observed);
  [[nodiscard]] Value receiverValue(const NSObject& receiver) const;
  [[nodiscard]] Value observedValue(const NSObject& observed) const;
  bool setReceiver(NSObject& receiver, const NSObject& observed, const Carry& carry);
  void setObserved(const NSObject& receiver, NSObject& observed) const;
  [[nodiscard]] bool canWrite(const NSObject& observed) const;
  void showWhetherWritable(NSObject& receiver, const NSObject& observed) const;
  [[nodiscard]] bool isOn(const NSString& option, bool otherwise) const;

  const Weak<NSObject> receiver_, observed_;
  const NSString name_, keyPath_;
  const KnownProperty ofReceiver_, ofObserved_;
  const bool isOfValue_;  ///< the name is "value"
  const Ref<NSDictionary> options_;
  const Ref<NSValueTransformer> transformer_;  ///< may be empty
  std::atomic<bool> isStarted_{false}, isEnded_{false};
  mutable Mutex mutex_;
  Sides sides_ NK_GUARDED_BY(mutex_);  ///< empty once the binding has ended
};

}  // namespace norvik::detail
