// NorvikCore/platform/appkit/NSValueTransformer.h - converts values for a binding, in one direction or in both.
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
// A subclass that supports the reverse direction must declare allowsReverseTransformation again, as above. Otherwise it
// works in one direction only.
//
// Threads: the names are synchronised; a transformer is called on the thread that changes the value.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/object/NSObject.h"

namespace norvik {

class NSArray;

class NK_EXPORT NSValueTransformer : public NSObject {
  NK_OBJECT(NSValueTransformer, NSObject)
  ~NSValueTransformer() override;

  /// The class of the transformed values; the root class if they may be of any class.
  [[nodiscard]] static const Class& transformedValueClass();
  [[nodiscard]] static bool allowsReverseTransformation() { return false; }
  NK_CLASS_METHOD(allowsReverseTransformation)
  /// allowsReverseTransformation() of this transformer's own class.
  [[nodiscard]] bool canReverse() const;

  /// The default returns the value itself. Argument and result may be absent.
  [[nodiscard]] virtual Value transformedValue(const Value& value);
  /// Raises NSInvalidArgumentException if the class does not allow it; otherwise the default returns
  /// transformedValue().
  [[nodiscard]] virtual Value reverseTransformedValue(const Value& value);

  /// Registers the transformer under the name and replaces an existing one; an empty Ref only removes that.
  static void setValueTransformer_forName(const Ref<NSValueTransformer>& transformer, const NSString& name);
  /// An empty Ref if there is none. If no transformer was registered under the name, and it is the name of exactly one
  /// transformer class that can be created without arguments, a transformer of that class is created and registered. If
  /// several transformer classes have the name, none is used.
  [[nodiscard]] static Ref<NSValueTransformer> valueTransformerForName(const NSString& name);
  /// In the order in which they were first registered.
  [[nodiscard]] static Ref<NSArray> valueTransformerNames();
};

}  // namespace norvik
