// NorvikCore/constants/NKBind.h - the key of the short options of bindings (Categories/NSObject+Norvik_Binding.h).
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/values/NSString.h"

namespace norvik {

/// "NKBind". A constant that is never destroyed: any thread, any time.
NK_EXPORT extern const NSString NKBind;

}  // namespace norvik
