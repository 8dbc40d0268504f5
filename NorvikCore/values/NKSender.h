// NorvikCore/values/NKSender.h - the sender of an action, with the data that the action needs and closures to call
// next.
//
//   auto sender = NKSender::senderWithRepresentedObject(payslip);
//   sender->setOnContinue([] { closePayRun(); });
//   NSApplication::sharedApplication().sendAction_to_from("reviewPayslip:", window, sender);
//   // there: NKSender::fromSender_getRepresentedObjectWithClass(sender, Payslip::staticClass())
//
// The closures are only stored here: the action decides when to call which. Each property may be read and set on any
// thread. The values that a closure captures live as long as the sender.
#pragma once

#include "NorvikCore/platform/collections/NSDictionary.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/object/Block.h"
#include "NorvikCore/platform/object/SEL.h"
#include "NorvikCore/platform/object/Weak.h"

#include <cstdint>
#include <optional>

namespace norvik {

class NK_EXPORT NKSender : public NSObject {
  NK_OBJECT(NKSender, NSObject)
  NK_ATOMIC_PROPERTY(Block<void()>, onValidationSuccess, setOnValidationSuccess)
  NK_ATOMIC_PROPERTY(Block<void()>, onContinue, setOnContinue)
  NK_ATOMIC_PROPERTY(Block<void()>, onAlternateContinue, setOnAlternateContinue)
  NK_ATOMIC_PROPERTY(Block<void()>, onCancel, setOnCancel)
  NK_ATOMIC_PROPERTY(Ref<NSDictionary>, info, setInfo)
  NK_STORED_PROPERTY(senderTarget, "setSenderTarget", "NSObject", true, true, Ref<nk_Type>,
                     NK_SET_BY_KEY(senderTarget, setSenderTarget), NSObject)
  NK_ATOMIC_PROPERTY(std::optional<NSString>, identifier, setIdentifier)
  NK_ATOMIC_PROPERTY(Value, representedObject, setRepresentedObject)
  NK_ATOMIC_PROPERTY(SEL, action, setAction)
  NK_ATOMIC_PROPERTY(std::int64_t, tag, setTag)
  ~NKSender() override;

  /// Not retained: empty after the target is destroyed.
  [[nodiscard]] Ref<NSObject> senderTarget() const { return senderTarget_.load().lock(); }
  void setSenderTarget(const Ref<NSObject>& target);

  [[nodiscard]] static Ref<NKSender> senderWithTag(std::int64_t tag);
  [[nodiscard]] static Ref<NKSender> senderWithRepresentedObject(const Value& representedObject);
  [[nodiscard]] static Ref<NKSender> senderWithOnContinue(const Block<void()>& onContinue);

  /// The represented object of a sender if it is of that class or a subclass. Absent if it is not, or if `sender` is
  /// not an NKSender.
  [[nodiscard]] static Value fromSender_getRepresentedObjectWithClass(const Value& sender, const Class& wanted);

 private:
  detail::AtomicStored<detail::Owner<NKSender>, Weak<NSObject>> senderTarget_;
};

}  // namespace norvik
