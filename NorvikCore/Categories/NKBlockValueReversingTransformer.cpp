#include "NorvikCore/Categories/NKBlockValueReversingTransformer.h"

namespace norvik {

NKBlockValueReversingTransformer::~NKBlockValueReversingTransformer() = default;

Ref<NKBlockValueReversingTransformer> NKBlockValueReversingTransformer::valueTransformerWithBlock(
    const NKTransformBlock& block, const NKTransformBlock& reverseBlock) {
  auto transformer = make<NKBlockValueReversingTransformer>();
  transformer->setTransform(block);
  transformer->setReverseTransform(reverseBlock);
  return transformer;
}

Value NKBlockValueReversingTransformer::reverseTransformedValue(const Value& value) {
  return reverseTransform()(value);
}

}  // namespace norvik
