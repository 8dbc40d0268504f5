// NorvikCore/observation/FBKVOController+Norvik.h - ending a controller's observations once, and a mark for the
// application's use.
//
//   setRequiresDisposal(*controller, true);
//   dispose(*controller);            // ends all observations
//   disposed(*controller);           // true: another dispose does nothing, whatever was observed meanwhile
//
// Both marks are associated values; they are also keys of the controller under these names. Synchronised.
#pragma once

#include "NorvikCore/observation/FBKVOController.h"

namespace norvik {

/// Calls unobserveAll and marks the controller as disposed. Does nothing if it is already disposed.
NK_EXPORT void dispose(FBKVOController& controller);
[[nodiscard]] NK_EXPORT bool disposed(const FBKVOController& controller);
NK_EXPORT void setDisposed(FBKVOController& controller, bool isDisposed);

/// False until set. The library only stores it.
[[nodiscard]] NK_EXPORT bool requiresDisposal(const FBKVOController& controller);
NK_EXPORT void setRequiresDisposal(FBKVOController& controller, bool isRequired);

}  // namespace norvik
