#include "NorvikCore/platform/runtime/NSKeyedUnarchiver.h"

#include "NorvikCore/platform/runtime/NSError.h"
#include "NorvikCore/platform/runtime/NSException.h"
#include "NorvikCore/platform/runtime/NSKeyedArchiver.h"
#include "NorvikCore/platform/runtime/NSMutableArray.h"
#include "NorvikCore/platform/runtime/NSMutableData.h"
#include "NorvikCore/platform/runtime/NSMutableDictionary.h"
#include "NorvikCore/platform/runtime/NSMutableSet.h"
#include "NorvikCore/platform/runtime/internal/ArchiveContent.h"
#include "NorvikCore/platform/runtime/internal/CollectionAccess.h"

#include <utility>

namespace norvik {

constexpr NSString NSCoderErrorDomain = "NSCoderErrorDomain";

using detail::ArchivedField;
using detail::ArchivedObject;
using detail::ArchivedValue;
using detail::ArchiveKind;
using detail::CollectionAccess;

/// Makes objects when they are first asked for. An object that holds itself is found in the table while it is being
/// made.
class NSKeyedUnarchiver::Reader {
 public:
  explicit Reader(Ref<NSData> data)
      : data_(std::move(data)),
        content_(detail::parseArchive(data_->bytes())),
        made_(content_.objects.size()),
        fields_{&content_.fields} {}

  [[nodiscard]] const ArchivedField* field(const NSString& key) const {
    for (const ArchivedField& each : *fields_.back()) {
      if (each.key == key) return &each;
    }
    return nullptr;
  }

  Value value(NSCoder& coder, const ArchivedValue& archived) {
    return archived.object == ArchivedValue::noObject ? archived.value : Value(object(coder, archived.object));
  }

  /// Empties the collections that were made, so that none of them keep one another. For an archive of which nothing
  /// was given out.
  void abandon() noexcept {
    for (const Made& made : made_) {
      if (auto* array = dynamic_cast<NSArray*>(made.object.get())) {
        detail::releaseAll(std::exchange(CollectionAccess::elements(*array), {}));
      } else if (auto* dictionary = dynamic_cast<NSDictionary*>(made.object.get())) {
        detail::releaseAll(CollectionAccess::table(*dictionary).takeAll());
      } else if (auto* set = dynamic_cast<NSSet*>(made.object.get())) {
        detail::releaseAll(CollectionAccess::table(*set).takeAll());
      }
    }
  }

 private:
  struct Made {
    Ref<NSObject> object;  ///< empty also for one whose initWithCoder refused
    bool isKnown = false;
  };

  /// Counts how deep objects being made hold one another.
  struct Nesting {
    explicit Nesting(unsigned& counted) : depth(counted) {
      if (depth == detail::greatestArchiveDepth) {
        detail::raiseUnarchive("objects hold one another more than " + std::to_string(depth) + " deep");
      }
      ++depth;
    }
    ~Nesting() { --depth; }
    Nesting(const Nesting&) = delete;
    Nesting& operator=(const Nesting&) = delete;
    unsigned& depth;
  };

  Ref<NSObject> object(NSCoder& coder, std::size_t number) {
    if (made_[number].isKnown) return made_[number].object;
    const Nesting nesting(depth_);
    const ArchivedObject& archived = content_.objects[number];
    switch (archived.kind) {
      case ArchiveKind::Coded:
        return makeCoded(coder, number);
      case ArchiveKind::Array:
        return fill(coder, number, make<NSArray>());
      case ArchiveKind::MutableArray:
        return fill(coder, number, make<NSMutableArray>());
      case ArchiveKind::Set:
        return fill(coder, number, make<NSSet>());
      case ArchiveKind::MutableSet:
        return fill(coder, number, make<NSMutableSet>());
      case ArchiveKind::Dictionary:
        return fill(coder, number, make<NSDictionary>());
      case ArchiveKind::MutableDictionary:
        return fill(coder, number, make<NSMutableDictionary>());
      case ArchiveKind::Data:
        return know(number, make<NSData>(bytesOf(archived)));
      case ArchiveKind::MutableData:
        return know(number, make<NSMutableData>(bytesOf(archived)));
    }
    return nullptr;
  }

  static std::vector<std::uint8_t> bytesOf(const ArchivedObject& archived) {
    return {archived.data.begin(), archived.data.end()};
  }

  Ref<NSObject> know(std::size_t number, Ref<NSObject> object) {
    made_[number] = {std::move(object), true};
    return made_[number].object;
  }

  Value element(NSCoder& coder, const ArchivedValue& archived) {
    Value result = value(coder, archived);
    if (result.isAbsent()) detail::raiseUnarchive("a collection holds an object that refused to be decoded");
    return result;
  }

  Ref<NSObject> fill(NSCoder& coder, std::size_t number, const Ref<NSArray>& array) {
    know(number, array);
    auto& elements = CollectionAccess::elements(*array);
    for (const ArchivedValue& each : content_.objects[number].values) elements.push_back(element(coder, each));
    return array;
  }

  Ref<NSObject> fill(NSCoder& coder, std::size_t number, const Ref<NSSet>& set) {
    know(number, set);
    for (Value& each : elementsOf(coder, number)) insert(CollectionAccess::table(*set), std::move(each));
    return set;
  }

  Ref<NSObject> fill(NSCoder& coder, std::size_t number, const Ref<NSDictionary>& dictionary) {
    know(number, dictionary);
    std::vector<Value> keysAndValues = elementsOf(coder, number);
    for (std::size_t i = 0; i < keysAndValues.size(); i += 2) {
      insert(CollectionAccess::table(*dictionary),
             NSDictionary::Entry{std::move(keysAndValues[i]), std::move(keysAndValues[i + 1])});
    }
    return dictionary;
  }

  /// All of them are made before the first one is looked for by its hash.
  std::vector<Value> elementsOf(NSCoder& coder, std::size_t number) {
    std::vector<Value> elements;
    for (const ArchivedValue& each : content_.objects[number].values) elements.push_back(element(coder, each));
    return elements;
  }

  template <class Entry>
  static void insert(detail::OrderedTable<Entry>& table, Entry entry) {
    bool isNew = false;
    try {
      isNew = table.insert(std::move(entry)).second;
    } catch (const NSException& e) {
      detail::raiseUnarchive("elements cannot be compared: " + e.description());
    }
    if (!isNew) detail::raiseUnarchive("a set or a dictionary holds equal keys");
  }

  Ref<NSObject> makeCoded(NSCoder& coder, std::size_t number) {
    const ArchivedObject& archived = content_.objects[number];
    const Class* theClass = Class::named(archived.className);
    const Method* maker = theClass ? theClass->classMethod(detail::makeForDecodingSelector) : nullptr;
    if (!maker || maker->owner != theClass) {
      detail::raiseUnarchive("objects of the class \"" + archived.className + "\" cannot be decoded: " +
                             (theClass ? "it does not state NK_CODING" : "there is no such class"));
    }
    const Ref<NSObject> object = know(number, maker->invoke(nullptr, {}).as<Ref<NSObject>>());
    auto* coding = dynamic_cast<NSCoding*>(object.get());
    if (!coding) detail::raiseUnarchive("the class \"" + archived.className + "\" does not implement NSCoding");
    fields_.push_back(&archived.fields);
    const bool isMade = initialise(*coding, coder, archived.className);
    fields_.pop_back();
    return isMade ? object : know(number, nullptr);
  }

  bool initialise(NSCoding& coding, NSCoder& coder, const NSString& className) {
    try {
      return coding.initWithCoder(coder);
    } catch (const NSException& e) {
      fields_.pop_back();
      if (e.name() == NSInvalidUnarchiveOperationException) throw;
      detail::raiseUnarchive("an object of the class " + className + " cannot be decoded: " + e.description());
    } catch (...) {
      fields_.pop_back();
      throw;
    }
  }

  const Ref<NSData> data_;
  const detail::ArchiveContent content_;
  std::vector<Made> made_;
  std::vector<const std::vector<ArchivedField>*> fields_;  ///< of the archive itself, then of the objects being made
  unsigned depth_ = 0;
};

NSKeyedUnarchiver::NSKeyedUnarchiver(const NSData& data) : reader_(std::make_unique<Reader>(data.copy())) {}
NSKeyedUnarchiver::~NSKeyedUnarchiver() = default;

Value NSKeyedUnarchiver::unarchiveObjectWithData(const NSData& data) {
  const auto unarchiver = make<NSKeyedUnarchiver>(data);
  try {
    return unarchiver->decodeObjectForKey(NSKeyedArchiveRootObjectKey);
  } catch (...) {
    unarchiver->reader_->abandon();
    throw;
  }
}

Value NSKeyedUnarchiver::unarchivedObjectOfClass(const Class& wanted, const NSData& data, Ref<NSError>* error) {
  const auto refuse = [&](std::int64_t code, const NSString& why) {
    if (error) {
      *error = NSError::errorWithDomain(
          NSCoderErrorDomain, code,
          NSDictionary::dictionaryWith({{NSLocalizedDescriptionKey, "The data could not be read: " + why + "."},
                                        {NSLocalizedFailureReasonErrorKey, why}}));
    }
    return Value();
  };
  try {
    Value root = unarchiveObjectWithData(data);
    if (!root.isAbsent() && root.classObject().isSubclassOf(wanted)) return root;
    return refuse(NSCoderValueNotFoundError, "there is no " + wanted.name() + " in it");
  } catch (const NSException& e) {
    if (e.name() != NSInvalidUnarchiveOperationException) throw;
    return refuse(NSCoderReadCorruptError, e.reason());
  }
}

bool NSKeyedUnarchiver::containsValueForKey(const NSString& key) const { return reader_->field(key) != nullptr; }

Value NSKeyedUnarchiver::decodeObjectForKey(const NSString& key) {
  const ArchivedField* field = reader_->field(key);
  return field ? reader_->value(*this, field->value) : Value();
}

void NSKeyedUnarchiver::encodeObject(const Value&, const NSString&) {
  detail::raiseUnarchive("an unarchiver does not write");
}

}  // namespace norvik
