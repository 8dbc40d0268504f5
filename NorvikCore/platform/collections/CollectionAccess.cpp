#include "NorvikCore/platform/collections/internal/CollectionAccess.h"

#include "NorvikCore/platform/values/NSException.h"

#include <algorithm>
#include <set>
#include <utility>

namespace norvik::detail {
namespace {

/// Releases in progress on this thread: their depth, and the values that wait until the outermost one is done.
struct Releasing {
  unsigned depth;
  std::vector<Value>* waiting;
};
thread_local Releasing releasing{};

constexpr unsigned greatestReleaseDepth = 64;

void keepWaiting(Value&& value) {
  if (!value.isObject()) return;
  if (!releasing.waiting) releasing.waiting = new std::vector<Value>;
  releasing.waiting->push_back(std::move(value));
}
void keepWaiting(NSDictionary::Entry&& entry) {
  keepWaiting(std::move(entry.key));
  keepWaiting(std::move(entry.value));
}

// Always inline, because the compiler would remove calls of a function that only prefetches.
[[gnu::always_inline]] inline void prefetchObject(const Value& value) noexcept {
  if (const NSObject* object = value.object()) __builtin_prefetch(object);
}
[[gnu::always_inline]] inline void prefetchObject(const NSDictionary::Entry& entry) noexcept {
  prefetchObject(entry.value);
}

/// Destroys from the first to the last. Each object is prefetched some elements ahead, because most are not in the
/// cache, and because no later load can pass the atomic change of a count.
template <class Element>
void destroyAll(std::vector<Element>& elements) noexcept {
  constexpr std::size_t ahead = 24;
  for (std::size_t i = 0; i < elements.size(); ++i) {
    if (i + ahead < elements.size()) prefetchObject(elements[i + ahead]);
    [[maybe_unused]] const Element gone(std::move(elements[i]));
  }
  elements.clear();
}

template <class Element>
void releaseElements(std::vector<Element> elements) noexcept {
  if (elements.empty()) return;
  if (releasing.depth == greatestReleaseDepth) {
    for (Element& element : elements) keepWaiting(std::move(element));
    return;
  }
  ++releasing.depth;
  destroyAll(elements);
  while (releasing.depth == 1 && releasing.waiting) delete std::exchange(releasing.waiting, nullptr);
  --releasing.depth;
}

constexpr std::size_t greatestDepth = 32;

bool isPlainWord(const NSString& text) {
  return !text.empty() && std::ranges::all_of(text.view(), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
  });
}

void appendQuoted(std::string& out, const NSString& text) {
  out += '"';
  for (const char c : text.utf8()) {
    switch (c) {
      case '"':
        out += "\\\"";
        break;
      case '\\':
        out += "\\\\";
        break;
      case '\n':
        out += "\\n";
        break;
      case '\t':
        out += "\\t";
        break;
      default:
        out += c;
    }
  }
  out += '"';
}

/// Describes nested collections, and detects a collection that contains itself.
class Describer {
 public:
  void describe(const Value& value) {
    if (const NSString* text = value.string(); text && !isPlainWord(*text)) {
      appendQuoted(text_, *text);
    } else if (const NSObject* object = value.object()) {
      describe(*object);
    } else {
      text_ += value.description().utf8();
    }
  }

  void describe(const NSObject& object) {
    const auto* array = dynamic_cast<const NSArray*>(&object);
    const auto* dictionary = dynamic_cast<const NSDictionary*>(&object);
    const auto* set = dynamic_cast<const NSSet*>(&object);
    if (!array && !dictionary && !set) {
      text_ += object.description().utf8();
    } else if (path_.size() == greatestDepth || std::ranges::find(path_, &object) != path_.end()) {
      text_ += "<" + object.classObject().name().str() + ": ...>";
    } else {
      path_.push_back(&object);
      if (array) describeElements("(", *array, ")");
      if (set) describeElements("{(", *set, ")}");
      if (dictionary) describeEntries(*dictionary);
      path_.pop_back();
    }
  }

  std::string take() { return std::move(text_); }

 private:
  template <class Collection>
  void describeElements(const char* opening, const Collection& collection, const char* closing) {
    text_ += opening;
    bool isFirst = true;
    for (const Value& element : collection) {
      text_ += isFirst ? "\n" : ",\n";
      isFirst = false;
      indent(path_.size());
      describe(element);
    }
    text_ += '\n';
    indent(path_.size() - 1);
    text_ += closing;
  }

  void describeEntries(const NSDictionary& dictionary) {
    text_ += "{\n";
    for (const auto& [key, value] : dictionary) {
      indent(path_.size());
      describe(key);
      text_ += " = ";
      describe(value);
      text_ += ";\n";
    }
    indent(path_.size() - 1);
    text_ += '}';
  }

  void indent(std::size_t depth) { text_.append(4 * depth, ' '); }

  std::string text_;
  std::vector<const NSObject*> path_;
};

}  // namespace

void releaseAll(std::vector<Value> values) noexcept { releaseElements(std::move(values)); }
void releaseAll(std::vector<NSDictionary::Entry> entries) noexcept { releaseElements(std::move(entries)); }

std::size_t elementHash(const Value& element) {
  if (const auto* array = element.object<NSArray>()) return array->count();
  if (const auto* dictionary = element.object<NSDictionary>()) return dictionary->count();
  if (const auto* set = element.object<NSSet>()) return set->count();
  return element.hash();
}

namespace {

using ObjectPair = std::pair<const NSObject*, const NSObject*>;

/// The comparisons in progress on this thread, and the pairs within the outermost one that count as equal.
struct Comparing {
  unsigned depth;
  std::set<ObjectPair>* equal;
};
thread_local Comparing comparing{};

constexpr unsigned greatestComparisonDepth = 1000;

}  // namespace

Comparison::Comparison(const NSObject& a, const NSObject& b) : pair_(&a, &b) {
  if (comparing.depth > 0) {
    if (comparing.depth == greatestComparisonDepth) {
      NSException::raise(NSGenericException,
                         "collections that hold one another more than 1000 deep cannot be compared");
    }
    if (!comparing.equal) comparing.equal = new std::set<ObjectPair>;
    isKnown_ = !comparing.equal->insert(pair_).second;
  }
  ++comparing.depth;
}

Comparison::~Comparison() {
  if (--comparing.depth == 0) delete std::exchange(comparing.equal, nullptr);
}

bool Comparison::conclude(bool areEqual) {
  if (!areEqual && comparing.depth > 1) comparing.equal->erase(pair_);
  return areEqual;
}

NSString describeCollection(const NSObject& collection) {
  Describer describer;
  describer.describe(collection);
  return NSString(describer.take());
}

void raiseMutated(const NSObject& collection) {
  NSException::raise(
      NSGenericException,
      NSString("<" + collection.classObject().name().str() + "> was changed while it was enumerated: ").str() +
          collection.description().utf8());
}

void raiseElement(const Value& element, const Class& wanted) {
  NSException::raise(NSInvalidArgumentException, "an element is a " + element.classObject().distinctName().str() +
                                                     " where a " + wanted.distinctName().str() + " is wanted");
}

void checkPresent(const Value& object, const char* operation) {
  if (!object.isAbsent()) [[likely]]
    return;
  NSException::raise(NSInvalidArgumentException,
                     std::string(operation) + ": an absent value cannot be put into a collection");
}

}  // namespace norvik::detail
