// NorvikCore/qt/NKSenderAction.h - sends an action of the library from a signal of Qt, and its sender's closures as
// signals.
//
//   auto sender = NKSender::senderWithRepresentedObject(payslip);
//   auto* review = new NKSenderAction("reviewPayslip:", office, sender, button);
//   QObject::connect(button, &QPushButton::clicked, review, &NKSenderAction::perform);
//   QObject::connect(review, &NKSenderAction::continued, dialog, &QDialog::accept);
//   QObject::connect(review, &NKSenderAction::cancelled, dialog, &QDialog::reject);
//
// perform() calls NSApplication::sendAction_to_from(): the target's operation, or without a target that of the
// application or its delegate, with the sender as its argument.
//
// The four closures of the sender that are not set become signals of this object: when the action, or code that it
// started, calls one on any thread, the signal is emitted on this object's thread. Closures that are set already are
// called instead, and their signals are not emitted.
//
// Ownership: retains the sender, but not the target. Without the target the action is sent to the application. After
//            this object is destroyed, the closures do nothing.
// Threads:   confined to the main thread, like the application object; the sender's closures may be called anywhere.
// Errors:    an NSException of the action must not pass through Qt: it is logged, and failed() has its reason.
#pragma once

#include "NorvikCore/platform/export.h"

#ifndef Q_MOC_RUN  // moc of Qt 6.4 cannot read <concepts>
#include "NorvikCore/platform/object/SEL.h"
#include "NorvikCore/platform/object/Weak.h"
#include "NorvikCore/values/NKSender.h"
#endif

#include <QObject>
#include <QString>

#include <memory>

namespace norvik {

namespace detail {
class QtLink;
}

class NK_EXPORT NKSenderAction : public QObject {
  Q_OBJECT

 public:
  /// An empty target means the application. An empty sender becomes a new NKSender.
  NKSenderAction(SEL action, const Ref<NSObject>& target, Ref<NKSender> sender, QObject* parent = nullptr);
  ~NKSenderAction() override;

  [[nodiscard]] const Ref<NKSender>& sender() const noexcept { return sender_; }

 public Q_SLOTS:
  /// False if no object responds to the action or if it raised an NSException.
  bool perform();

 Q_SIGNALS:
  void validationSucceeded();
  void continued();
  void alternateContinued();
  void cancelled();
  void failed(const QString& reason);

 private:
  const SEL action_;
  const Weak<NSObject> target_;
  const Ref<NKSender> sender_;
  const std::unique_ptr<detail::QtLink> link_;
};

}  // namespace norvik
