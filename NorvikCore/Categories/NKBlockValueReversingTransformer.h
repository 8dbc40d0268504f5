// NorvikCore/Categories/NKBlockValueReversingTransformer.h - two closures as a value transformer, one for each
// direction.
//
//   auto pounds = NKBlockValueReversingTransformer::valueTransformerWithBlock(
//       [](const Value& pennies) -> Value { return pennies.as<Decimal>() / 100; },
//       [](const Value& pounds) -> Value { return pounds.as<Decimal>() * 100; });
//   pounds->reverseTransformedValue(12.5);        // 1250
//
// Either closure may be absent. Using the direction of an absent closure raises NSInvalidArgumentException.
#pragma once

#include "NorvikCore/Categories/NKBlockValueTransformer.h"

namespace norvik {

class NK_EXPORT NKBlockValueReversingTransformer : public NKBlockValueTransformer {
  NK_OBJECT(NKBlockValueReversingTransformer, NKBlockValueTransformer)
  NK_PROPERTY(NKTransformBlock, reverseTransform, setReverseTransform)
  ~NKBlockValueReversingTransformer() override;

  [[nodiscard]] static Ref<NKBlockValueReversingTransformer> valueTransformerWithBlock(
      const NKTransformBlock& block, const NKTransformBlock& reverseBlock);

  [[nodiscard]] static bool allowsReverseTransformation() { return true; }
  NK_CLASS_METHOD(allowsReverseTransformation)
  [[nodiscard]] Value reverseTransformedValue(const Value& value) override;
};

}  // namespace norvik
