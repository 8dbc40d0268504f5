#include "NorvikCore/platform/foundation/internal/PropertyList.h"

#include "NorvikCore/platform/archives/NSArchiver.h"
#include "NorvikCore/platform/archives/NSUnarchiver.h"
#include "NorvikCore/platform/archives/internal/ArchiveContent.h"
#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/collections/NSData.h"
#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/values/NSException.h"

#include <unordered_map>

namespace norvik::detail {
namespace {

class Copier {
 public:
  explicit Copier(const NSString& what) : what_(what) {}

  Value copy(const Value& value) {
    switch (value.kind()) {
      case Value::Kind::Absent:
        refuse("an absent value");
      case Value::Kind::Null:
        refuse("the null marker");
      case Value::Kind::Object:
        return copyObject(*value.object());
      default:
        return value;
    }
  }

 private:
  Value copyObject(const NSObject& object) {
    if (const auto* data = dynamic_cast<const NSData*>(&object)) return data->copy();
    const auto* array = dynamic_cast<const NSArray*>(&object);
    const auto* dictionary = dynamic_cast<const NSDictionary*>(&object);
    if (!array && !dictionary) refuse("an object of the class " + object.classObject().name());

    // An object that occurs twice is copied once; an absent copy marks an object that is being copied.
    const auto [known, isNew] = copies_.try_emplace(&object);
    if (!isNew && known->second.isAbsent()) refuse("a collection that holds itself");
    if (!isNew) return known->second;
    if (depth_ == greatestArchiveDepth) refuse("collections more than " + std::to_string(depth_) + " levels deep");
    ++depth_;
    Value copied = array ? Value(copyArray(*array)) : Value(copyDictionary(*dictionary));
    --depth_;
    copies_[&object] = copied;
    return copied;
  }

  Ref<NSArray> copyArray(const NSArray& array) {
    std::vector<Value> elements;
    elements.reserve(array.count());
    for (const Value& element : array) elements.push_back(copy(element));
    return make<NSArray>(std::move(elements));
  }

  Ref<NSDictionary> copyDictionary(const NSDictionary& dictionary) {
    std::vector<NSDictionary::Entry> entries;
    entries.reserve(dictionary.count());
    for (const auto& [key, value] : dictionary) {
      if (!key.isString()) refuse("a dictionary with a key that is not a text");
      entries.push_back({key, copy(value)});
    }
    return make<NSDictionary>(std::move(entries));
  }

  [[noreturn]] void refuse(const NSString& thing) const {
    NSException::raise(NSInvalidArgumentException, what_ + " cannot hold " + thing);
  }

  const NSString& what_;
  std::unordered_map<const NSObject*, Value> copies_;
  unsigned depth_ = 0;
};

/// Raises if the content of an archive is not that of a property list, before any object is created from it.
class Checker {
 public:
  explicit Checker(const ArchiveContent& content) : content_(content), states_(content.objects.size()) {}

  void check() {
    if (!content_.fields.empty() || content_.values.size() != 1) fail();
    checkValue(content_.values.front(), 0);
  }

 private:
  enum class State : std::uint8_t { New, Open, Done };

  void checkValue(const ArchivedValue& value, unsigned depth) {
    if (value.object == ArchivedValue::noObject) {
      if (value.value.isAbsent() || value.value.isNull()) fail();
      return;
    }
    State& state = states_[value.object];
    if (state == State::Done) return;
    if (state == State::Open || depth == greatestArchiveDepth) fail();
    state = State::Open;
    checkObject(content_.objects[value.object], depth + 1);
    state = State::Done;
  }

  void checkObject(const ArchivedObject& object, unsigned depth) {
    const bool isDictionary = object.kind == ArchiveKind::Dictionary;
    if (!isDictionary && object.kind != ArchiveKind::Array && object.kind != ArchiveKind::Data) fail();
    for (std::size_t i = 0; i < object.values.size(); ++i) {
      if (isDictionary && i % 2 == 0) {
        if (!object.values[i].value.isString()) fail();
      } else {
        checkValue(object.values[i], depth);
      }
    }
  }

  [[noreturn]] static void fail() { raiseUnarchive("it contains a value that cannot be a preference"); }

  const ArchiveContent& content_;
  std::vector<State> states_;
};

}  // namespace

Value propertyListCopy(const Value& value, const NSString& what) { return Copier(what).copy(value); }

std::string encodePropertyList(const Value& copy) {
  return std::string(NSArchiver::archivedDataWithRootObject(copy)->text());
}

Value decodePropertyList(std::string_view bytes) {
  const Ref<NSData> data = NSData::dataWithText(bytes);
  const ArchiveContent content = parseSequentialArchive(data->bytes());
  Checker(content).check();
  return NSUnarchiver::unarchiveObjectWithData(*data);
}

}  // namespace norvik::detail
