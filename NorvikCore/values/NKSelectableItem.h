// NorvikCore/values/NKSelectableItem.h - an item of a check list: a value, and whether it is selected.
//
//   auto list = NSArray::arrayWithObjects(NKSelectableItem::selectableItem("April", true),
//                                         NKSelectableItem::selectableItem("May", false));
//   NKSelectableItem::takeSelectedItemsFrom(*list);        // April
//
// Both properties may be read and set on any thread.
#pragma once

#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/export.h"

namespace norvik {

class NK_EXPORT NKSelectableItem : public NSObject {
  NK_OBJECT(NKSelectableItem, NSObject)
  NK_ATOMIC_PROPERTY(Value, item, setItem)
  NK_ATOMIC_PROPERTY(bool, selected, setSelected)
  ~NKSelectableItem() override;

  [[nodiscard]] static Ref<NKSelectableItem> selectableItem(const Value& item, bool selected);
  /// The items of the selected entries, in order; an absent item is given as the null marker. An entry that is not an
  /// NKSelectableItem raises NSInvalidArgumentException.
  [[nodiscard]] static Ref<NSArray> takeSelectedItemsFrom(const NSArray& selectableItems);

  /// "April, selected : Yes".
  [[nodiscard]] NSString description() const override;
};

}  // namespace norvik
