// NorvikCore/platform/keyvalue/KeyValueCoding.h - reads and writes values by the names of properties.
//
//   slip->valueForKey("grossPay");                        // the Value of slip->grossPay()
//   slip->setValue_forKey(1250_dec, "grossPay");          // slip->setGrossPay(1250_dec): observers are notified
//   slip->valueForKeyPath("employee.name");               // from object to object; absent if one on the way is absent
//   slips->valueForKeyPath("@sum.grossPay");              // over the elements of an array, as a Decimal
//
// An object searches for a key among its declared properties, then among its declared operations without arguments;
// "self" and "description" work on every object. Setting searches for a property that is not read-only, then for the
// operation "set<Key>:". For a key that is not found valueForUndefinedKey or setValue_forUndefinedKey is called. They
// raise NSUndefinedKeyException with the class and the key unless a class overrides them. If an absent or null value is
// set for a number, a text, a decimal or a date that is not a std::optional, setNilValueForKey is called, which raises
// NSInvalidArgumentException unless overridden. A path that ends early at an absent value reads as an absent value, and
// setting it has no effect. A path of more than 1,000 keys raises NSInvalidArgumentException.
//
// A dictionary looks the key up; an array or a set returns an array of its elements' values, with the null marker for
// an absent one. Texts have "length", "intValue", "integerValue", "longLongValue", "doubleValue", "boolValue",
// "lastPathComponent", "pathExtension"; numbers "intValue", "integerValue", "longLongValue", "doubleValue",
// "boolValue", "decimalValue", "stringValue"; dates "timeIntervalSinceReferenceDate" and "timeIntervalSince1970".
//
// A collection operator precedes the path that it is applied to, and covers the elements of an array or set, or the
// values of a dictionary. All except @count ignore absent and null values, but @avg divides by the number of all
// elements:
//   @count                                               the number of elements; the rest of the path is ignored
//   @sum.path                                            as a Decimal; 0 if there are no elements
//   @avg.path                                            the sum divided by the number of all elements, as a Decimal;
//                                                        0 if there are no elements
//   @max.path, @min.path                                 by Value::compare, the first of equal ones; absent if there
//                                                        are none
//   @unionOfObjects.path, @distinctUnionOfObjects.path   the values as an array, in order
//   @unionOfArrays.path, @distinctUnionOfArrays.path     the same, over the elements of the elements
// Any other operator raises NSInvalidArgumentException.
//
// The operations on objects are members of NSObject. Threads: as for the properties that are read and written.
#pragma once

#include "NorvikCore/platform/object/NSObject.h"
#include "NorvikCore/platform/object/Value.h"

#include <typeinfo>

namespace norvik {

class NSError;

/// The value of the target, which may be any value, for the key. Absent for an absent or null target.
[[nodiscard]] NK_EXPORT Value valueForKey(const Value& target, const NSString& key);
[[nodiscard]] NK_EXPORT Value valueForKeyPath(const Value& target, const NSString& keyPath);

namespace detail {

/// A pointer as a Value, to pass it through an operation that is performed by name.
[[nodiscard]] NK_EXPORT Value boxPointer(void* pointer, const std::type_info& type);
[[nodiscard]] NK_EXPORT void* unboxPointer(const Value& value, const std::type_info& type);

}  // namespace detail

// A class validates the key "grossPay" by a declared operation, which may change the value or reject it with an error:
//
//   bool validateGrossPay(Value* value, Ref<NSError>* error);
//   NK_METHOD_AS(validateGrossPay, "validateGrossPay:error:")
//
// `error` may be null.
template <>
struct ValueConversion<Value*> {
  static Value toValue(Value* pointer) { return detail::boxPointer(pointer, typeid(Value)); }
  static Value* fromValue(const Value& value) {
    return static_cast<Value*>(detail::unboxPointer(value, typeid(Value)));
  }
};
template <>
struct ValueConversion<Ref<NSError>*> {
  static Value toValue(Ref<NSError>* pointer) { return detail::boxPointer(pointer, typeid(Ref<NSError>)); }
  static Ref<NSError>* fromValue(const Value& value) {
    return static_cast<Ref<NSError>*>(detail::unboxPointer(value, typeid(Ref<NSError>)));
  }
};

}  // namespace norvik
