#include "MainThreadWatch.h"

#include <QEvent>
#include <QMetaEnum>

#include <ctime>

namespace desk {

namespace {

double milliseconds(clockid_t clock) {
  timespec time{};
  ::clock_gettime(clock, &time);
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

}  // namespace

bool MainThreadWatch::notify(QObject* receiver, QEvent* event) {
  if (!isOn_ || depth_ > 0) return QApplication::notify(receiver, event);  // events within an event are part of it
  const QString name = QString::fromLatin1(QMetaEnum::fromType<QEvent::Type>().valueToKey(event->type())) +
                       QStringLiteral(" of ") + QString::fromLatin1(receiver->metaObject()->className());
  ++depth_;
  const double wall = milliseconds(CLOCK_MONOTONIC), processor = milliseconds(CLOCK_THREAD_CPUTIME_ID);
  const bool result = QApplication::notify(receiver, event);
  const double wallTaken = milliseconds(CLOCK_MONOTONIC) - wall;
  const double processorTaken = milliseconds(CLOCK_THREAD_CPUTIME_ID) - processor;
  --depth_;
  if (!isOn_) return result;
  longest_.wall = std::max(longest_.wall, wallTaken);
  if (processorTaken > longest_.processor) {
    longest_.processor = processorTaken;
    longest_.event = name;
  }
  return result;
}

}  // namespace desk
