// NorvikCore/platform/object/NSObject.h - the root of all classes whose objects have an identity.
//
//   class Payslip : public NSObject {
//     NK_OBJECT(Payslip, NSObject)
//     NK_PROPERTY(Decimal, grossPay, setGrossPay)
//    public:
//     void recalculate();
//     NK_METHOD(recalculate)
//   };
//   Ref<Payslip> slip = make<Payslip>();
//
// Objects are created by make<T>() and counted by Ref<T>; they are never on the stack. Ref.h, Class.h and
// ObjectMacros.h explain the rest; this header includes them.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/kernel/AtomicWord.h"
#include "NorvikCore/platform/object/Ref.h"
#include "NorvikCore/platform/object/StatementPlace.h"
#include "NorvikCore/platform/object/Value.h"
#include "NorvikCore/platform/values/NSString.h"

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <optional>
#include <span>

namespace norvik {

class Class;
class KeyValueChange;
class NSArray;
class NSDictionary;
class NSError;
class NSObject;
class SEL;
enum NSKeyValueObservingOptions : std::uint64_t;

namespace detail {
struct ObjectAccess;
template <class>
struct NotAbove;
template <class>
struct StatedClass;
}  // namespace detail

class NK_EXPORT NSObject {
 public:
  NSObject(const NSObject&) = delete;
  NSObject& operator=(const NSObject&) = delete;

  static const Class& staticClass();
  [[nodiscard]] virtual const Class& classObject() const;
  [[nodiscard]] bool isKindOfClass(const Class& other) const;

  /// Equality as collections use it: identity, unless a class overrides it together with hash().
  [[nodiscard]] virtual bool isEqual(const NSObject& other) const;
  [[nodiscard]] virtual std::size_t hash() const;
  /// The text for `%@`, logs and debugging: "<Payslip: 0x5581...>" unless a class overrides it.
  [[nodiscard]] virtual NSString description() const;
  /// Writes description().
  NK_EXPORT friend std::ostream& operator<<(std::ostream& out, const NSObject& object);

  /// True if the class has an instance operation of that selector, its own or inherited, or a property with that
  /// accessor: "name" or "setName:".
  [[nodiscard]] bool respondsToSelector(SEL selector) const;
  /// Calls the operation of that selector. An unknown selector, a wrong number of arguments or an argument of the wrong
  /// kind raises NSInvalidArgumentException.
  Value performSelector(SEL selector, std::span<const Value> arguments = {});
  Value performSelector(SEL selector, const Value& first);
  Value performSelector(SEL selector, const Value& first, const Value& second);

  // Key-value coding: properties, and operations without arguments, by name. KeyValueCoding.h gives the rules.
  [[nodiscard]] virtual Value valueForKey(const NSString& key) const;
  virtual void setValue_forKey(const Value& value, const NSString& key);
  [[nodiscard]] virtual Value valueForKeyPath(const NSString& keyPath) const;
  virtual void setValue_forKeyPath(const Value& value, const NSString& keyPath);
  /// Called by valueForKey and setValue_forKey for a key that the class does not have. Raises NSUndefinedKeyException
  /// unless overridden.
  [[nodiscard]] virtual Value valueForUndefinedKey(const NSString& key) const;
  virtual void setValue_forUndefinedKey(const Value& value, const NSString& key);
  /// Called by setValue_forKey if a number, a text, a decimal or a date would become absent. Raises
  /// NSInvalidArgumentException unless overridden.
  virtual void setNilValueForKey(const NSString& key);
  /// Calls the declared operation "validate<Key>:error:", which may change the value; true if there is none.
  virtual bool validateValue_forKey_error(Value& value, const NSString& key, Ref<NSError>* error);
  virtual bool validateValue_forKeyPath_error(Value& value, const NSString& keyPath, Ref<NSError>* error);
  /// In both functions the null marker represents an absent value.
  [[nodiscard]] Ref<NSDictionary> dictionaryWithValuesForKeys(const NSArray& keys) const;
  void setValuesForKeysWithDictionary(const NSDictionary& keyedValues);

  // Key-value observing: notifications of changes. KeyValueObserving.h gives the rules.
  void addObserver(NSObject& observer, const NSString& keyPath, NSKeyValueObservingOptions options,
                   void* context = nullptr);
  void removeObserver(NSObject& observer, const NSString& keyPath);
  void removeObserver(NSObject& observer, const NSString& keyPath, void* context);
  void willChangeValueForKey(const NSString& key);
  void didChangeValueForKey(const NSString& key);
  /// Called on an observer after (with the prior option also before) each change, on the thread that made the change.
  virtual void observeValueForKeyPath(const NSString& keyPath, NSObject& object, const KeyValueChange& change,
                                      void* context);

  /// The observers of this object, one line each, for warnings and debugging; absent if there are none.
  [[nodiscard]] std::optional<NSString> observationInfo() const;

  /// True if the object has key-value observers. A setter checks this before it announces a change.
  [[nodiscard]] bool isObserved() const noexcept { return (flags_.loadRelaxed() & observedFlag) != 0; }

 protected:
  NSObject() noexcept = default;
  virtual ~NSObject();

  /// The second step of creating an object. If it returns false, make() returns an empty Ref.
  virtual bool init();

  // A declaration in a class without NK_OBJECT finds these, and is rejected.
  static detail::Owner<NSObject> nk_owner_(detail::OfClass);
  static detail::InClass nk_scope_(detail::OfClass);
  static detail::StatementNumber<const detail::Place<0>*> nk_state_(const detail::Place<0>*);
  NSObject& nk_object_(detail::OfClass) noexcept { return *this; }

 private:
  friend struct detail::ObjectAccess;
  friend detail::StatedClass<NSObject> nk_stated_(const NSObject*, detail::NotAbove<NSObject>);

  static constexpr std::uint32_t observedFlag = 1;
  static constexpr std::uint32_t permanentFlag = 2;  ///< it lives as long as the process
  static constexpr int recordShift = 2;              ///< the other bits: the number of its side record, or 0

  mutable detail::AtomicWord<std::uint32_t> count_{1};
  mutable detail::AtomicWord<std::uint32_t> flags_;
};

}  // namespace norvik

#include "NorvikCore/platform/object/ObjectMacros.h"
