// NorvikCore/Categories/NSMutableDictionary+Norvik.h - several objects under one key.
//
//   setArrayValue(*lines, "Basic pay", "April");
//   setArrayValue(*lines, "Bonus", "April");           // {April: [Basic pay, Bonus]}
#pragma once

#include "NorvikCore/platform/collections/NSMutableDictionary.h"

namespace norvik {

/// Appends the object to the mutable array under the key. If there is no array, a new one is stored first. Reads and
/// writes by key-value coding: observers of the key are notified of a new array, and a key that begins with '@' is an
/// operator (KeyValueCoding.h). An entry that is not an NSMutableArray, or an absent object, raises
/// NSInvalidArgumentException and changes nothing.
NK_EXPORT void setArrayValue(NSMutableDictionary& dictionary, const Value& object, const NSString& key);

}  // namespace norvik
