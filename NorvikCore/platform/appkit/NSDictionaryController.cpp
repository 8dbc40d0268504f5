#include "NorvikCore/platform/appkit/NSDictionaryController.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace norvik {
namespace {

struct HoldingStill {
  explicit HoldingStill(bool& flag) : on(flag) { on = true; }
  ~HoldingStill() { on = false; }
  HoldingStill(const HoldingStill&) = delete;
  HoldingStill& operator=(const HoldingStill&) = delete;
  bool& on;
};

/// The elements of `list` that are objects of `chosen`, in the order of the list.
Ref<NSArray> chosenFrom(const NSArray& list, const NSArray& chosen) {
  std::unordered_set<const NSObject*> wanted;
  for (const Value& each : chosen) wanted.insert(each.object());
  std::vector<Value> found;
  for (const Value& each : list) {
    if (wanted.contains(each.object())) found.push_back(each);
  }
  return make<NSArray>(std::move(found));
}

}  // namespace

NSDictionaryController::NSDictionaryController() : arranged_(NSArray::array()), selected_(NSArray::array()) {}

NSDictionaryController::~NSDictionaryController() {
  for (const Ref<Entry>& entry : entries_) entry->stopFollowing();
}

/// Announces both lists around a change of the data from which they are created.
template <class Change>
void NSDictionaryController::changeEntries(Change&& change) {
  {
    const HoldingStill holding(holdsStill_);
    willChangeValueForKey("arrangedObjects");
    willChangeValueForKey("selectedObjects");
  }
  change();
  readContent();
  didChangeValueForKey("selectedObjects");
  didChangeValueForKey("arrangedObjects");
}

void NSDictionaryController::setContentDictionary(const Ref<NSDictionary>& content) {
  const Ref<NSObject> kept = ref(static_cast<NSObject&>(*this));
  const Ref<NSDictionary> next = content;
  willChangeValueForKey("contentDictionary");
  changeEntries([&] {
    content_ = next;
    for (const Ref<Entry>& entry : std::exchange(entries_, {})) entry->stopFollowing();
    arranged_ = selected_ = NSArray::array();
  });
  didChangeValueForKey("contentDictionary");
}

void NSDictionaryController::rearrangeObjects() {
  const Ref<NSObject> kept = ref(static_cast<NSObject&>(*this));
  changeEntries([] {});
}

Ref<NSArray> NSDictionaryController::arrangedObjects() const {
  if (!holdsStill_) readContent();
  return arranged_;
}

Ref<NSArray> NSDictionaryController::selectedObjects() const {
  if (!holdsStill_) readContent();
  return selected_;
}

bool NSDictionaryController::setSelectedObjects(const Ref<NSArray>& objects) {
  const Ref<NSObject> kept = ref(static_cast<NSObject&>(*this));
  readContent();
  auto selected = objects ? chosenFrom(*arranged_, *objects) : NSArray::array();
  if (selected->isEqualToArray(*selected_)) return false;
  willChangeValueForKey("selectedObjects");
  selected_ = std::move(selected);
  didChangeValueForKey("selectedObjects");
  return true;
}

/// True if the entries have the content's keys in the content's order.
bool NSDictionaryController::isCurrent() const {
  const std::size_t count = content_ ? content_->count() : 0;
  if (count != entries_.size()) return false;
  auto entry = entries_.begin();
  return count == 0 || std::all_of(content_->begin(), content_->end(),
                                   [&](const auto& each) { return each.key == (*entry++)->key(); });
}

void NSDictionaryController::readContent() const {
  if (isCurrent()) return;
  std::unordered_map<Value, Ref<Entry>> known;
  for (const Ref<Entry>& entry : std::exchange(entries_, {})) known.emplace(entry->key(), entry);
  auto& self = const_cast<NSDictionaryController&>(*this);
  if (content_) {
    for (const auto& each : *content_) {
      if (auto stays = known.extract(each.key)) {
        entries_.push_back(std::move(stays.mapped()));
      } else {
        entries_.push_back(make<Entry>(self, content_, each.key));
        entries_.back()->follow();
      }
    }
  }
  for (const auto& [key, gone] : known) gone->stopFollowing();
  arranged_ = NSArray::arrayFrom(entries_);
  auto stillSelected = chosenFrom(*arranged_, *selected_);
  if (stillSelected->count() != selected_->count()) selected_ = std::move(stillSelected);
}

}  // namespace norvik
