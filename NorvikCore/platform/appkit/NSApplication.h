// NorvikCore/platform/appkit/NSApplication.h - the application, which sends actions to their targets.
//
//   NSApplication::sharedApplication().sendAction_to_from("closePayRun:", window, sender);
//   // has called window->closePayRun(sender)
//
// There is no screen, no event loop and no chain of views: an action without a target is sent to the application itself
// or, if that does not respond to it, to its delegate. Confined to the main thread.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/object/NSObject.h"
#include "NorvikCore/platform/object/SEL.h"

namespace norvik {

class NK_EXPORT NSApplication : public NSObject {
  NK_OBJECT(NSApplication, NSObject)
  NK_WEAK_PROPERTY(NSObject, delegate, setDelegate)
  ~NSApplication() override;

  /// Created on first use, never destroyed.
  [[nodiscard]] static NSApplication& sharedApplication();

  /// Performs the action on the target; the sender is passed if the action takes an argument. False if no object
  /// responds to it. The action's result is discarded, and its exceptions pass. An action with more than one argument
  /// raises NSInvalidArgumentException.
  bool sendAction_to_from(SEL action, const Ref<NSObject>& target, const Value& sender);
};

}  // namespace norvik
