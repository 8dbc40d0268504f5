// NorvikCore/platform/object/NSCoder.h - how an object is taken apart into values, and made from them again.
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
// Each class that can be decoded states how, also where its superclass does: with NK_CODING an object is decoded into
// one that was constructed without arguments and whose init was not called, and initWithCoder stands in for it; with
// NK_DECODED_BY(function) a class operation makes the whole object, as suits one that never changes.
//
// Values are encoded under keys, or without: those are decoded in the order in which they were encoded. Both ways work
// with every archiver, also in one class. Keys let a class grow: it can encode more, and still read what it wrote
// earlier. A subclass calls its superclass's encodeWithCoder and initWithCoder first. Keys are an object's own, but
// shared with its superclasses; the coder gives out keys that begin with "$".
#pragma once

#include "NorvikCore/platform/object/NSObject.h"

namespace norvik {

class NK_EXPORT NSCoder : public NSObject {
  NK_OBJECT(NSCoder, NSObject)
  ~NSCoder() override;

  /// Any value without a key; an absent one is a value too.
  virtual void encodeObject(const Value& value) = 0;
  /// Anything that a ValueConversion exists for, without a key.
  template <ValueConvertible T>
  void encodeValue(const T& value) {
    encodeObject(Value(ValueConversion<T>::toValue(value)));
  }
  void encodeValue(const char* text) { encodeObject(Value(text)); }
  /// Any value; an absent one too, which reads as one that was never encoded.
  virtual void encodeObject(const Value& value, const NSString& key) = 0;
  void encodeBool(bool value, const NSString& key) { encodeObject(value, key); }
  void encodeInteger(std::int64_t value, const NSString& key) { encodeObject(value, key); }
  void encodeDouble(double value, const NSString& key) { encodeObject(value, key); }

  /// The next value that was encoded without a key, for the object being decoded or, outside of any, for the archive.
  /// Raises NSInvalidUnarchiveOperationException where there is none left.
  [[nodiscard]] virtual Value decodeObject() = 0;
  /// The same as a T, as decode has it.
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
  /// Absent where nothing was encoded under the key.
  [[nodiscard]] virtual Value decodeObjectForKey(const NSString& key) = 0;
  /// False, 0 and 0.0 where nothing was encoded under the key; something else than a number raises
  /// NSInvalidUnarchiveOperationException.
  [[nodiscard]] bool decodeBoolForKey(const NSString& key);
  [[nodiscard]] std::int64_t decodeIntegerForKey(const NSString& key);
  [[nodiscard]] double decodeDoubleForKey(const NSString& key);
  /// Value::as<T> of what was encoded. What is no T, or nothing where T has no form for that, raises
  /// NSInvalidUnarchiveOperationException.
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

/// What a class implements whose objects can be archived.
class NK_EXPORT NSCoding {
 public:
  virtual void encodeWithCoder(NSCoder& coder) const = 0;
  /// The second half of making an object, in place of init; false refuses, and the decoded object is absent. A class
  /// that states NK_CODING overrides it; one that states NK_DECODED_BY has no use for it.
  virtual bool initWithCoder(NSCoder& coder);

 protected:
  NSCoding() = default;
  NSCoding(const NSCoding&) = default;
  NSCoding& operator=(const NSCoding&) = default;
  virtual ~NSCoding();
};

namespace detail {

/// The selectors of the class operations that NK_CODING and NK_DECODED_BY state.
inline constexpr const char* makeForDecodingSelector = "nk_makeForDecoding";
inline constexpr const char* decodeSelector = "nk_decodeWithCoder:";

template <class>
inline constexpr bool isOfNSCoding = false;
template <>
inline constexpr bool isOfNSCoding<bool (NSCoding::*)(NSCoder&)> = true;

}  // namespace detail
}  // namespace norvik

/// States that objects of the class can be made from an archive, by a constructor without arguments, which may be
/// private, and initWithCoder.
#define NK_CODING                                                                           \
  static ::norvik::Ref<::norvik::NSObject> nk_makeForDecoding() {                           \
    static_assert(!::norvik::detail::isOfNSCoding<decltype(&Self::initWithCoder)>,          \
                  "a class that states NK_CODING implements bool initWithCoder(NSCoder&)"); \
    return ::norvik::Ref<::norvik::NSObject>::adopt(new Self());                            \
  }                                                                                         \
  NK_CLASS_METHOD(nk_makeForDecoding)

/// NK_DECODED_BY(function): states that objects of the class are made from an archive by `static Ref<Class>
/// function(NSCoder&)`. An empty Ref refuses. Such an object cannot be part of what it is decoded from itself.
#define NK_DECODED_BY(function)                                                                                \
  static ::norvik::Ref<::norvik::NSObject> nk_decodeWithCoder(const ::norvik::Ref<::norvik::NSCoder>& coder) { \
    return Self::function(*coder);                                                                             \
  }                                                                                                            \
  NK_CLASS_METHOD(nk_decodeWithCoder)
