#include "NorvikCore/platform/object/Class.h"

#include "NorvikCore/platform/kernel/CallStack.h"
#include "NorvikCore/platform/kernel/Mutex.h"
#include "NorvikCore/platform/object/NSObject.h"
#include "NorvikCore/platform/object/internal/PermanentText.h"
#include "NorvikCore/platform/values/NSException.h"

#include <ostream>
#include <unordered_map>
#include <utility>

namespace norvik {

/// The class's own statements, found by name.
struct Class::Tables {
  std::vector<std::pair<NSString, NSString>> dependencies;  ///< a key, and a key that changes it
  std::unordered_map<NSString, const Property*> properties;
  std::unordered_map<SEL, const Method*> methods, classMethods;

  /// Looks in the class's own table, then in its superclasses'.
  template <class Key, class Found>
  static const Found* find(const Class* c, std::unordered_map<Key, const Found*> Tables::*table, const Key& key) {
    for (; c; c = c->superclass_) {
      const auto& own = (*c->tables_).*table;
      if (const auto found = own.find(key); found != own.end()) return found->second;
    }
    return nullptr;
  }
};

Class::Class() : tables_(new Tables) {}
Class::~Class() = default;

namespace detail {

struct ClassRegistry {
  static ClassRegistry& shared() {
    static auto& registry = *new ClassRegistry;
    return registry;
  }

  const Class* find(const NSString& name) NK_EXCLUDES(mutex) {
    MutexLock lock(mutex);
    const auto found = byName.find(name);
    return found == byName.end() ? nullptr : found->second;
  }

  /// Completes the class outside the lock, since describing it may touch other classes.
  static Class* build(const ClassStatement& statement) {
    auto* made = new Class;
    made->name_ = permanentText(statement.name);
    made->type_ = statement.type;
    made->superclass_ = statement.superclass;
    made->makeObject_ = statement.makeObject;
    made->answersKeysItself_ = statement.answersKeysItself;
    ClassBuilder builder(*made);
    if (statement.describe) statement.describe(builder);
    for (Property& property : made->properties_) made->tables_->properties[property.name] = &property;
    for (Method& method : made->methods_) made->tables_->methods[method.selector] = &method;
    for (Method& method : made->classMethods_) made->tables_->classMethods[method.selector] = &method;
    return made;
  }

  /// `known` where it is the class that is stated, in this shared object or another; two classes under one name would
  /// each be handed objects of the other.
  static const Class& same(const Class& known, const ClassStatement& statement) {
    if (*known.type_ == *statement.type) return known;
    NSException::raise(NSInternalInconsistencyException, std::string("two C++ classes state the class name \"") +
                                                             statement.name +
                                                             "\": " + kernel::demangled(known.type_->name()) + " and " +
                                                             kernel::demangled(statement.type->name()));
  }

  const Class& define(const ClassStatement& statement) NK_EXCLUDES(mutex) {
    if (const Class* known = find(NSString(statement.name))) return same(*known, statement);
    Class* made = build(statement);
    const Class* registered = enter(made);
    if (registered == made) return *made;
    delete made;
    return same(*registered, statement);
  }

  /// The class of the name: `made`, unless another thread was faster.
  const Class* enter(const Class* made) NK_EXCLUDES(mutex) {
    MutexLock lock(mutex);
    const auto [entry, isNew] = byName.emplace(made->name_, made);
    if (isNew) inOrder.push_back(made);
    return entry->second;
  }

  Mutex mutex;
  std::unordered_map<NSString, const Class*> byName NK_GUARDED_BY(mutex);
  std::vector<const Class*> inOrder NK_GUARDED_BY(mutex);
};

const Class& defineClass(const ClassStatement& statement) { return ClassRegistry::shared().define(statement); }

namespace {

SEL selectorOf(const char* name, const char* selector, std::size_t argumentCount) {
  return selector ? SEL(selector) : SEL(std::string(name) + std::string(argumentCount, ':'));
}

void keepNames(Property& property) {
  for (NSString* name : {&property.name, &property.typeName, &property.setterName}) *name = permanentText(*name);
}

}  // namespace

void ClassBuilder::property(Property property) {
  keepNames(property);
  property.owner = &class_;
  class_.selectors_.emplace_back(property.name);
  if (!property.setterName.empty()) class_.selectors_.emplace_back(property.setterName + ":");
  class_.properties_.push_back(std::move(property));
}

void ClassBuilder::method(const char* name, const char* selector, std::size_t argumentCount, Invoke invoke) {
  const SEL stated = selectorOf(name, selector, argumentCount);
  class_.methods_.push_back({stated, argumentCount, &class_, invoke});
  class_.selectors_.push_back(stated);
}

void ClassBuilder::classMethod(const char* name, const char* selector, std::size_t argumentCount, Invoke invoke) {
  class_.classMethods_.push_back({selectorOf(name, selector, argumentCount), argumentCount, &class_, invoke});
}

void ClassBuilder::dependency(const char* key, const char* affectedBy) {
  class_.tables_->dependencies.emplace_back(permanentText(key), permanentText(affectedBy));
}

CategoryProperty::CategoryProperty(const Class& extended, Property property) {
  auto& c = const_cast<Class&>(extended);
  keepNames(property);
  property.owner = &extended;
  // Kept apart from the class's own list, whose elements must not move.
  const auto* kept = new Property(std::move(property));
  c.tables_->properties[kept->name] = kept;
  c.categoryProperties_.push_back(kept);
}

void checkArgumentCount(std::size_t wanted, std::size_t given) {
  if (wanted == given) return;
  NSException::raise(NSInvalidArgumentException, "an operation takes " + std::to_string(wanted) +
                                                     " arguments and was given " + std::to_string(given));
}

void raiseNotCodable(const char* key) {
  NSException::raise(NSUndefinedKeyException,
                     std::string("the type of the property \"") + key + "\" has no form as a value");
}

}  // namespace detail

bool Class::isSubclassOf(const Class& other) const noexcept {
  for (const Class* c = this; c; c = c->superclass_) {
    if (c == &other) return true;
  }
  return false;
}

const Property* Class::property(const NSString& key) const noexcept {
  return Tables::find(this, &Tables::properties, key);
}

const Method* Class::instanceMethod(SEL selector) const noexcept {
  return Tables::find(this, &Tables::methods, selector);
}

const Property* Class::propertyWithAccessor(SEL selector) const noexcept {
  const NSString text = selector.name();
  std::string_view name = text.view();
  const bool writes = name.ends_with(':');
  if (writes) name.remove_suffix(1);
  const auto matches = [&](const Property& property) {
    return writes ? property.set && property.setterName == name : property.name == name;
  };
  for (const Class* c = this; c && !name.empty(); c = c->superclass_) {
    for (const Property& property : c->properties_) {
      if (matches(property)) return &property;
    }
    for (const Property* property : c->categoryProperties_) {
      if (matches(*property)) return property;
    }
  }
  return nullptr;
}

const Method* Class::classMethod(SEL selector) const noexcept {
  return Tables::find(this, &Tables::classMethods, selector);
}

std::vector<NSString> Class::keysAffecting(const NSString& key) const {
  std::vector<NSString> keys;
  for (const Class* c = this; c; c = c->superclass_) {
    for (const auto& [affected, affecting] : c->tables_->dependencies) {
      if (affected == key) keys.push_back(affecting);
    }
  }
  return keys;
}

Value Class::performClassOperation(SEL selector, std::span<const Value> arguments) const {
  const Method* method = classMethod(selector);
  if (!method) {
    NSException::raise(NSInvalidArgumentException,
                       "+[" + name_.str() + " " + selector.name().str() + "]: unrecognised selector sent to class");
  }
  return method->invoke(nullptr, arguments);
}

Ref<NSObject> Class::makeObject() const { return makeObject_ ? makeObject_() : nullptr; }

const Class* Class::named(const NSString& name) noexcept { return detail::ClassRegistry::shared().find(name); }

std::vector<const Class*> Class::all() {
  auto& registry = detail::ClassRegistry::shared();
  MutexLock lock(registry.mutex);
  return registry.inOrder;
}

std::ostream& operator<<(std::ostream& out, const Class& value) { return out << value.name(); }

}  // namespace norvik
