// NorvikCore/platform/appkit/NSValueTransformer.h - what a binding does to a value on its way, in one direction or
// both.
//
//   class PenniesToPounds : public NSValueTransformer {
//     NK_OBJECT(PenniesToPounds, NSValueTransformer)
//     static bool allowsReverseTransformation() { return true; }
//     NK_CLASS_METHOD(allowsReverseTransformation)
//     Value transformedValue(const Value& pennies) override { return pennies.as<Decimal>() / 100; }
//     Value reverseTransformedValue(const Value& pounds) override { return pounds.as<Decimal>() * 100; }
//   };
//   NSValueTransformer::setValueTransformer_forName(make<PenniesToPounds>(), "pounds");
//   NSValueTransformer::valueTransformerForName("pounds")->transformedValue(1250);     // 12.50
//
// A subclass that can go back states allowsReverseTransformation again, as above; without that it goes one way only.
//
// Threads: the names are synchronised; a transformer is called on the thread that makes the change it carries.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/object/NSObject.h"

namespace norvik {

class NSArray;

class NK_EXPORT NSValueTransformer : public NSObject {
  NK_OBJECT(NSValueTransformer, NSObject)
  ~NSValueTransformer() override;

  /// The class of what the transformer makes; the root class where it may be anything.
  [[nodiscard]] static const Class& transformedValueClass();
  [[nodiscard]] static bool allowsReverseTransformation() { return false; }
  NK_CLASS_METHOD(allowsReverseTransformation)
  /// What this transformer's own class says.
  [[nodiscard]] bool canReverse() const;

  /// The value itself, unless a subclass makes something of it. An absent value may be asked for, and given.
  [[nodiscard]] virtual Value transformedValue(const Value& value);
  /// Raises NSInvalidArgumentException where the class does not allow it; otherwise transformedValue, unless a subclass
  /// has another way back.
  [[nodiscard]] virtual Value reverseTransformedValue(const Value& value);

  /// Keeps the transformer under the name in place of what was there; an empty one only removes that.
  static void setValueTransformer_forName(const Ref<NSValueTransformer>& transformer, const NSString& name);
  /// Empty where there is none. A name that none has been given, and that is the name of one transformer class that can
  /// be made without arguments, gets one of that class. The name of several transformer classes gets none of them.
  [[nodiscard]] static Ref<NSValueTransformer> valueTransformerForName(const NSString& name);
  /// In the order in which they were first given.
  [[nodiscard]] static Ref<NSArray> valueTransformerNames();
};

}  // namespace norvik
