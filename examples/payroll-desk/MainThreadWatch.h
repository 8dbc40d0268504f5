// examples/payroll-desk/MainThreadWatch.h - an application that measures how long each event occupies the main thread.
#pragma once

#include <QApplication>

namespace desk {

class MainThreadWatch : public QApplication {
 public:
  using QApplication::QApplication;

  struct Longest {
    double wall = 0, processor = 0;  // ms; other processes may interrupt the thread, which only `wall` includes
    QString event;                   // of the greatest processor time
  };
  /// Of the events since start().
  [[nodiscard]] const Longest& longest() const { return longest_; }
  void start() {
    longest_ = {};
    isOn_ = true;
  }
  void stop() { isOn_ = false; }
  /// Goes on after stop().
  void resume() { isOn_ = true; }

  [[nodiscard]] bool notify(QObject* receiver, QEvent* event) override;

 private:
  Longest longest_;
  bool isOn_ = false;
  int depth_ = 0;
};

}  // namespace desk
