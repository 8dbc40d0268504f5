// NorvikCore/platform/runtime/NSCoder.h - how an object is taken apart into named values, and made from them again.
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
// Each class that can be decoded states NK_CODING itself, also where its superclass does. An object is decoded into one
// that was constructed without arguments and whose init was not called: initWithCoder stands in for it. A subclass
// calls its superclass's encodeWithCoder and initWithCoder first. Keys are an object's own, but shared with its
// superclasses.
#pragma once

#include "NorvikCore/platform/runtime/NSObject.h"

namespace norvik {

class NK_EXPORT NSCoder : public NSObject {
  NK_OBJECT(NSCoder, NSObject)
  ~NSCoder() override;

  /// Any value; an absent one too, which reads as one that was never encoded.
  virtual void encodeObject(const Value& value, const NSString& key) = 0;
  void encodeBool(bool value, const NSString& key) { encodeObject(value, key); }
  void encodeInteger(std::int64_t value, const NSString& key) { encodeObject(value, key); }
  void encodeDouble(double value, const NSString& key) { encodeObject(value, key); }

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
      raiseWrongKind(key);
    }
  }

 protected:
  NSCoder() = default;

 private:
  [[noreturn]] static void raiseWrongKind(const NSString& key);
};

/// What a class implements whose objects can be archived.
class NK_EXPORT NSCoding {
 public:
  virtual void encodeWithCoder(NSCoder& coder) const = 0;
  /// The second half of making an object, in place of init; false refuses, and the decoded object is absent.
  virtual bool initWithCoder(NSCoder& coder) = 0;

 protected:
  NSCoding() = default;
  NSCoding(const NSCoding&) = default;
  NSCoding& operator=(const NSCoding&) = default;
  virtual ~NSCoding();
};

namespace detail {

template <class T>
Ref<NSObject> makeForDecoding() {
  return Ref<NSObject>::adopt(new T());
}

/// The selector of the class operation that NK_CODING states.
inline constexpr const char* makeForDecodingSelector = "nk_makeForDecoding";

}  // namespace detail
}  // namespace norvik

/// States that objects of the class can be made from an archive.
#define NK_CODING                                                                                                     \
  static ::norvik::Ref<::norvik::NSObject> nk_makeForDecoding() { return ::norvik::detail::makeForDecoding<Self>(); } \
  NK_CLASS_METHOD(nk_makeForDecoding)
