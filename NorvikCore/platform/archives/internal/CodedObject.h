// NorvikCore/platform/archives/internal/CodedObject.h - what archivers and unarchivers agree on about objects that code
// themselves.
#pragma once

#include "NorvikCore/platform/object/NSCoder.h"

#include <cstddef>

namespace norvik::detail {

/// The class operation that makes an object of just this class from an archive; null where the class states none. With
/// an argument it takes the coder and gives a whole object, without one it gives an object to call initWithCoder on.
[[nodiscard]] const Method* decodingOperation(const Class& theClass);

/// What a keyed archive calls the n-th value that an object encoded without a key, counted from 0.
[[nodiscard]] NSString keyOfUnnamedValue(std::size_t n);

}  // namespace norvik::detail
