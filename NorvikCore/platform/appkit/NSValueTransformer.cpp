#include "NorvikCore/platform/appkit/NSValueTransformer.h"

#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/kernel/Mutex.h"
#include "NorvikCore/platform/values/NSException.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace norvik {
namespace {

struct Named {
  NSString name;
  Ref<NSValueTransformer> transformer;
};

struct Registry {
  static Registry& shared() {
    return kernel::madeOnce([] { return new Registry; });
  }

  Ref<NSValueTransformer> find(const NSString& name) NK_EXCLUDES(mutex) {
    MutexLock lock(mutex);
    const auto found = std::ranges::find(all, name, &Named::name);
    return found == all.end() ? nullptr : found->transformer;
  }

  /// Returns the replaced transformer, so that the caller releases it without the lock.
  Ref<NSValueTransformer> put(const Ref<NSValueTransformer>& transformer, const NSString& name) NK_EXCLUDES(mutex) {
    Ref<NSValueTransformer> replaced = transformer;
    MutexLock lock(mutex);
    const auto found = std::ranges::find(all, name, &Named::name);
    if (found == all.end()) {
      if (transformer) all.push_back({name, std::exchange(replaced, nullptr)});
    } else {
      std::swap(found->transformer, replaced);
      if (!transformer) all.erase(found);
    }
    return replaced;
  }

  Mutex mutex;
  std::vector<Named> all NK_GUARDED_BY(mutex);
};

}  // namespace

NSValueTransformer::~NSValueTransformer() = default;

const Class& NSValueTransformer::transformedValueClass() { return NSObject::staticClass(); }

bool NSValueTransformer::canReverse() const {
  return classObject().performClassOperation("allowsReverseTransformation").as<bool>();
}

Value NSValueTransformer::transformedValue(const Value& value) { return value; }

Value NSValueTransformer::reverseTransformedValue(const Value& value) {
  if (!canReverse()) {
    NSException::raise(NSInvalidArgumentException, "a transformer of the class " + classObject().name() +
                                                       " is one-way and cannot transform a value back");
  }
  return transformedValue(value);
}

void NSValueTransformer::setValueTransformer_forName(const Ref<NSValueTransformer>& transformer, const NSString& name) {
  Registry::shared().put(transformer, name);
}

Ref<NSValueTransformer> NSValueTransformer::valueTransformerForName(const NSString& name) {
  if (auto known = Registry::shared().find(name)) return known;
  auto classes = Class::allNamed(name);
  std::erase_if(classes, [](const Class* each) { return !each->isSubclassOf(staticClass()); });
  if (classes.size() != 1) return nullptr;
  auto made = refCast<NSValueTransformer>(classes[0]->makeObject());
  if (made) setValueTransformer_forName(made, name);
  return made;
}

Ref<NSArray> NSValueTransformer::valueTransformerNames() {
  auto& registry = Registry::shared();
  auto names = NSMutableArray::array();
  MutexLock lock(registry.mutex);
  for (const Named& each : registry.all) names->addObject(each.name);
  return names;
}

}  // namespace norvik
