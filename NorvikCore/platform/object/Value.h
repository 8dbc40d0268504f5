// NorvikCore/platform/object/Value.h - "any object": one value of any kind that collections and key paths can hold.
//
//   Value pay = 1234.50_dec;
//   pay == Value(1234.5);               // true: numbers of all kinds compare by value
//   pay.as<Decimal>();                  // raises NSInvalidArgumentException if the value is not a number
//   Value{}.isAbsent();                 // true: no value
//   Value::null().isNull();             // true: the marker for "no value" in collections
//
// A Value is a key of std::unordered_map, NSDictionary and NSSet. Not all Values can be ordered, so it is not a key of
// std::map: use a type that has an order, such as NSString.
//
// A Value stores numbers, decimals, dates and texts directly, without allocation, and objects by a Ref. Copies are
// independent; distinct Values may be used on distinct threads.
//
// A character does not convert to a Value, because it could mean a text or a number. Write "A" or int('A').
#pragma once  // include time: texts, decimals and dates are members

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/object/Ref.h"
#include "NorvikCore/platform/values/Date.h"
#include "NorvikCore/platform/values/Decimal.h"
#include "NorvikCore/platform/values/NSComparisonResult.h"
#include "NorvikCore/platform/values/NSInteger.h"
#include "NorvikCore/platform/values/NSNumber.h"
#include "NorvikCore/platform/values/NSString.h"

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

namespace norvik {

class Class;
class NSObject;

namespace detail {
// The compiler shows these names for `for (auto& each : value)`, and for `a < b` and std::map<Value, T>.
struct AValueIsNotARange_LoopOverTheCollectionItHolds {};
struct NotAllValuesHaveAnOrder_CallCompareOrUseAnUnorderedMap {};
}

class NK_EXPORT Value {
 public:
  enum class Kind : std::uint8_t { Absent, Null, Boolean, Integer, Double, Decimal, Date, String, Object };

  Value() noexcept : kind_(Kind::Absent) {}
  /// The null marker: the single object that represents an absent value inside collections.
  [[nodiscard]] static Value null() noexcept { return Value(Kind::Null); }

  // Every kind of value converts implicitly, because a Value is the parameter of operations that accept anything.
  Value(std::same_as<bool> auto boolean) noexcept : kind_(Kind::Boolean) { storage_.boolean = boolean; }
  /// An integer. One above the range of a signed 64-bit integer is stored as a Decimal.
  template <detail::WholeNumber I>
  Value(I integer) noexcept : kind_(Kind::Integer) {
    if constexpr (std::unsigned_integral<I> && sizeof(I) == 8) {
      if (integer > static_cast<std::uint64_t>(INT64_MAX)) {
        emplace(Kind::Decimal, storage_.decimal, norvik::Decimal(integer));
        return;
      }
    }
    storage_.integer = static_cast<std::int64_t>(integer);
  }
  /// A float is stored as the double of the same value. A long double would lose digits and does not convert.
  template <std::floating_point F>
  requires(sizeof(F) <= sizeof(double)) Value(F real)
  noexcept : kind_(Kind::Double) { storage_.real = static_cast<double>(real); }
  Value(const norvik::Decimal& decimal) noexcept { emplace(Kind::Decimal, storage_.decimal, decimal); }
  Value(norvik::Date date) noexcept { emplace(Kind::Date, storage_.date, date); }
  /// A time of std::chrono::system_clock, as a Date.
  template <detail::SystemTimePoint Point>
  Value(const Point& point) noexcept : Value(norvik::Date(point)) {}
  Value(NSString string) noexcept { emplace(Kind::String, storage_.string, std::move(string)); }
  Value(const char* text) : Value(NSString(text)) {}
  Value(std::string_view text) : Value(NSString(text)) {}
  Value(const std::string& text) : Value(NSString(text)) {}
  Value(const NSNumber& number) noexcept;
  /// An empty Ref is the absent value.
  template <class T>
  Value(const Ref<T>& object) noexcept : Value(Ref<NSObject>(object)) {}
  Value(Ref<NSObject> object) noexcept : kind_(Kind::Absent) {
    if (object) emplace(Kind::Object, storage_.object, std::move(object));
  }
  /// An empty optional is the absent value.
  template <class T>
  requires std::is_constructible_v<Value, const T&> Value(const std::optional<T>& optional)
      : Value(optional ? Value(*optional) : Value()) {}
  template <class T>
  Value(T*) = delete;
  Value(const NSObject&) = delete;  // an object becomes a value by its Ref: ref(object)
  Value(std::nullptr_t) = delete;

  Value(const Value& other) noexcept : kind_(Kind::Absent) { copyFrom(other); }
  Value(Value&& other) noexcept : kind_(Kind::Absent) { moveFrom(other); }
  // The old content is destroyed last: `other` may be part of it, and an object that is destroyed may read this Value.
  Value& operator=(const Value& other) noexcept {
    if (this != &other) {
      const Value before(std::move(*this));
      copyFrom(other);
    }
    return *this;
  }
  Value& operator=(Value&& other) noexcept {
    if (this != &other) {
      const Value before(std::move(*this));
      moveFrom(other);
    }
    return *this;
  }
  ~Value() { destroy(); }

  [[nodiscard]] Kind kind() const noexcept { return kind_; }
  [[nodiscard]] bool isAbsent() const noexcept { return kind_ == Kind::Absent; }
  [[nodiscard]] bool isNull() const noexcept { return kind_ == Kind::Null; }
  [[nodiscard]] bool isNumber() const noexcept { return kind_ >= Kind::Boolean && kind_ <= Kind::Decimal; }
  [[nodiscard]] bool isString() const noexcept { return kind_ == Kind::String; }
  [[nodiscard]] bool isDate() const noexcept { return kind_ == Kind::Date; }
  [[nodiscard]] bool isObject() const noexcept { return kind_ == Kind::Object; }

  /// The content if it is of that kind, else null: `if (const NSString* text = value.string())`.
  [[nodiscard]] const NSString* string() const noexcept { return isString() ? &storage_.string : nullptr; }
  [[nodiscard]] const norvik::Decimal* decimal() const noexcept {
    return kind_ == Kind::Decimal ? &storage_.decimal : nullptr;
  }
  [[nodiscard]] const norvik::Date* date() const noexcept { return isDate() ? &storage_.date : nullptr; }
  [[nodiscard]] NSObject* object() const noexcept { return isObject() ? storage_.object.get() : nullptr; }
  template <class T>
  [[nodiscard]] T* object() const noexcept {
    return isObject() ? dynamic_cast<T*>(storage_.object.get()) : nullptr;
  }
  /// Any number; raises NSInvalidArgumentException if the value is not a number.
  [[nodiscard]] NSNumber number() const;

  /// The value as a T. Numbers convert to one another: if T is an integer, a fraction is cut off and a number out of
  /// range raises. Any other value must be of T's own kind. An absent or null value becomes an empty optional, Ref or
  /// Block, and raises for every other T. Errors raise NSInvalidArgumentException.
  template <class T>
  [[nodiscard]] T as() const;

  /// Equality by content: numbers by numeric value whatever their kind, texts and dates by value, objects by isEqual.
  /// At least one operand must be a Value: `date == "2024-04-30"` does not compile.
  [[nodiscard]] bool operator==(const Value& other) const;  // a member, so that only one operand converts
  /// Equal values have the same hash.
  [[nodiscard]] std::size_t hash() const;
  /// The order of two numbers, two texts (literally, by UTF-16 unit), two dates, or of objects that have a `compare:`
  /// operation; any other pair raises NSInvalidArgumentException.
  [[nodiscard]] NSComparisonResult compare(const Value& other) const;
  /// Stricter than equality: the same object, the same storage of a text, the same kind and digits of a number.
  [[nodiscard]] bool isIdenticalTo(const Value& other) const noexcept;

  /// The class of the content: NSNumber, NSDecimalNumber, NSDate, NSString, NSNull, or the object's own class. Raises
  /// NSInvalidArgumentException for an absent value.
  [[nodiscard]] const Class& classObject() const;
  /// The text for `%@`: a text itself, a number's digits, "1" or "0" for a boolean, "(null)" for an absent value and
  /// "<null>" for the null marker.
  [[nodiscard]] NSString description() const;
  /// Writes description().
  template <std::same_as<Value> V>
  friend std::ostream& operator<<(std::ostream& out, const V& value) {
    return value.writeTo(out);
  }

  template <std::same_as<Value> V>  // a template, so that nothing converts to a Value for it
  friend detail::NotAllValuesHaveAnOrder_CallCompareOrUseAnUnorderedMap operator<=>(const V&, const V&) = delete;

  friend detail::AValueIsNotARange_LoopOverTheCollectionItHolds begin(const Value&) = delete;
  friend detail::AValueIsNotARange_LoopOverTheCollectionItHolds end(const Value&) = delete;

 private:
  explicit Value(Kind kind) noexcept : kind_(kind) {}

  std::ostream& writeTo(std::ostream& out) const;

  template <class T>
  void emplace(Kind kind, T& member, T content) noexcept {
    ::new (static_cast<void*>(&member)) T(std::move(content));
    kind_ = kind;
  }
  void copyFrom(const Value& other) noexcept {
    switch (other.kind_) {
      case Kind::String:
        emplace(Kind::String, storage_.string, NSString(other.storage_.string));
        break;
      case Kind::Object:
        emplace(Kind::Object, storage_.object, Ref<NSObject>(other.storage_.object));
        break;
      case Kind::Decimal:
        emplace(Kind::Decimal, storage_.decimal, norvik::Decimal(other.storage_.decimal));
        break;
      case Kind::Date:
        emplace(Kind::Date, storage_.date, norvik::Date(other.storage_.date));
        break;
      default:
        storage_.integer = other.storage_.integer;
        kind_ = other.kind_;
    }
  }
  void moveFrom(Value& other) noexcept {
    switch (other.kind_) {
      case Kind::String:
        emplace(Kind::String, storage_.string, std::move(other.storage_.string));
        break;
      case Kind::Object:
        emplace(Kind::Object, storage_.object, std::move(other.storage_.object));
        break;
      default:
        copyFrom(other);
        return;
    }
    other.kind_ = Kind::Absent;  // a moved-from text or Ref needs no destructor
  }
  void destroy() noexcept {
    if (kind_ >= Kind::String) destroyShared();
  }
  void destroyShared() noexcept;

  union Storage {
    Storage() noexcept : bytes{} {}
    ~Storage() {}  // NOLINT(modernize-use-equals-default): Value calls the destructor of the active member

    unsigned char bytes[24];  ///< all bytes, so that none is ever uninitialised
    bool boolean;
    std::int64_t integer;
    double real;
    norvik::Decimal decimal;
    norvik::Date date;
    NSString string;
    Ref<NSObject> object;
  } storage_;
  Kind kind_;

  friend struct ValueAccess;
};

static_assert(sizeof(Value) <= 32);

/// Writes the object's description; "(null)" for an empty Ref.
template <class T>
std::ostream& operator<<(std::ostream& out, const Ref<T>& object) {
  return out << Value(object);
}

}  // namespace norvik

template <>
struct std::hash<norvik::Value> {
  std::size_t operator()(const norvik::Value& value) const { return value.hash(); }
};

#include "NorvikCore/platform/object/ValueConversion.h"
