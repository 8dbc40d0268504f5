// What preferences can hold: booleans, numbers, decimals, dates, texts, data, and arrays and dictionaries of them, the
// keys of dictionaries being texts.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/object/Value.h"

#include <string>
#include <string_view>

namespace norvik::detail {

/// The value with nothing in it that can change: mutable collections and data are copied, and so are collections that
/// may hold some. `what` begins the sentence of the NSInvalidArgumentException that is raised for anything else, for
/// collections that hold themselves, and for ones more than 512 deep in one another.
[[nodiscard]] NK_EXPORT Value propertyListCopy(const Value& value, const NSString& what);

/// The bytes of what propertyListCopy() gave: an archive. Equal bytes give equal values of the same kinds.
[[nodiscard]] NK_EXPORT std::string encodePropertyList(const Value& copy);

/// Raises NSInvalidUnarchiveOperationException for bytes that encodePropertyList() did not make; no object of another
/// class is ever made of them.
[[nodiscard]] NK_EXPORT Value decodePropertyList(std::string_view bytes);

}  // namespace norvik::detail
