// examples/dispatch/qt_loop.cpp - a Qt program whose event loop runs the main queue's blocks.
#include "NorvikCore/platform/dispatch/MainQueue.h"

#include <QCoreApplication>
#include <QSocketNotifier>

using namespace norvik;

int runLoop(QCoreApplication& application) {
  QSocketNotifier ready(dispatch_main_queue_descriptor(), QSocketNotifier::Read);
  QObject::connect(&ready, &QSocketNotifier::activated, &application, [&ready] {
    ready.setEnabled(false);  // a block may run an event loop of its own, as a dialog does
    dispatch_main_queue_drain();
    ready.setEnabled(true);
  });
  return QCoreApplication::exec();
}

// So far the page.

#include "NorvikCore/dispatch/TSKDispatchQueue.h"

#include <cstdio>

namespace {

/// Reads in the background and shows on the main thread, then calls `done` there.
template <class Done>
void startImport(Done done) {
  auto reader = TSKDispatchQueue::dispatchQueueWithLabel("import");
  reader->dispatchAsynchronously([done] {
    int employees = 40;  // stands for the number of employees read
    TSKDispatchQueue::mainDispatchQueue()->dispatchAsynchronously([done, employees] {
      std::printf("%d employees\n", employees);
      done();
    });
  });
}

}  // namespace

int main(int argc, char** argv) {
  QCoreApplication application(argc, argv);
  startImport([] { QCoreApplication::quit(); });
  return runLoop(application);
}
