#include "NorvikCore/platform/archives/internal/ArchiveReader.h"

#include "NorvikCore/platform/archives/internal/CodedObject.h"
#include "NorvikCore/platform/collections/NSMutableArray.h"
#include "NorvikCore/platform/collections/NSMutableData.h"
#include "NorvikCore/platform/collections/NSMutableDictionary.h"
#include "NorvikCore/platform/collections/NSMutableSet.h"
#include "NorvikCore/platform/collections/internal/CollectionAccess.h"
#include "NorvikCore/platform/object/internal/SharedName.h"
#include "NorvikCore/platform/values/NSException.h"

#include <utility>

namespace norvik::detail {
namespace {

std::vector<std::uint8_t> bytesOf(const ArchivedObject& archived) {
  return {archived.data.begin(), archived.data.end()};
}

template <class Entry>
void insert(OrderedTable<Entry>& table, Entry entry) {
  bool isNew = false;
  try {
    isNew = table.insert(std::move(entry)).second;
  } catch (const NSException& e) {
    raiseUnarchive("elements cannot be compared: " + e.description());
  }
  if (!isNew) raiseUnarchive("a set or a dictionary holds equal keys");
}

}  // namespace

/// Counts the nesting of objects being created.
class ArchiveReader::Nesting {
 public:
  explicit Nesting(unsigned& depth) : depth_(depth) {
    if (depth == greatestArchiveDepth) {
      raiseUnarchive("objects are nested more than " + std::to_string(depth) + " deep");
    }
    ++depth_;
  }
  ~Nesting() { --depth_; }
  Nesting(const Nesting&) = delete;
  Nesting& operator=(const Nesting&) = delete;

 private:
  unsigned& depth_;
};

ArchiveReader::ArchiveReader(NSCoder& coder, Ref<NSData> data, ArchiveContent content)
    : coder_(coder),
      data_(std::move(data)),
      content_(std::move(content)),
      made_(content_.objects.size()),
      places_{{&content_.fields, &content_.values}} {}

ArchiveReader::~ArchiveReader() = default;

const ArchivedField* ArchiveReader::field(const NSString& key) const {
  for (const ArchivedField& each : *places_.back().fields) {
    if (each.key == key) return &each;
  }
  return nullptr;
}

bool ArchiveReader::isAtEnd() const noexcept { return places_.back().next == places_.back().values->size(); }

Value ArchiveReader::next() {
  if (isAtEnd()) raiseUnarchive("there is no further value");
  return value((*places_.back().values)[countUnnamed()]);
}

Value ArchiveReader::value(const ArchivedValue& archived) {
  return archived.object == ArchivedValue::noObject ? archived.value : Value(object(archived.object));
}

void ArchiveReader::abandon() noexcept {
  for (const Made& made : made_) {
    if (auto* array = dynamic_cast<NSArray*>(made.object.get())) {
      releaseAll(std::exchange(CollectionAccess::elements(*array), {}));
    } else if (auto* dictionary = dynamic_cast<NSDictionary*>(made.object.get())) {
      releaseAll(CollectionAccess::table(*dictionary).takeAll());
    } else if (auto* set = dynamic_cast<NSSet*>(made.object.get())) {
      releaseAll(CollectionAccess::table(*set).takeAll());
    }
  }
}

Ref<NSObject> ArchiveReader::object(std::size_t number) {
  switch (made_[number].state) {
    case State::Known:
      return made_[number].object;
    case State::BeingMade:
      raiseUnarchive("an object of the class " + content_.objects[number].className + " holds itself");
    case State::Failed:
      raiseUnarchive("an object that could not be decoded is requested again");
    case State::Unknown:
      break;
  }
  const Nesting nesting(depth_);
  try {
    return make(number);
  } catch (...) {
    made_[number].state = State::Failed;
    throw;
  }
}

Ref<NSObject> ArchiveReader::make(std::size_t number) {
  const ArchivedObject& archived = content_.objects[number];
  switch (archived.kind) {
    case ArchiveKind::Coded:
      return makeCoded(number);
    case ArchiveKind::Array:
      return fill(number, norvik::make<NSArray>());
    case ArchiveKind::MutableArray:
      return fill(number, norvik::make<NSMutableArray>());
    case ArchiveKind::Set:
      return fill(number, norvik::make<NSSet>());
    case ArchiveKind::MutableSet:
      return fill(number, norvik::make<NSMutableSet>());
    case ArchiveKind::Dictionary:
      return fill(number, norvik::make<NSDictionary>());
    case ArchiveKind::MutableDictionary:
      return fill(number, norvik::make<NSMutableDictionary>());
    case ArchiveKind::Data:
      return know(number, norvik::make<NSData>(bytesOf(archived)));
    case ArchiveKind::MutableData:
      return know(number, norvik::make<NSMutableData>(bytesOf(archived)));
  }
  return nullptr;
}

Ref<NSObject> ArchiveReader::know(std::size_t number, Ref<NSObject> object) {
  made_[number] = {std::move(object), State::Known};
  return made_[number].object;
}

Value ArchiveReader::element(const ArchivedValue& archived) {
  Value result = value(archived);
  if (result.isAbsent()) raiseUnarchive("a collection holds an object that refused to be decoded");
  return result;
}

Ref<NSObject> ArchiveReader::fill(std::size_t number, const Ref<NSArray>& array) {
  know(number, array);
  auto& elements = CollectionAccess::elements(*array);
  for (const ArchivedValue& each : content_.objects[number].values) elements.push_back(element(each));
  return array;
}

Ref<NSObject> ArchiveReader::fill(std::size_t number, const Ref<NSSet>& set) {
  know(number, set);
  for (Value& each : elementsOf(number)) insert(CollectionAccess::table(*set), std::move(each));
  return set;
}

Ref<NSObject> ArchiveReader::fill(std::size_t number, const Ref<NSDictionary>& dictionary) {
  know(number, dictionary);
  std::vector<Value> keysAndValues = elementsOf(number);
  for (std::size_t i = 0; i < keysAndValues.size(); i += 2) {
    insert(CollectionAccess::table(*dictionary),
           NSDictionary::Entry{std::move(keysAndValues[i]), std::move(keysAndValues[i + 1])});
  }
  return dictionary;
}

/// All elements are created before the first one is searched for by its hash.
std::vector<Value> ArchiveReader::elementsOf(std::size_t number) {
  std::vector<Value> elements;
  for (const ArchivedValue& each : content_.objects[number].values) elements.push_back(element(each));
  return elements;
}

Ref<NSObject> ArchiveReader::makeCoded(std::size_t number) {
  const ArchivedObject& archived = content_.objects[number];
  const Class* theClass = Class::named(archived.className);
  if (const std::string problem = theClass ? "" : sharedNameProblem(archived.className); !problem.empty()) {
    raiseUnarchive("an object cannot be decoded: " + problem);
  }
  const Method* operation = theClass ? decodingOperation(*theClass) : nullptr;
  if (!operation) {
    raiseUnarchive("objects of the class \"" + archived.className +
                   "\" cannot be decoded: " + (theClass ? "it does not declare NK_CODING" : "there is no such class"));
  }
  places_.push_back({&archived.fields, &archived.values});
  try {
    const Ref<NSObject> object = decode(number, *operation);
    places_.pop_back();
    return object;
  } catch (const NSException& e) {
    places_.pop_back();
    if (e.name() == NSInvalidUnarchiveOperationException) throw;
    raiseUnarchive("an object of the class " + archived.className + " cannot be decoded: " + e.description());
  } catch (...) {
    places_.pop_back();
    throw;
  }
}

Ref<NSObject> ArchiveReader::decode(std::size_t number, const Method& operation) {
  if (operation.argumentCount > 0) {
    made_[number].state = State::BeingMade;
    const Value coder = ref(coder_);
    return know(number, operation.invoke(nullptr, {&coder, 1}).as<Ref<NSObject>>());
  }
  const Ref<NSObject> object = know(number, operation.invoke(nullptr, {}).as<Ref<NSObject>>());
  auto* coding = dynamic_cast<NSCoding*>(object.get());
  if (!coding) raiseUnarchive("the class \"" + operation.owner->name() + "\" does not implement NSCoding");
  return coding->initWithCoder(coder_) ? object : know(number, nullptr);
}

}  // namespace norvik::detail
