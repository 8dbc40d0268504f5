// NorvikCore/platform/archives/internal/CodedObject.h - conventions of archivers and unarchivers for objects that
// encode and decode themselves.
#pragma once

#include "NorvikCore/platform/object/NSCoder.h"

#include <cstddef>

namespace norvik::detail {

/// The class operation that creates an object of exactly this class from an archive; null if the class declares none.
/// If it has an argument, it takes the coder and returns a complete object; otherwise it returns an object on which
/// initWithCoder must be called.
[[nodiscard]] const Method* decodingOperation(const Class& theClass);

/// The key in a keyed archive of the n-th value, counted from 0, that an object encoded without a key.
[[nodiscard]] NSString keyOfUnnamedValue(std::size_t n);

}  // namespace norvik::detail
