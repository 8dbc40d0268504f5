// NorvikCore/Categories/NSMutableArray+Norvik.h - arrays without null markers.
//
//   nk_removeNulls(*fields);                           // a mutable array is changed
//   const NSArray& kept = *fields;
//   Ref<NSMutableArray> copy = nk_removeNulls(kept);   // any other array is copied: NSArray+Norvik.h
#pragma once

#include "NorvikCore/platform/collections/NSMutableArray.h"

namespace norvik {

/// Removes every null marker.
NK_EXPORT void nk_removeNulls(NSMutableArray& array);

}  // namespace norvik
