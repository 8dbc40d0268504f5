// NorvikCore/Categories/NKBlockValueReversingTransformer.h - two closures as a value transformer, one for each
// direction.
//
//   auto pounds = NKBlockValueReversingTransformer::valueTransformerWithBlock(
//       [](const Decimal& pennies) { return pennies / 100; },
//       [](const Decimal& pounds) { return pounds * 100; });
//   pounds->reverseTransformedValue(12.5);        // 1250
//
// TransformClosure.h describes the closures. Either may be absent. Using the direction of an absent closure raises
// NSInvalidArgumentException.
#pragma once

#include "NorvikCore/Categories/NKBlockValueTransformer.h"

namespace norvik {

class NK_EXPORT NKBlockValueReversingTransformer : public NKBlockValueTransformer {
  NK_OBJECT(NKBlockValueReversingTransformer, NKBlockValueTransformer)
  NK_PROPERTY(NKTransformBlock, reverseTransform, setReverseTransform)
  ~NKBlockValueReversingTransformer() override;

  [[nodiscard]] static Ref<NKBlockValueReversingTransformer> valueTransformerWithBlock(
      const detail::TransformClosure& block, const detail::TransformClosure& reverseBlock);

  [[nodiscard]] static bool allowsReverseTransformation() { return true; }
  NK_CLASS_METHOD(allowsReverseTransformation)
  [[nodiscard]] Value reverseTransformedValue(const Value& value) override;
};

}  // namespace norvik
