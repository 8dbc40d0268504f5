// NorvikCore/linq/internal/ReceivingClass.h - collections of a class that is known at run time.
#pragma once

#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/collections/NSDictionary.h"

namespace norvik::detail {

/// An empty collection of the receiver's class. If no object of that class can be created without arguments, it is of
/// the nearest superclass for which that is possible.
[[nodiscard]] Ref<NSArray> emptyOfClassOf(const NSArray& receiver);
[[nodiscard]] Ref<NSDictionary> emptyOfClassOf(const NSDictionary& receiver);

/// Puts entries into a newly created dictionary, whether it is mutable or not.
void fill(NSDictionary& dictionary, std::vector<NSDictionary::Entry> entries);

}  // namespace norvik::detail
