// NorvikCore/platform/appkit/NSDictionaryController.h - a dictionary as a list of entries, some of them selected.
//
//   auto controller = make<NSDictionaryController>();
//   controller->setContentDictionary(rates);
//   const Ref<NSArray> entries = controller->arrangedObjects();
//   for (const auto& entry : entries->as<NSDictionaryControllerKeyValuePair>()) show(entry.key());
//   controller->setSelectedObjects(NSArray::arrayWithObjects(entries->firstObject()));
//
// The arranged objects are the dictionary's entries in the dictionary's order. They are read from it each time. The
// entry of a key stays the same object; when a key is removed, its entry is removed from the list and from the
// selection.
//
// Observers of "arrangedObjects" and "selectedObjects" are notified of another content, of a changed selection, and of
// keys that are removed through their entry or by key (setValue_forKey). After any other change of the dictionary's
// keys, call rearrangeObjects() to notify them.
//
// Ownership: retains the dictionary and the entries. Confined: one thread at a time.
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
  /// An empty Ref means no content; then the selection is empty too.
  void setContentDictionary(const Ref<NSDictionary>& content);

  [[nodiscard]] Ref<NSArray> arrangedObjects() const;
  /// Notifies observers that arranged and selected objects may have changed.
  void rearrangeObjects();

  /// In the order of the arranged objects.
  [[nodiscard]] Ref<NSArray> selectedObjects() const;
  /// Objects that are not arranged objects are ignored; an empty Ref selects nothing. True if the selection changed.
  bool setSelectedObjects(const Ref<NSArray>& objects);

 private:
  using Entry = NSDictionaryControllerKeyValuePair;
  [[nodiscard]] bool isCurrent() const;
  void readContent() const;
  template <class Change>
  void changeEntries(Change&& change);

  Ref<NSDictionary> content_;
  // The result of the last reading of the content. They are mutable because the getters read it again.
  mutable std::vector<Ref<Entry>> entries_;
  mutable Ref<NSArray> arranged_, selected_;
  bool holdsStill_ = false;  ///< while a change is announced, observers get the result of the last reading
};

}  // namespace norvik
