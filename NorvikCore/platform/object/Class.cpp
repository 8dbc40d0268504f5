#include "NorvikCore/platform/object/Class.h"

#include "NorvikCore/platform/kernel/CallStack.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/kernel/Mutex.h"
#include "NorvikCore/platform/kernel/SystemLog.h"
#include "NorvikCore/platform/kernel/internal/KeepLoaded.h"
#include "NorvikCore/platform/object/ClassDefinition.h"
#include "NorvikCore/platform/object/internal/PermanentText.h"
#include "NorvikCore/platform/object/internal/SameName.h"
#include "NorvikCore/platform/object/internal/SharedName.h"
#include "NorvikCore/platform/values/NSException.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <ostream>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace norvik {

/// The operations and properties that the class states, in the order in which they are declared.
struct Class::Lists {
  std::vector<Property> properties;
  std::vector<Method> methods, classMethods;
  std::vector<SEL> selectors;
  std::vector<const Property*> categoryProperties;
};

/// The statements of the class itself, in lists and found by name.
struct Class::Tables {
  Lists lists;
  std::span<const detail::Statement> statements;
  std::vector<std::pair<NSString, NSString>> dependencies;  ///< an affected key, and the key that affects it
  std::unordered_map<NSString, const Property*> properties;
  std::unordered_map<SEL, const Method*> methods, classMethods;

  /// The properties that were found last, by the length and the end of their names. Entries of `properties` never
  /// change, so neither do these.
  std::array<detail::AtomicWord<const Property*>, 8> found;

  const Property* property(const NSString& key) {
    const std::string_view name = key.view();
    auto& last = found[(name.size() + (name.empty() ? 0u : static_cast<unsigned char>(name.back()))) % found.size()];
    if (const Property* known = last.loadAcquire(); known && detail::isSameName(known->name.view(), name)) return known;
    const auto searched = properties.find(key);
    if (searched == properties.end()) return nullptr;
    last.storeRelease(searched->second);
    return searched->second;
  }

  /// Searches the class's own table, then those of its superclasses.
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

Class::Lists& Class::lists() noexcept { return tables_->lists; }
const Class::Lists& Class::lists() const noexcept { return tables_->lists; }

namespace detail {
namespace {

/// Types of one name are one type, in any shared object, unless the name is local to one file.
bool isSameType(const std::type_info* a, const std::type_info* b) {
  if (!a || !b || a == b) return a == b;
  const std::string_view name = a->name();
  return name == b->name() && name.find("_GLOBAL__N_") == name.npos;
}

bool isSameText(const char* a, const char* b) { return a == b || (a && b && std::strcmp(a, b) == 0); }

bool isSameStatement(const Statement& a, const Statement& b) {
  return a.kind == b.kind && a.isComputed == b.isComputed && a.isWeak == b.isWeak && a.isAtomic == b.isAtomic &&
         a.argumentCount == b.argumentCount && isSameText(a.name, b.name) && isSameText(a.text, b.text) &&
         isSameText(a.setterName, b.setterName);
}

SEL selectorOf(const Statement& operation) {
  return operation.text ? SEL(operation.text)
                        : SEL(std::string(operation.name) + std::string(operation.argumentCount, ':'));
}

Property propertyOf(const Statement& statement, const Class& owner) {
  return {.name = permanentText(statement.name),
          .typeName = permanentText(statement.text),
          .setterName = statement.setterName ? permanentText(statement.setterName) : NSString(),
          .owner = &owner,
          .isReadOnly = statement.set == nullptr,
          .isComputed = statement.isComputed,
          .isWeak = statement.isWeak,
          .isAtomic = statement.isAtomic,
          .objectClass = statement.objectClass,
          .get = statement.get,
          .set = statement.set};
}

}  // namespace

/// What shared objects announced and no look-up has registered yet.
class LoadedStatements {
 public:
  /// Takes no lock, because a thread that loads a shared object holds the loader's.
  static void add(LoadedStatement& statement) noexcept {
    kernel::keepLoaded(&statement);
    waiting.fetch_add(1, std::memory_order_relaxed);
    statement.next_ = latest.load(std::memory_order_relaxed);
    while (!latest.compare_exchange_weak(statement.next_, &statement, std::memory_order_release,
                                         std::memory_order_relaxed)) {
    }
  }

  /// Registers all. Costs one load if there are none. Other threads wait until it is done; on the thread that
  /// registers, a call within it has no effect.
  static void enterAll() {
    if (waiting.load(std::memory_order_acquire) != 0 && !isEntering) [[unlikely]]
      enterWaiting();
  }

  /// Keeps the shared object of a statement that was not announced. The loader's lock is not taken while statements are
  /// entered, because its holder may load a shared object that uses a class.
  static void keep(const void* statement) noexcept {
    if (!isEntering) kernel::keepLoaded(statement);
  }

 private:
  [[gnu::noinline]] static void enterWaiting() NK_EXCLUDES(mutex) {
    MutexLock lock(mutex);
    struct Entering {
      Entering() noexcept { isEntering = true; }
      ~Entering() { isEntering = false; }
    } entering;
    while (true) {
      if (!oldest) oldest = inOrder(latest.exchange(nullptr, std::memory_order_acquire));
      if (!oldest) return;
      (void)oldest->enter_();  // if it raises for want of memory, the next look-up tries again
      oldest = oldest->next_;
      waiting.fetch_sub(1, std::memory_order_release);
    }
  }

  static LoadedStatement* inOrder(LoadedStatement* latestFirst) noexcept {
    LoadedStatement* first = nullptr;
    while (latestFirst) latestFirst = std::exchange(latestFirst->next_, std::exchange(first, latestFirst));
    return first;
  }

  static constinit std::atomic<std::size_t> waiting;
  static constinit std::atomic<LoadedStatement*> latest;
  static constinit Mutex mutex;
  static constinit LoadedStatement* oldest NK_GUARDED_BY(mutex);
  static constinit thread_local bool isEntering __attribute__((tls_model("initial-exec")));
};

constinit std::atomic<std::size_t> LoadedStatements::waiting{0};
constinit std::atomic<LoadedStatement*> LoadedStatements::latest{nullptr};
constinit Mutex LoadedStatements::mutex;
constinit LoadedStatement* LoadedStatements::oldest = nullptr;
constinit thread_local bool LoadedStatements::isEntering = false;

struct ClassRegistry {
  using Classes = std::vector<const Class*>;
  using Names = std::unordered_map<NSString, Classes>;

  static ClassRegistry& shared() {
    return kernel::madeOnce([] { return new ClassRegistry; });
  }

  static void take(Class& made, const Statement& statement) {
    Class::Lists& lists = made.lists();
    switch (statement.kind) {
      case StatementKind::Property: {
        lists.properties.push_back(propertyOf(statement, made));
        const Property& property = lists.properties.back();
        lists.selectors.emplace_back(property.name);
        if (!property.setterName.empty()) lists.selectors.emplace_back(property.setterName + ":");
        break;
      }
      case StatementKind::Method:
        lists.methods.push_back({selectorOf(statement), statement.argumentCount, &made, statement.invoke});
        lists.selectors.push_back(lists.methods.back().selector);
        break;
      case StatementKind::ClassMethod:
        lists.classMethods.push_back({selectorOf(statement), statement.argumentCount, &made, statement.invoke});
        break;
      case StatementKind::Dependency:
        made.tables_->dependencies.emplace_back(permanentText(statement.name), permanentText(statement.text));
        break;
      case StatementKind::ClassName:
        break;
    }
  }

  static Class* build(const ClassDefinition& definition) {
    auto* made = new Class;
    made->name_ = permanentText(definition.name);
    made->qualifiedName_ = definition.type ? permanentText(kernel::demangled(definition.type->name())) : made->name_;
    made->type_ = definition.type;
    made->objectSize_ = definition.objectSize;
    made->superclass_ = definition.superclass;
    made->makeObject_ = definition.makeObject;
    made->answersKeysItself_ = definition.answersKeysItself;
    made->tables_->statements = {definition.statements.begin(), definition.statements.end()};
    for (const Statement& statement : definition.statements) take(*made, statement);
    const Class::Lists& lists = made->lists();
    for (const Property& property : lists.properties) made->tables_->properties[property.name] = &property;
    for (const Method& method : lists.methods) made->tables_->methods[method.selector] = &method;
    for (const Method& method : lists.classMethods) made->tables_->classMethods[method.selector] = &method;
    return made;
  }

  static bool isSame(const Class& a, const Class& b) {
    return isSameType(a.type_, b.type_) && a.objectSize_ == b.objectSize_ &&
           std::ranges::equal(a.tables_->statements, b.tables_->statements, isSameStatement);
  }

  const Class& define(const ClassDefinition& definition) NK_EXCLUDES(mutex) {
    if (definition.statements.count() != 0) LoadedStatements::keep(definition.statements.begin());
    Class* made = build(definition);
    const Class* registered = enter(made);
    if (registered != made) delete made;
    return *registered;
  }

  /// Registers `made`, or returns the same class that is registered already.
  const Class* enter(const Class* made) NK_EXCLUDES(mutex) {
    MutexLock lock(mutex);
    Classes& sameName = byName[made->name_];
    for (const Class* known : sameName) {
      if (isSame(*known, *made)) return known;
    }
    sameName.push_back(made);
    byQualifiedName[made->qualifiedName_].push_back(made);
    inOrder.push_back(made);
    if (sameName.size() > 1) {
      for (const Class* each : sameName) each->sharesName_.storeRelaxed(true);
    }
    return made;
  }

  Classes allNamed(const NSString& name) NK_EXCLUDES(mutex) {
    MutexLock lock(mutex);
    return classesNamed(name);
  }

  const Class* named(const NSString& name) NK_EXCLUDES(mutex) {
    MutexLock lock(mutex);
    const Classes& found = classesNamed(name);
    return found.size() == 1 ? found[0] : nullptr;
  }

  const Classes& classesNamed(const NSString& name) const NK_REQUIRES(mutex) {
    if (name.hasPrefix("::")) return entry(byQualifiedName, name.substringFromIndex(2));
    const Classes& found = entry(byName, name);
    return found.empty() ? entry(byQualifiedName, name) : found;
  }

  static const Classes& entry(const Names& names, const NSString& name) {
    const auto found = names.find(name);
    return found == names.end() ? kernel::madeOnce([] { return new Classes; }) : found->second;
  }

  Mutex mutex;
  Names byName NK_GUARDED_BY(mutex), byQualifiedName NK_GUARDED_BY(mutex);
  Classes inOrder NK_GUARDED_BY(mutex);
};

const Class& defineClass(const ClassDefinition& definition) { return ClassRegistry::shared().define(definition); }

LoadedStatement::LoadedStatement(const Class& (*enter)()) noexcept : enter_(enter) { LoadedStatements::add(*this); }

const Class& ClassRecord::registered() {
  LoadedStatements::enterAll();
  const Class* known = known_.loadAcquire();
  if (!known) {
    // The record's own statement is being entered, or is not announced yet. If two threads define the class, both get
    // the same one.
    known = &define_();
    known_.storeRelease(known);
  }
  return *known;
}

CategoryProperty::CategoryProperty(const Class& extended, const Statement& statement) {
  LoadedStatements::enterAll();
  auto& c = const_cast<Class&>(extended);
  if (c.tables_->properties.contains(statement.name)) {
    kernel::writeSystemLog("The property \"" + std::string(statement.name) + "\" that a category adds to the class " +
                           c.qualifiedName_.str() + " is not used, because the class has one of that name");
    return;
  }
  LoadedStatements::keep(statement.name);
  // Stored apart from the class's own list, because the elements of that list must not move.
  const auto* kept = new Property(propertyOf(statement, extended));
  c.tables_->properties[kept->name] = kept;
  c.lists().categoryProperties.push_back(kept);
}

std::string sharedNameProblem(const NSString& name) {
  const std::vector<const Class*> classes = Class::allNamed(name);
  if (classes.size() < 2) return {};
  std::vector<std::string> names;
  for (const Class* each : classes) names.push_back(each->qualifiedName().str());
  std::ranges::sort(names);
  std::string problem = std::to_string(names.size()) + " classes are named \"" + name.str() + "\": " + names[0];
  for (std::size_t i = 1; i < names.size(); ++i) problem += ", " + names[i];
  return problem + "; give one of them another name by NK_CLASS_NAME";
}

void checkArgumentCount(std::size_t wanted, std::size_t given) {
  if (wanted == given) return;
  NSException::raise(NSInvalidArgumentException, "an operation takes " + std::to_string(wanted) +
                                                     " arguments and was given " + std::to_string(given));
}

void raiseNotCodable(const char* key) {
  NSException::raise(NSUndefinedKeyException,
                     std::string("the type of the property \"") + key + "\" cannot be converted to a Value");
}

}  // namespace detail

bool Class::isSubclassOf(const Class& other) const noexcept {
  for (const Class* c = this; c; c = c->superclass_) {
    if (c == &other) return true;
  }
  return false;
}

std::span<const Property> Class::properties() const noexcept { return lists().properties; }
std::span<const Method> Class::methods() const noexcept { return lists().methods; }
std::span<const Method> Class::classMethods() const noexcept { return lists().classMethods; }
std::span<const SEL> Class::selectors() const noexcept { return lists().selectors; }

const Property* Class::property(const NSString& key) const noexcept {
  detail::LoadedStatements::enterAll();  // a category may add the property
  for (const Class* c = this; c; c = c->superclass_) {
    if (const Property* own = c->tables_->property(key)) return own;
  }
  return nullptr;
}

const Method* Class::instanceMethod(SEL selector) const noexcept {
  return Tables::find(this, &Tables::methods, selector);
}

const Property* Class::propertyWithAccessor(SEL selector) const noexcept {
  detail::LoadedStatements::enterAll();
  const NSString text = selector.name();
  std::string_view name = text.view();
  const bool writes = name.ends_with(':');
  if (writes) name.remove_suffix(1);
  const auto matches = [&](const Property& property) {
    return writes ? property.set && property.setterName == name : property.name == name;
  };
  for (const Class* c = this; c && !name.empty(); c = c->superclass_) {
    for (const Property& property : c->lists().properties) {
      if (matches(property)) return &property;
    }
    for (const Property* property : c->lists().categoryProperties) {
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

NSString Class::distinctName() const {
  if (!sharesName()) return name_;
  // NK_CLASS_NAME may give the C++ name to another class, or the C++ name may be the shared name itself.
  const NSString fromOutside = "::" + qualifiedName_;
  return named(qualifiedName_) != this && named(fromOutside) == this ? fromOutside : qualifiedName_;
}

bool Class::sharesName() const noexcept {
  detail::LoadedStatements::enterAll();
  return sharesName_.loadRelaxed();
}

std::span<const Property* const> Class::categoryProperties() const noexcept {
  detail::LoadedStatements::enterAll();
  return lists().categoryProperties;
}

const Class* Class::named(const NSString& name) {
  detail::LoadedStatements::enterAll();
  return detail::ClassRegistry::shared().named(name);
}

std::vector<const Class*> Class::allNamed(const NSString& name) {
  detail::LoadedStatements::enterAll();
  return detail::ClassRegistry::shared().allNamed(name);
}

std::vector<const Class*> Class::all() {
  detail::LoadedStatements::enterAll();
  auto& registry = detail::ClassRegistry::shared();
  MutexLock lock(registry.mutex);
  return registry.inOrder;
}

std::ostream& operator<<(std::ostream& out, const Class& value) { return out << value.name(); }

}  // namespace norvik
