// NorvikCore/platform/foundation/internal/PropertyList.h - the values that preferences can hold: booleans, numbers,
// decimals, dates, texts, data, and arrays and dictionaries of them, with texts as keys.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/object/Value.h"

#include <string>
#include <string_view>

namespace norvik::detail {

/// An immutable copy of the value: collections and mutable data are copied. Raises NSInvalidArgumentException for any
/// other value, for collections that contain themselves, and for collections nested more than 512 deep; `what` begins
/// its reason.
[[nodiscard]] NK_EXPORT_FOR_TESTS Value propertyListCopy(const Value& value, const NSString& what);

/// The bytes of a result of propertyListCopy(), as an archive. Equal bytes give equal values of the same kinds.
[[nodiscard]] NK_EXPORT_FOR_TESTS std::string encodePropertyList(const Value& copy);

/// Raises NSInvalidUnarchiveOperationException for bytes that encodePropertyList() did not produce. No object of
/// another class is ever created from them.
[[nodiscard]] NK_EXPORT_FOR_TESTS Value decodePropertyList(std::string_view bytes);

}  // namespace norvik::detail
