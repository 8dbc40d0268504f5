#include "NorvikCore/qt/NKSenderAction.h"

#include "NorvikCore/logging/DDLogMacros.h"
#include "NorvikCore/platform/appkit/NSApplication.h"
#include "NorvikCore/platform/values/NSException.h"
#include "NorvikCore/qt/QtConversions.h"
#include "NorvikCore/qt/internal/QtLink.h"

#include <QThread>

#include <utility>

namespace norvik {
namespace {

/// A closure that emits the signal on the action's thread: at once if it is called there.
Block<void()> emitting(NKSenderAction& action, const detail::QtLink& link, void (NKSenderAction::*signal)()) {
  return [&action, link, signal, thread = action.thread()] {
    if (QThread::currentThread() != thread) return link.post([&action, signal] { (action.*signal)(); });
    if (link.isOpen()) (action.*signal)();
  };
}

}  // namespace

NKSenderAction::NKSenderAction(SEL action, const Ref<NSObject>& target, Ref<NKSender> sender, QObject* parent)
    : QObject(parent),
      action_(action),
      target_(target),
      sender_(sender ? std::move(sender) : make<NKSender>()),
      link_(std::make_unique<detail::QtLink>()) {
  if (!sender_->onValidationSuccess()) {
    sender_->setOnValidationSuccess(emitting(*this, *link_, &NKSenderAction::validationSucceeded));
  }
  if (!sender_->onContinue()) sender_->setOnContinue(emitting(*this, *link_, &NKSenderAction::continued));
  if (!sender_->onAlternateContinue()) {
    sender_->setOnAlternateContinue(emitting(*this, *link_, &NKSenderAction::alternateContinued));
  }
  if (!sender_->onCancel()) sender_->setOnCancel(emitting(*this, *link_, &NKSenderAction::cancelled));
}

NKSenderAction::~NKSenderAction() { link_->close(); }

bool NKSenderAction::perform() {
  // The action may destroy this object.
  const Ref<NKSender> sender = sender_;
  const detail::QtLink link = *link_;
  const SEL action = action_;
  try {
    return NSApplication::sharedApplication().sendAction_to_from(action, target_.lock(), sender);
  } catch (const NSException& exception) {
    DDLogError("The action %@ failed: %@", action.name(), exception.reason());
    if (link.isOpen()) Q_EMIT failed(nk_toQString(exception.reason()));
    return false;
  }
}

}  // namespace norvik
