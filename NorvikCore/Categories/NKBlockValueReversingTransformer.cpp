#include "NorvikCore/Categories/NKBlockValueReversingTransformer.h"

namespace norvik {

NKBlockValueReversingTransformer::~NKBlockValueReversingTransformer() = default;

Ref<NKBlockValueReversingTransformer> NKBlockValueReversingTransformer::valueTransformerWithBlock(
    const detail::TransformClosure& block, const detail::TransformClosure& reverseBlock) {
  auto transformer = make<NKBlockValueReversingTransformer>();
  transformer->setTransform(block.block());
  transformer->setReverseTransform(reverseBlock.block());
  return transformer;
}

Value NKBlockValueReversingTransformer::reverseTransformedValue(const Value& value) {
  return reverseTransform()(value);
}

}  // namespace norvik
