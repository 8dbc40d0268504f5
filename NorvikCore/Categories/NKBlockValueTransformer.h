// NorvikCore/Categories/NKBlockValueTransformer.h - a closure as a value transformer, for one direction.
//
//   const auto shout = [](const NSString& text) { return text + "!"; };
//   NKBlockValueTransformer::valueTransformerWithBlock(shout)->transformedValue("pay");      // "pay!"
//
// TransformClosure.h describes the closures. Using a transformer whose closure is absent raises
// NSInvalidArgumentException. Threads: those that the closure allows; replace the closure only while no other thread
// uses the transformer.
#pragma once

#include "NorvikCore/Categories/TransformClosure.h"
#include "NorvikCore/platform/appkit/NSValueTransformer.h"
#include "NorvikCore/platform/export.h"

namespace norvik {

class NK_EXPORT NKBlockValueTransformer : public NSValueTransformer {
  NK_OBJECT(NKBlockValueTransformer, NSValueTransformer)
  NK_PROPERTY(NKTransformBlock, transform, setTransform)
  ~NKBlockValueTransformer() override;

  [[nodiscard]] static Ref<NKBlockValueTransformer> valueTransformerWithBlock(const detail::TransformClosure& block);

  /// The root class, because a closure may return any value.
  [[nodiscard]] static const Class& transformedValueClass();
  [[nodiscard]] Value transformedValue(const Value& value) override;
};

}  // namespace norvik
