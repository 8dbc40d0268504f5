#include "NorvikCore/values/NKSender.h"

namespace norvik {

NKSender::~NKSender() = default;

void NKSender::setSenderTarget(const Ref<NSObject>& target) {
  detail::changeProperty(*this, "senderTarget", [&] { senderTarget_.store(Weak<NSObject>(target)); });
}

Ref<NKSender> NKSender::senderWithTag(std::int64_t tag) {
  auto sender = make<NKSender>();
  sender->setTag(tag);
  return sender;
}

Ref<NKSender> NKSender::senderWithRepresentedObject(const Value& representedObject) {
  auto sender = make<NKSender>();
  sender->setRepresentedObject(representedObject);
  return sender;
}

Ref<NKSender> NKSender::senderWithOnContinue(const Block<void()>& onContinue) {
  auto sender = make<NKSender>();
  sender->setOnContinue(onContinue);
  return sender;
}

Value NKSender::fromSender_getRepresentedObjectWithClass(const Value& sender, const Class& wanted) {
  const auto* from = sender.object<NKSender>();
  const Value represented = from ? from->representedObject() : Value();
  return !represented.isAbsent() && represented.classObject().isSubclassOf(wanted) ? represented : Value();
}

}  // namespace norvik
