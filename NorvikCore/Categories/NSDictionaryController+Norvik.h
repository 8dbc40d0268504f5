// NorvikCore/Categories/NSDictionaryController+Norvik.h - finding and selecting an entry by its key.
//
//   nk_selectObjectWithKey(*controller, "higher");
//   nk_arrangedObjectWithKey(*controller, "higher")->setValue(0.42_dec);
//
// Linear in the number of entries. Confined to the thread of the controller.
#pragma once

#include "NorvikCore/platform/appkit/NSDictionaryController.h"
#include "NorvikCore/platform/export.h"

namespace norvik {

/// The first entry, in arranged order, whose key equals the text; empty if there is none.
[[nodiscard]] NK_EXPORT Ref<NSDictionaryControllerKeyValuePair> nk_arrangedObjectWithKey(
    const NSDictionaryController& receiver, const NSString& key);

/// Selects only that entry. If there is none, the selection stays as it is and a line is printed on the system console.
NK_EXPORT void nk_selectObjectWithKey(NSDictionaryController& receiver, const NSString& key);

}  // namespace norvik
