// NorvikCore/platform/keyvalue/KeyValueCoding.h - values by the names of what holds them.
//
//   slip->valueForKey("grossPay");                        // the Value of slip->grossPay()
//   slip->setValue_forKey(1250_dec, "grossPay");          // slip->setGrossPay(1250_dec): observers hear of it
//   slip->valueForKeyPath("employee.name");               // from object to object; absent where the path breaks off
//   slips->valueForKeyPath("@sum.grossPay");              // over the elements of an array, as a Decimal
//
// An object finds a key among its stated properties, then among its stated operations without arguments; "self" and
// "description" work on everything. Setting finds properties that are not read-only, then the operation "set<Key>:". A
// key that is not found goes to valueForUndefinedKey or setValue_forUndefinedKey, which raise NSUndefinedKeyException
// with the class and the key unless a class overrides them. An absent or null value for a number, a text, a decimal or
// a date that is not a std::optional goes to setNilValueForKey, which raises NSInvalidArgumentException unless
// overridden. A path that breaks off at an absent value gives an absent value, and sets nothing. A path of more than
// 1,000 keys raises NSInvalidArgumentException.
//
// A dictionary looks a key up; an array or a set asks each of its elements, and gives an array of the answers with the
// null marker for an absent one. Texts have "length", "intValue", "integerValue", "doubleValue", "boolValue",
// "lastPathComponent", "pathExtension"; numbers "intValue", "integerValue", "longLongValue", "doubleValue",
// "boolValue", "decimalValue", "stringValue"; dates "timeIntervalSinceReferenceDate" and "timeIntervalSince1970".
//
// Collection operators stand before the path they work on, over the elements of an array or set, or the values of a
// dictionary. An absent or null value is left out of all but @avg:
//   @count                                               how many elements there are; what follows it is not read
//   @sum.path                                            as a Decimal; 0 where there are none
//   @avg.path                                            the sum by the number of all elements, as a Decimal;
//                                                        0 where there are none
//   @max.path, @min.path                                 by Value::compare, the first of equal ones; absent where
//                                                        there are none
//   @unionOfObjects.path, @distinctUnionOfObjects.path   the values as an array, in order
//   @unionOfArrays.path, @distinctUnionOfArrays.path     the same over the elements of the elements
// Any other operator raises NSInvalidArgumentException.
//
// The operations on objects are members of NSObject. Threads: those of what is read and written.
#pragma once

#include "NorvikCore/platform/object/NSObject.h"
#include "NorvikCore/platform/object/Value.h"

#include <typeinfo>

namespace norvik {

class NSError;

/// What the target, any value, has for the key. An absent or null target has nothing for any key.
[[nodiscard]] NK_EXPORT Value valueForKey(const Value& target, const NSString& key);
[[nodiscard]] NK_EXPORT Value valueForKeyPath(const Value& target, const NSString& keyPath);

namespace detail {

/// A pointer on its way through an operation performed by name.
[[nodiscard]] NK_EXPORT Value boxPointer(void* pointer, const std::type_info& type);
[[nodiscard]] NK_EXPORT void* unboxPointer(const Value& value, const std::type_info& type);

}  // namespace detail

// A class validates the key "grossPay" by a stated operation, which may change the value or refuse it with an error:
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
