// NorvikCore/Categories/NKBlockValueTransformer.h - a closure as a value transformer, for one direction.
//
//   const NKTransformBlock shout = [](const Value& v) { return v.description() + "!"; };
//   NKBlockValueTransformer::valueTransformerWithBlock(shout)->transformedValue("pay");      // "pay!"
//
// Using a transformer whose closure is absent raises NSInvalidArgumentException. Threads: those that the closure
// allows; replace the closure only while no other thread uses the transformer.
#pragma once

#include "NorvikCore/platform/appkit/NSValueTransformer.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/object/Block.h"

namespace norvik {

/// Makes one value from another. An absent value is passed and returned as the absent Value.
using NKTransformBlock = Block<Value(const Value&)>;

class NK_EXPORT NKBlockValueTransformer : public NSValueTransformer {
  NK_OBJECT(NKBlockValueTransformer, NSValueTransformer)
  NK_PROPERTY(NKTransformBlock, transform, setTransform)
  ~NKBlockValueTransformer() override;

  [[nodiscard]] static Ref<NKBlockValueTransformer> valueTransformerWithBlock(const NKTransformBlock& block);

  /// The root class, because a closure may return any value.
  [[nodiscard]] static const Class& transformedValueClass();
  [[nodiscard]] Value transformedValue(const Value& value) override;
};

}  // namespace norvik
