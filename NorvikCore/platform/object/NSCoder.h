// NorvikCore/platform/object/NSCoder.h - how an object is encoded as values, and decoded from them.
//
//   class Payslip : public NSObject, public NSCoding {
//     NK_OBJECT(Payslip, NSObject)
//     NK_CODING
//     NK_PROPERTY(Decimal, grossPay, setGrossPay)
//     void encodeWithCoder(NSCoder& coder) const override { coder.encodeObject(grossPay(), "grossPay"); }
//     bool initWithCoder(NSCoder& coder) override {
//       grossPay_ = coder.decode<Decimal>("grossPay");
//       return true;
//     }
//   };
//   Ref<NSData> data = NSKeyedArchiver::archivedDataWithRootObject(slip);
//   Ref<Payslip> same = NSKeyedUnarchiver::unarchiveObjectWithData(*data).as<Ref<Payslip>>();
//
// Each class that can be decoded declares how, even if its superclass does. With NK_CODING, the object is constructed
// without arguments, its init is not called, and initWithCoder is called instead. With NK_DECODED_BY(function), a class
// operation creates the whole object, which suits an object that never changes.
//
// Values are encoded with or without keys; those without are decoded in the order in which they were encoded. Both ways
// work with every archiver, also in one class. With keys a class can later encode more values and still read its
// earlier archives. A subclass calls its superclass's encodeWithCoder and initWithCoder first. Each object has its own
// keys, which it shares with its superclasses. Keys that begin with "$" are reserved for the coder.
#pragma once

#include "NorvikCore/platform/object/NSObject.h"

namespace norvik {

class NK_EXPORT NSCoder : public NSObject {
  NK_OBJECT(NSCoder, NSObject)
  ~NSCoder() override;

  /// Encodes any value without a key; an absent value takes a place too.
  virtual void encodeObject(const Value& value) = 0;
  /// Encodes anything that has a ValueConversion, without a key.
  template <ValueConvertible T>
  void encodeValue(const T& value) {
    encodeObject(Value(ValueConversion<T>::toValue(value)));
  }
  void encodeValue(const char* text) { encodeObject(Value(text)); }
  /// Encodes any value. An absent value decodes like one that was never encoded.
  virtual void encodeObject(const Value& value, const NSString& key) = 0;
  void encodeBool(bool value, const NSString& key) { encodeObject(value, key); }
  void encodeInteger(std::int64_t value, const NSString& key) { encodeObject(value, key); }
  void encodeDouble(double value, const NSString& key) { encodeObject(value, key); }

  /// The next value that was encoded without a key, for the object being decoded or, outside of any, for the archive.
  /// Raises NSInvalidUnarchiveOperationException if none is left.
  [[nodiscard]] virtual Value decodeObject() = 0;
  /// The same as a T, with the errors of decode().
  template <class T>
  [[nodiscard]] T decodeValue() {
    const Value value = decodeObject();
    try {
      return value.as<T>();
    } catch (...) {
      raiseWrongKind("the next value");
    }
  }

  [[nodiscard]] virtual bool containsValueForKey(const NSString& key) const = 0;
  /// Absent if nothing was encoded under the key.
  [[nodiscard]] virtual Value decodeObjectForKey(const NSString& key) = 0;
  /// False, 0 and 0.0 if nothing was encoded under the key. A value that is not a number raises
  /// NSInvalidUnarchiveOperationException.
  [[nodiscard]] bool decodeBoolForKey(const NSString& key);
  [[nodiscard]] std::int64_t decodeIntegerForKey(const NSString& key);
  [[nodiscard]] double decodeDoubleForKey(const NSString& key);
  /// Value::as<T> of the encoded value. Raises NSInvalidUnarchiveOperationException if it is not a T, or if there is
  /// none and T cannot be absent.
  template <class T>
  [[nodiscard]] T decode(const NSString& key) {
    const Value value = decodeObjectForKey(key);
    try {
      return value.as<T>();
    } catch (...) {
      raiseWrongKind("the value for the key \"" + key + "\"");
    }
  }

 protected:
  NSCoder() = default;

 private:
  [[noreturn]] static void raiseWrongKind(const NSString& which);
};

/// The interface of a class whose objects can be archived.
class NK_EXPORT NSCoding {
 public:
  virtual void encodeWithCoder(NSCoder& coder) const = 0;
  /// The second step of creating a decoded object, in place of init. If it returns false, the decoded object is absent.
  /// A class with NK_CODING overrides it; a class with NK_DECODED_BY does not need it.
  virtual bool initWithCoder(NSCoder& coder);

 protected:
  NSCoding() = default;
  NSCoding(const NSCoding&) = default;
  NSCoding& operator=(const NSCoding&) = default;
  virtual ~NSCoding();
};

namespace detail {

/// The selectors of the class operations that NK_CODING and NK_DECODED_BY declare.
inline constexpr const char* makeForDecodingSelector = "nk_makeForDecoding";
inline constexpr const char* decodeSelector = "nk_decodeWithCoder:";

template <class>
inline constexpr bool isOfNSCoding = false;
template <>
inline constexpr bool isOfNSCoding<bool (NSCoding::*)(NSCoder&)> = true;

}  // namespace detail
}  // namespace norvik

/// Declares that objects of the class are decoded by a constructor without arguments, which may be private, and
/// initWithCoder.
#define NK_CODING                                                                           \
  static ::norvik::Ref<::norvik::NSObject> nk_makeForDecoding() {                           \
    static_assert(!::norvik::detail::isOfNSCoding<decltype(&Self::initWithCoder)>,          \
                  "a class that states NK_CODING implements bool initWithCoder(NSCoder&)"); \
    return ::norvik::Ref<::norvik::NSObject>::adopt(new Self());                            \
  }                                                                                         \
  NK_CLASS_METHOD(nk_makeForDecoding)

/// NK_DECODED_BY(function): declares that objects of the class are decoded by `static Ref<Class> function(NSCoder&)`.
/// An empty Ref means that decoding failed. Such an object cannot be part of the values that it is decoded from.
#define NK_DECODED_BY(function)                                                                                \
  static ::norvik::Ref<::norvik::NSObject> nk_decodeWithCoder(const ::norvik::Ref<::norvik::NSCoder>& coder) { \
    return Self::function(*coder);                                                                             \
  }                                                                                                            \
  NK_CLASS_METHOD(nk_decodeWithCoder)
