// NorvikCore/Categories/NSMutableDictionary+Norvik.h - several objects under one key.
//
//   setArrayValue(*lines, "Basic pay", "April");
//   setArrayValue(*lines, "Bonus", "April");           // {April: [Basic pay, Bonus]}
#pragma once

#include "NorvikCore/platform/collections/NSMutableDictionary.h"

namespace norvik {

/// Appends the object to the mutable array under the key; where there is none, one is put there first. Reads and writes
/// by key-value coding: observers of the key are notified of a new array, and a key that begins with '@' is an
/// operator, as KeyValueCoding.h says. An entry that is no NSMutableArray, or an absent object, raises
/// NSInvalidArgumentException and changes nothing.
NK_EXPORT void setArrayValue(NSMutableDictionary& dictionary, const Value& object, const NSString& key);

}  // namespace norvik
