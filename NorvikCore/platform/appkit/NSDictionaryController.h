// NorvikCore/platform/appkit/NSDictionaryController.h - a dictionary as a list of entries, some of them selected.
//
//   auto controller = make<NSDictionaryController>();
//   controller->setContentDictionary(rates);
//   const Ref<NSArray> entries = controller->arrangedObjects();
//   for (const auto& entry : entries->as<NSDictionaryControllerKeyValuePair>()) show(entry.key());
//   controller->setSelectedObjects(NSArray::arrayWithObjects(entries->firstObject()));
//
// The arranged objects are the dictionary's entries in the dictionary's order, read from it each time: an entry that
// stays is the same object, a key that goes takes its entry out of the list and out of the selection.
//
// Observers of "arrangedObjects" and "selectedObjects" hear of another content, of a changed selection, and of keys
// that are removed through their entry or by key (setValue_forKey). Who changes the dictionary's keys in another way
// calls rearrangeObjects() to tell them.
//
// Ownership: keeps the dictionary and the entries. Confined: one thread at a time.
#pragma once

#include "NorvikCore/platform/appkit/NSDictionaryControllerKeyValuePair.h"
#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/export.h"

#include <vector>

namespace norvik {

class NK_EXPORT NSDictionaryController : public NSObject {
  NK_OBJECT(NSDictionaryController, NSObject)
  NK_COMPUTED_PROPERTY_WITH_SETTER(Ref<NSDictionary>, contentDictionary, setContentDictionary)
  NK_COMPUTED_PROPERTY(Ref<NSArray>, arrangedObjects)
  NK_COMPUTED_PROPERTY_WITH_SETTER(Ref<NSArray>, selectedObjects, setSelectedObjects)

  NSDictionaryController();
  ~NSDictionaryController() override;

  [[nodiscard]] const Ref<NSDictionary>& contentDictionary() const noexcept { return content_; }
  /// An empty one is no content. The selection is empty then.
  void setContentDictionary(const Ref<NSDictionary>& content);

  [[nodiscard]] Ref<NSArray> arrangedObjects() const;
  /// Tells observers that arranged and selected objects may have changed.
  void rearrangeObjects();

  /// In the order of the arranged objects.
  [[nodiscard]] Ref<NSArray> selectedObjects() const;
  /// What is no arranged object is ignored; an empty Ref selects nothing. True where the selection changed.
  bool setSelectedObjects(const Ref<NSArray>& objects);

 private:
  using Entry = NSDictionaryControllerKeyValuePair;
  [[nodiscard]] bool isCurrent() const;
  void readContent() const;
  template <class Change>
  void changeEntries(Change&& change);

  Ref<NSDictionary> content_;
  // What was read from the content last; reading it anew is part of asking for it.
  mutable std::vector<Ref<Entry>> entries_;
  mutable Ref<NSArray> arranged_, selected_;
  bool holdsStill_ = false;  ///< while a change is announced, observers see what was read last
};

}  // namespace norvik
