#include "NorvikCore/Categories/NKBlockValueTransformer.h"

namespace norvik {

NKBlockValueTransformer::~NKBlockValueTransformer() = default;

Ref<NKBlockValueTransformer> NKBlockValueTransformer::valueTransformerWithBlock(const detail::TransformClosure& block) {
  auto transformer = make<NKBlockValueTransformer>();
  transformer->setTransform(block.block());
  return transformer;
}

const Class& NKBlockValueTransformer::transformedValueClass() { return NSObject::staticClass(); }

Value NKBlockValueTransformer::transformedValue(const Value& value) { return transform()(value); }

}  // namespace norvik
