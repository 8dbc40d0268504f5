// NorvikCore/platform/appkit/NSApplication.h - the application as the one who hands actions to their targets.
//
//   NSApplication::sharedApplication().sendAction_to_from("closePayRun:", window, sender);
//   // has called window->closePayRun(sender)
//
// There is no screen, no event loop and no chain of views: an action without a target goes to the application itself,
// then to its delegate. Confined to the main thread.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/object/NSObject.h"
#include "NorvikCore/platform/object/SEL.h"

namespace norvik {

class NK_EXPORT NSApplication : public NSObject {
  NK_OBJECT(NSApplication, NSObject)
  NK_WEAK_PROPERTY(NSObject, delegate, setDelegate)
  ~NSApplication() override;

  /// Made on first use, never destroyed.
  [[nodiscard]] static NSApplication& sharedApplication();

  /// Performs the action on the target, with the sender where it takes an argument. False where nobody responds to it.
  /// What the action gives back is dropped, what it raises passes; one that takes more than one argument raises
  /// NSInvalidArgumentException.
  bool sendAction_to_from(SEL action, const Ref<NSObject>& target, const Value& sender);
};

}  // namespace norvik
