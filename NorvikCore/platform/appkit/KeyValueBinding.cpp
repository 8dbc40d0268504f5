#include "NorvikCore/platform/appkit/KeyValueBinding.h"

#include "NorvikCore/platform/appkit/internal/Binding.h"
#include "NorvikCore/platform/kernel/Mutex.h"
#include "NorvikCore/platform/object/AssociatedObjects.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace norvik {
namespace {

using BindingRef = Ref<detail::Binding>;

/// The bindings of one receiver. They end when the receiver is destroyed.
class Bindings final : public NSObject {
 public:
  ~Bindings() override {
    for (const BindingRef& each : all_) each->end();
  }

  [[nodiscard]] BindingRef find(const NSString& name) const NK_EXCLUDES(mutex_) {
    MutexLock lock(mutex_);
    const auto found = std::ranges::find(all_, name, &detail::Binding::name);
    return found == all_.end() ? nullptr : *found;
  }

  /// Stores the binding and returns the one of the same name that it replaces.
  BindingRef put(const BindingRef& binding) NK_EXCLUDES(mutex_) {
    MutexLock lock(mutex_);
    const auto found = std::ranges::find(all_, binding->name(), &detail::Binding::name);
    if (found != all_.end()) return std::exchange(*found, binding);
    all_.push_back(binding);
    return nullptr;
  }

  /// Removes the binding. True if it was present.
  bool take(const BindingRef& binding) NK_EXCLUDES(mutex_) {
    MutexLock lock(mutex_);
    return std::erase(all_, binding) > 0;
  }

 private:
  mutable Mutex mutex_;
  std::vector<BindingRef> all_ NK_GUARDED_BY(mutex_);
};

constexpr char bindingsKey = 0;

Ref<Bindings> bindingsOf(const NSObject& receiver) {
  return refCast<Bindings>(associatedValue(receiver, &bindingsKey).as<Ref<NSObject>>());
}

Ref<Bindings> bindingsMadeOf(NSObject& receiver) {
  if (auto present = bindingsOf(receiver)) return present;
  static constinit Mutex making;
  MutexLock lock(making);
  if (auto present = bindingsOf(receiver)) return present;
  auto made = make<Bindings>();
  setAssociatedValue(receiver, &bindingsKey, made);
  return made;
}

}  // namespace

void bind_toObject_withKeyPath_options(NSObject& receiver, const NSString& binding, NSObject& object,
                                       const NSString& keyPath, const Ref<NSDictionary>& options) {
  const auto made =
      make<detail::Binding>(receiver, binding, object, keyPath, options ? options->copy() : NSDictionary::dictionary());
  made->observe();
  Ref<Bindings> bindings;
  try {
    bindings = bindingsMadeOf(receiver);
    if (const BindingRef former = bindings->put(made)) former->end();
    made->start();
  } catch (...) {
    if (bindings) bindings->take(made);
    made->end();
    throw;
  }
}

void unbind(NSObject& receiver, const NSString& binding) {
  const auto bindings = bindingsOf(receiver);
  if (!bindings) return;
  const BindingRef bound = bindings->find(binding);
  if (!bound) return;
  bindings->take(bound);
  bound->end();
}

Ref<NSDictionary> infoForBinding(const NSObject& receiver, const NSString& binding) {
  const auto bindings = bindingsOf(receiver);
  const BindingRef bound = bindings ? bindings->find(binding) : nullptr;
  return bound ? bound->info() : nullptr;
}

constinit const NSString NSObservedObjectKey = "NSObservedObject";
constinit const NSString NSObservedKeyPathKey = "NSObservedKeyPath";
constinit const NSString NSOptionsKey = "NSOptions";

constinit const NSString NSValueBinding = "value";
constinit const NSString NSEditableBinding = "editable";
constinit const NSString NSEnabledBinding = "enabled";

constinit const NSString NSValueTransformerNameBindingOption = "NSValueTransformerName";
constinit const NSString NSValueTransformerBindingOption = "NSValueTransformer";
constinit const NSString NSValidatesImmediatelyBindingOption = "NSValidatesImmediately";
constinit const NSString NSConditionallySetsEditableBindingOption = "NSConditionallySetsEditable";
constinit const NSString NSConditionallySetsEnabledBindingOption = "NSConditionallySetsEnabled";
constinit const NSString NSContinuouslyUpdatesValueBindingOption = "NSContinuouslyUpdatesValue";

}  // namespace norvik
