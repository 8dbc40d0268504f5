// NorvikCore/Categories/NKBlockValueTransformer.h - a closure as a value transformer, for one direction.
//
//   const NKTransformBlock shout = [](const Value& v) { return v.description() + "!"; };
//   NKBlockValueTransformer::valueTransformerWithBlock(shout)->transformedValue("pay");      // "pay!"
//
// The closure is called without a look whether it is there: an absent one raises NSInvalidArgumentException. Threads:
// those of its closure; the closure is replaced on one thread while no other uses it.
#pragma once

#include "NorvikCore/platform/appkit/NSValueTransformer.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/object/Block.h"

namespace norvik {

/// Makes one value of another; what is absent is given and taken as the absent value.
using NKTransformBlock = Block<Value(const Value&)>;

class NK_EXPORT NKBlockValueTransformer : public NSValueTransformer {
  NK_OBJECT(NKBlockValueTransformer, NSValueTransformer)
  NK_PROPERTY(NKTransformBlock, transform, setTransform)
  ~NKBlockValueTransformer() override;

  [[nodiscard]] static Ref<NKBlockValueTransformer> valueTransformerWithBlock(const NKTransformBlock& block);

  /// The root class: a closure may give anything.
  [[nodiscard]] static const Class& transformedValueClass();
  [[nodiscard]] Value transformedValue(const Value& value) override;
};

}  // namespace norvik
