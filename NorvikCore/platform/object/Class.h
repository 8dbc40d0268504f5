// NorvikCore/platform/object/Class.h - the description of a class at run time.
//
//   const Class& c = Payslip::staticClass();
//   c.name();                                   // "Payslip"
//   c.property("grossPay")->get(*slip);         // the Value of slip->grossPay()
//   Class::named("Payslip") == &c;              // also "pay::Payslip", its C++ name
//
// Classes are known once their shared object is loaded; the next look-up of any class registers them, in the order of
// loading. They never change afterwards and are never destroyed, so any thread may read them. dlclose does not unload a
// shared object that states a class, because objects, properties and operations of the class refer to it.
//
// One C++ class is one Class, even if several shared objects contain it because they include its header. The first one
// that is loaded registers the class. Two classes count as the same if their C++ names with namespaces, their sizes and
// their declarations are equal. A class in an anonymous namespace is a different class in each file.
//
// Different classes may have the same name: pay::Row and hr::Row, or the instances of a class template. Then that name
// finds none of them, and archives contain their C++ names. NK_CLASS_NAME gives a class another name.
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/kernel/AtomicWord.h"
#include "NorvikCore/platform/kernel/Hidden.h"
#include "NorvikCore/platform/object/SEL.h"
#include "NorvikCore/platform/object/Value.h"

#include <span>
#include <typeinfo>
#include <vector>

namespace norvik {

class Class;
class NSObject;

namespace detail {
struct CategoryProperty;
struct ClassRegistry;
}  // namespace detail

/// A declared property. `get` and `set` raise NSUndefinedKeyException if the type has no ValueConversion. `set` is null
/// if the property is read-only.
struct NK_EXPORT Property {
  NSString name;
  NSString typeName{};    ///< as written in the class
  NSString setterName{};  ///< empty if the property is read-only
  const Class* owner = nullptr;
  bool isReadOnly = false, isComputed = false, isWeak = false, isAtomic = false;
  const Class& (*objectClass)() = nullptr;  ///< the class that it refers to, if its type is a Ref; else null
  Value (*get)(const NSObject& object) = nullptr;
  void (*set)(NSObject& object, const Value& value) = nullptr;
};

/// A declared operation. For an operation of the class itself `target` is null.
struct NK_EXPORT Method {
  SEL selector;
  std::size_t argumentCount = 0;
  const Class* owner = nullptr;
  Value (*invoke)(NSObject* target, std::span<const Value> arguments) = nullptr;
};

class NK_EXPORT Class {
 public:
  Class(const Class&) = delete;
  Class& operator=(const Class&) = delete;

  /// The name of the C++ class without namespaces and template arguments, or the name given by NK_CLASS_NAME.
  [[nodiscard]] const NSString& name() const noexcept { return name_; }
  /// The C++ name: "pay::Row", "pay::Box<int>", "(anonymous namespace)::Row". For the classes of values it is name().
  [[nodiscard]] const NSString& qualifiedName() const noexcept { return qualifiedName_; }
  /// True if another class has this name too.
  [[nodiscard]] bool sharesName() const noexcept;
  /// A name that is unique to the class and with which named() finds it: its name, or the C++ name if the name is
  /// shared ("::Row" outside of namespaces). Classes of one name in anonymous namespaces cannot be distinguished.
  [[nodiscard]] NSString distinctName() const;
  /// Null for a root class.
  [[nodiscard]] const Class* superclass() const noexcept { return superclass_; }
  /// Also true for the class itself.
  [[nodiscard]] bool isSubclassOf(const Class& other) const noexcept;

  /// Those of the class itself, in the order in which they are declared.
  [[nodiscard]] std::span<const Property> properties() const noexcept;
  [[nodiscard]] std::span<const Method> methods() const noexcept;
  [[nodiscard]] std::span<const Method> classMethods() const noexcept;
  /// The names of the class's own operations and of the accessors of its own properties, in the order in which they are
  /// declared.
  [[nodiscard]] std::span<const SEL> selectors() const noexcept;
  /// The properties that categories add to the class, in the order in which their shared objects were loaded.
  [[nodiscard]] std::span<const Property* const> categoryProperties() const noexcept;

  /// By name, of the class or inherited; null if there is none.
  [[nodiscard]] const Property* property(const NSString& key) const noexcept;
  [[nodiscard]] const Method* instanceMethod(SEL selector) const noexcept;
  /// The property, of the class or inherited, that the selector reads or, if it has an argument, writes; null if there
  /// is none.
  [[nodiscard]] const Property* propertyWithAccessor(SEL selector) const noexcept;
  [[nodiscard]] const Method* classMethod(SEL selector) const noexcept;
  /// The keys whose change also changes this key, as the class and its superclasses declare by NK_AFFECTED_BY.
  [[nodiscard]] std::vector<NSString> keysAffecting(const NSString& key) const;

  /// True if the class or a superclass overrides valueForKey or valueForUndefinedKey, as a dictionary does. Its
  /// properties then do not show which keys it has.
  [[nodiscard]] bool answersKeysItself() const noexcept { return answersKeysItself_; }

  /// Calls the class operation of that selector; raises NSInvalidArgumentException if there is none.
  Value performClassOperation(SEL selector, std::span<const Value> arguments = {}) const;

  /// A new object, made without arguments; empty if the class has no such constructor.
  [[nodiscard]] Ref<NSObject> makeObject() const;

  /// The only class of that name; if no class has the name, the only class of that C++ name. Null if there is none, and
  /// if several classes share the name. A name that begins with "::" is a C++ name.
  [[nodiscard]] static const Class* named(const NSString& name);
  /// All classes that the name refers to, in the order of their registration.
  [[nodiscard]] static std::vector<const Class*> allNamed(const NSString& name);
  /// Every class of the process, in the order of their registration.
  [[nodiscard]] static std::vector<const Class*> all();

  friend bool operator==(const Class& a, const Class& b) noexcept { return &a == &b; }
  /// Writes the name.
  NK_EXPORT friend std::ostream& operator<<(std::ostream& out, const Class& value);

 private:
  friend struct detail::CategoryProperty;
  friend struct detail::ClassRegistry;
  struct Tables;
  struct Lists;
  Class();
  ~Class();
  [[nodiscard]] Lists& lists() noexcept;
  [[nodiscard]] const Lists& lists() const noexcept;

  NSString name_, qualifiedName_;
  mutable detail::AtomicWord<bool> sharesName_{false};
  const std::type_info* type_ = nullptr;
  std::size_t objectSize_ = 0;
  const Class* superclass_ = nullptr;
  detail::Hidden<Tables> tables_;
  Ref<NSObject> (*makeObject_)() = nullptr;
  bool answersKeysItself_ = false;
};

}  // namespace norvik
