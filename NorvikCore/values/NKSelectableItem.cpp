#include "NorvikCore/values/NKSelectableItem.h"

#include "NorvikCore/platform/values/Format.h"

#include <utility>
#include <vector>

namespace norvik {

NKSelectableItem::~NKSelectableItem() = default;

Ref<NKSelectableItem> NKSelectableItem::selectableItem(const Value& item, bool selected) {
  auto made = make<NKSelectableItem>();
  made->setItem(item);
  made->setSelected(selected);
  return made;
}

Ref<NSArray> NKSelectableItem::takeSelectedItemsFrom(const NSArray& selectableItems) {
  std::vector<Value> items;
  for (const auto& entry : selectableItems.as<NKSelectableItem>()) {
    if (!entry.selected()) continue;
    Value item = entry.item();
    items.push_back(item.isAbsent() ? Value::null() : std::move(item));
  }
  return make<NSArray>(std::move(items));
}

NSString NKSelectableItem::description() const {
  return stringWithFormat("%@, selected : %@", item(), NSString(selected() ? "Yes" : "No"));
}

}  // namespace norvik
