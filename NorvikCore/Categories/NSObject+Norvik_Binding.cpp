#include "NorvikCore/Categories/NSObject+Norvik_Binding.h"

#include "NorvikCore/Categories/NKBlockValueReversingTransformer.h"
#include "NorvikCore/platform/appkit/NSTableCellView.h"
#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/collections/NSError.h"
#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/foundation/NSLog.h"

#include <vector>

namespace norvik {
namespace {

void applyToken(const NSString& token, NSMutableDictionary& options) {
  if (token == "readOnly") {
    options.setObject(false, NSConditionallySetsEditableBindingOption);
    options.setObject(false, NSConditionallySetsEnabledBindingOption);
  } else if (token == "validate") {
    options.setObject(true, NSValidatesImmediatelyBindingOption);
  } else if (token == "update") {
    options.setObject(true, NSContinuouslyUpdatesValueBindingOption);
  } else if (!token.empty()) {
    NSLog("NKBind: \"%@\" is not one of the tokens \"readOnly\", \"validate\" and \"update\"; it is ignored", token);
  }
}

Ref<NSDictionary> withTransformer(const Ref<NSDictionary>& options, const Ref<NSValueTransformer>& transformer) {
  auto changed = options ? options->mutableCopy() : NSMutableDictionary::dictionary();
  changed->setObject(transformer, NSValueTransformerBindingOption);
  return changed;
}

bool isGiven(const Value& option) { return !option.isAbsent() && !option.isNull(); }

Ref<NSValueTransformer> transformerIn(const NSDictionary& options) {
  Ref<NSValueTransformer> transformer;
  if (const Value name = options.objectForKey(NSValueTransformerNameBindingOption); isGiven(name)) {
    transformer = NSValueTransformer::valueTransformerForName(name.as<NSString>());
  }
  if (const Value given = options.objectForKey(NSValueTransformerBindingOption); isGiven(given)) {
    transformer = given.as<Ref<NSValueTransformer>>();
  }
  return transformer;
}

/// The contents of infoForBinding, as named fields.
struct BindingRecord {
  NSString binding;
  Ref<NSObject> object;
  NSString keyPath;
  Ref<NSDictionary> options;

  BindingRecord(const NSString& name, const NSDictionary& info)
      : binding(name),
        object(info.objectForKey(NSObservedObjectKey).as<Ref<NSObject>>()),
        keyPath(info.objectForKey(NSObservedKeyPathKey).as<NSString>()),
        options(info.objectForKey(NSOptionsKey).as<Ref<NSDictionary>>()) {}
};

}  // namespace

Ref<NSDictionary> nk_processBindOptions(const NSObject&, const Ref<NSDictionary>& options) {
  if (!options) return nullptr;
  const Value tokens = options->objectForKey(NKBind);
  if (tokens.isAbsent()) return options;
  auto processed = options->mutableCopy();
  processed->removeObjectForKey(NKBind);
  for (const NSString& token : tokens.as<NSString>().componentsSeparatedBy(";")) applyToken(token, *processed);
  return processed;
}

void nk_bind_toObject_withKeyPath_options(NSObject& receiver, const NSString& binding, NSObject& object,
                                          const NSString& keyPath, const Ref<NSDictionary>& options) {
  bind_toObject_withKeyPath_options(receiver, binding, object, keyPath, nk_processBindOptions(receiver, options));
}

void nk_bind_toObject_withKeyPath_block(NSObject& receiver, const NSString& binding, NSObject& object,
                                        const NSString& keyPath, const detail::TransformClosure& block) {
  nk_bind_toObject_withKeyPath_options_block(receiver, binding, object, keyPath, nullptr, block);
}

void nk_bind_toObject_withKeyPath_options_block(NSObject& receiver, const NSString& binding, NSObject& object,
                                                const NSString& keyPath, const Ref<NSDictionary>& options,
                                                const detail::TransformClosure& block) {
  Ref<NSDictionary> processed = nk_processBindOptions(receiver, options);
  if (block.block()) processed = withTransformer(processed, NKBlockValueTransformer::valueTransformerWithBlock(block));
  bind_toObject_withKeyPath_options(receiver, binding, object, keyPath, processed);
}

void nk_bind_toObject_withKeyPath_block_reverseBlock(NSObject& receiver, const NSString& binding, NSObject& object,
                                                     const NSString& keyPath, const detail::TransformClosure& block,
                                                     const detail::TransformClosure& reverseBlock) {
  nk_bind_toObject_withKeyPath_options_block_reverseBlock(receiver, binding, object, keyPath, nullptr, block,
                                                          reverseBlock);
}

void nk_bind_toObject_withKeyPath_options_block_reverseBlock(NSObject& receiver, const NSString& binding,
                                                             NSObject& object, const NSString& keyPath,
                                                             const Ref<NSDictionary>& options,
                                                             const detail::TransformClosure& block,
                                                             const detail::TransformClosure& reverseBlock) {
  Ref<NSDictionary> processed = nk_processBindOptions(receiver, options);
  if (block.block() || reverseBlock.block()) {
    processed =
        withTransformer(processed, NKBlockValueReversingTransformer::valueTransformerWithBlock(block, reverseBlock));
  }
  bind_toObject_withKeyPath_options(receiver, binding, object, keyPath, processed);
}

bool nk_updateBoundValue(NSObject& receiver, const Value& value, Ref<NSError>* error) {
  const auto info = infoForBinding(receiver, NSValueBinding);
  if (!info) return false;
  const BindingRecord bound(NSValueBinding, *info);
  const auto transformer = transformerIn(*bound.options);
  Value next = transformer ? transformer->reverseTransformedValue(value) : value;
  const Value validates = bound.options->objectForKey(NSValidatesImmediatelyBindingOption);
  if (isGiven(validates) && validates.as<bool>() &&
      !bound.object->validateValue_forKeyPath_error(next, bound.keyPath, error)) {
    return false;
  }
  const Value present = bound.object->valueForKeyPath(bound.keyPath);
  if (present.isAbsent() || present != next) bound.object->setValue_forKeyPath(next, bound.keyPath);
  return true;
}

void nk_transferBindingsTo(NSObject& receiver, NSObject& target, const NSArray& bindings) {
  std::vector<BindingRecord> records;
  for (const Value& each : bindings) {
    const auto name = each.as<NSString>();
    if (const auto info = infoForBinding(receiver, name)) records.emplace_back(name, *info);
  }
  for (const BindingRecord& record : records) {
    bind_toObject_withKeyPath_options(target, record.binding, *record.object, record.keyPath, record.options);
  }
  for (auto record = records.rbegin(); record != records.rend(); ++record) unbind(receiver, record->binding);
}

Value nk_observedObjectForBinding(const NSObject& receiver, const NSString& binding, bool extended) {
  const auto info = infoForBinding(receiver, binding);
  if (!info) return {};
  const Value observed = info->objectForKey(NSObservedObjectKey);
  const auto* cell = observed.object<NSTableCellView>();
  return extended && cell ? cell->objectValue() : observed;
}

}  // namespace norvik
