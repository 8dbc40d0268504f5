// NorvikCore/observation/NSObject+FBKVOController.h - every object has a controller to observe others with, made on
// first use.
//
//   KVOController(*window)->observe_keyPath_options_block(slip, "netPay", NSKeyValueObservingOptionNew, showNetPay);
//
// The object is the controller's observer and keeps it; with the object its observations end. An object that is
// observed through its own KVOController, or that keeps the observer, would never go, since the controller keeps
// what it observes: use KVOControllerNonRetaining for these. While an object is going it has none, and is
// given one that nobody else sees.
//
// Synchronised: threads that ask for the first time at once get the same controller.
#pragma once

#include "NorvikCore/observation/FBKVOController.h"

namespace norvik {

/// Keeps the objects it observes.
[[nodiscard]] NK_EXPORT Ref<FBKVOController> KVOController(NSObject& observer);
/// An empty Ref lets go of the present one, and with it of its observations.
NK_EXPORT void setKVOController(NSObject& observer, const Ref<FBKVOController>& controller);

/// Does not keep the objects it observes.
[[nodiscard]] NK_EXPORT Ref<FBKVOController> KVOControllerNonRetaining(NSObject& observer);
NK_EXPORT void setKVOControllerNonRetaining(NSObject& observer, const Ref<FBKVOController>& controller);

}  // namespace norvik
