#include "NorvikCore/qt/NKMainQueueRunner.h"

#include "NorvikCore/platform/dispatch/MainQueue.h"
#include "NorvikCore/platform/foundation/NSThread.h"
#include "NorvikCore/platform/values/NSException.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QPointer>
#include <QSocketNotifier>
#include <QTimer>

#include <chrono>

namespace norvik {
namespace {

constexpr qint64 turn = 8;                              // ms of blocks before Qt's other events
constexpr std::chrono::milliseconds shortagePause{10};  // between attempts to get the missing descriptor

const NKMainQueueRunner* theRunner = nullptr;  // read and written on the main thread

}  // namespace

NKMainQueueRunner::NKMainQueueRunner(QObject* parent) : QObject(parent) {
  if (!NSThread::isMainThread() || QCoreApplication::instance() == nullptr ||
      QCoreApplication::instance()->thread() != thread()) {
    NSException::raise(NSInvalidArgumentException,
                       "NKMainQueueRunner is created on the main thread, after the QCoreApplication");
  }
  if (theRunner != nullptr) NSException::raise(NSInvalidArgumentException, "the process has an NKMainQueueRunner");
  theRunner = this;
  retry_ = new QTimer(this);
  retry_->setSingleShot(true);
  retry_->setInterval(shortagePause);
  connect(retry_, &QTimer::timeout, this, [this] {
    watch();
    drain();
  });
  watch();
}

NKMainQueueRunner::~NKMainQueueRunner() {
  if (theRunner == this) theRunner = nullptr;
}

void NKMainQueueRunner::later(std::function<void()> function) {
  if (QCoreApplication* const application = QCoreApplication::instance()) {
    QMetaObject::invokeMethod(application, std::move(function), Qt::QueuedConnection);
  }
}

void NKMainQueueRunner::watch() {
  const int descriptor = dispatch_main_queue_descriptor();
  if (descriptor < 0) return retry_->start();
  notifier_ = new QSocketNotifier(descriptor, QSocketNotifier::Read, this);
  connect(notifier_, &QSocketNotifier::activated, this, &NKMainQueueRunner::drain);
}

void NKMainQueueRunner::drain() {
  if (isDraining_) return;  // a block that runs an event loop: the queue's next block waits for it
  isDraining_ = true;
  if (notifier_ != nullptr) notifier_->setEnabled(false);  // it would stay readable in that loop and keep it busy
  QElapsedTimer time;
  time.start();
  const QPointer<NKMainQueueRunner> self(this);  // a block may destroy the runner
  while (dispatch_main_queue_drain(1) > 0 && self && time.elapsed() < turn) {
  }
  if (!self) return;
  isDraining_ = false;
  if (notifier_ != nullptr) notifier_->setEnabled(true);
}

}  // namespace norvik
