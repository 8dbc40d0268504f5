#include "NorvikCore/diagnostics/NSObject+MK_AutoDescribe.h"

#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "NorvikCore/platform/foundation/NSLog.h"
#include "NorvikCore/platform/foundation/NSStringCase.h"
#include "NorvikCore/platform/object/Block.h"
#include "NorvikCore/platform/values/Format.h"
#include "NorvikCore/platform/values/NSException.h"
#include "NorvikCore/platform/values/NSMutableString.h"

#include <algorithm>
#include <unordered_set>

namespace norvik {
namespace {

/// Appends the lines of one element to the text.
using ElementBlock = Block<void(const Value& element, NSMutableString& text)>;

NSString _describeElements(const NSObject& object, const NSArray& elements, const NSString& header,
                           const ElementBlock& block) {
  NSMutableString text(stringWithFormat("\n- - - > %@ %@: ", mk_className(object), header));
  for (const Value& element : elements) block(element, text);
  text.appendString("\n< - - -\n");
  return text.string();
}

void _printElements(const NSObject& object, const NSArray& elements, const NSString& header,
                    const ElementBlock& block) {
  NSLog("%@", _describeElements(object, elements, header, block));
}

ElementBlock _itemBlock() {
  return [](const Value& element, NSMutableString& text) { text.appendString("\n\t" + element.description()); };
}

Value valueOrWhyNone(const NSObject& object, const Value& key) {
  try {
    return object.valueForKey(key.as<NSString>());
  } catch (const NSException&) {
    return "Can't get value via KVC";
  }
}

ElementBlock _itemValueBlock(const NSObject& object) {
  return [&object](const Value& key, NSMutableString& text) {
    const Value value = valueOrWhyNone(object, key);
    text.appendString("\n\t");
    text.appendString(stringWithFormat("%@ : %@", key, value));
  };
}

bool isManagedObject(const NSObject& object) {
  const auto managed = Class::allNamed("NSManagedObject");
  return std::ranges::any_of(managed, [&](const Class* each) { return object.isKindOfClass(*each); });
}

constinit const NSString attributesHeader = "attributes";
constinit const NSString methodsHeader = "methods";
constinit const NSString methodsOnlyHeader = "methods only";

}  // namespace

Ref<NSArray> mk_propertyList(const Class& theClass) {
  const auto names = NSMutableArray::array();
  const auto add = [&](const Property& property) {
    if (!property.name.empty()) names->addObject(property.name);
  };
  for (const Class* c = &theClass; c; c = c->superclass()) {
    for (const Property& property : c->properties()) add(property);
    for (const Property* property : c->categoryProperties()) add(*property);
  }
  return names;
}

Ref<NSArray> mk_methodList(const Class& theClass) {
  const auto names = NSMutableArray::array();
  for (const SEL selector : theClass.selectors()) names->addObject(selector.name());
  return names;
}

Ref<NSArray> mk_methodListOnly(const Class& theClass) {
  std::unordered_set<NSString> accessors{uppercaseString(".cxx_destruct")};
  const auto properties = mk_propertyList(theClass);
  for (const Value& property : *properties) {
    accessors.insert(uppercaseString(*property.string()));
    accessors.insert(uppercaseString("set" + *property.string() + ":"));
  }
  const auto methods = mk_methodList(theClass);
  const auto names = NSMutableArray::array();
  for (const Value& method : *methods) {
    if (!accessors.contains(uppercaseString(*method.string()))) names->addObject(method);
  }
  return names;
}

NSString mk_className(const NSObject& object) { return object.classObject().name(); }

NSString mk_describeObject(const NSObject& object) {
  if (isManagedObject(object)) return object.description();
  return mk_describeObjectKeys(object, *mk_propertyList(object.classObject()));
}

NSString mk_describeObjectKeys(const NSObject& object, const NSArray& keys) {
  return _describeElements(object, keys, attributesHeader, _itemValueBlock(object));
}

NSString mk_describeObjectMethods(const NSObject& object) {
  return _describeElements(object, *mk_methodList(object.classObject()), methodsHeader, _itemBlock());
}

NSString mk_describeObjectMethodsOnly(const NSObject& object) {
  return _describeElements(object, *mk_methodListOnly(object.classObject()), methodsOnlyHeader, _itemBlock());
}

void mk_printObject(const NSObject& object) {
  if (isManagedObject(object)) {
    NSLog("%@", object.description());
  } else {
    mk_printObjectKeys(object, *mk_propertyList(object.classObject()));
  }
}

void mk_printObjectKeys(const NSObject& object, const NSArray& keys) {
  _printElements(object, keys, attributesHeader, _itemValueBlock(object));
}

void mk_printObjectMethods(const NSObject& object) {
  _printElements(object, *mk_methodList(object.classObject()), methodsHeader, _itemBlock());
}

void mk_printObjectMethodsOnly(const NSObject& object) {
  _printElements(object, *mk_methodListOnly(object.classObject()), methodsOnlyHeader, _itemBlock());
}

void mk_printObjectAt(const void* object) {
  if (object) {
    mk_printObject(*static_cast<const NSObject*>(object));
  } else {
    NSLog("(null)");
  }
}

}  // namespace norvik
