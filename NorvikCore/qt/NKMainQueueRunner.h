// NorvikCore/qt/NKMainQueueRunner.h - runs the blocks of the main queue in Qt's event loop.
//
//   QApplication application(argc, argv);
//   NKMainQueueRunner runner;
//   import->dispatchAsynchronously([] {
//     const auto people = readEmployees();                                              // on a thread of the pool
//     TSKDispatchQueue::mainDispatchQueue()->dispatchAsynchronously([people] { show(people); });
//   });
//   return QApplication::exec();
//
// Polling:   none. A socket notifier watches the main queue's descriptor. Only while the process has no descriptor
//            left, a timer drains the queue every 10 ms.
// Turns:     blocks run for up to 8 ms; then Qt handles its other events before more blocks run, so that many blocks do
//            not stop painting. One block that takes longer is not interrupted.
// Dialogs:   in the event loop of a dialog that an event handler or a slot runs (QDialog::exec()), blocks run as in
//            the outer loop. If a block itself runs an event loop, the queue waits until the block returns, because its
//            blocks run one at a time. So a block shows a dialog with open(), or uses later().
// Errors:    an exception that leaves a block ends the process, as on every queue.
// Lifetime:  create one, on the main thread, after the QCoreApplication and destroy it before. A second one at the same
//            time, no application, or another thread raises NSInvalidArgumentException. Blocks that are enqueued after
//            its destruction stay in the queue.
#pragma once

#include "NorvikCore/platform/export.h"

#include <QObject>

#include <functional>  // a block that Qt calls

QT_BEGIN_NAMESPACE
class QSocketNotifier;
class QTimer;
QT_END_NAMESPACE

namespace norvik {

class NK_EXPORT NKMainQueueRunner : public QObject {
  Q_OBJECT

 public:
  explicit NKMainQueueRunner(QObject* parent = nullptr);
  ~NKMainQueueRunner() override;

  /// Calls the function from Qt's event loop, outside every block of the main queue: there it may run a dialog with
  /// exec() while the queue's blocks run. Any thread. After the application is destroyed it does nothing.
  static void later(std::function<void()> function);

 private:
  void drain();
  void watch();

  QSocketNotifier* notifier_ = nullptr;
  QTimer* retry_ = nullptr;
  bool isDraining_ = false;
};

}  // namespace norvik
