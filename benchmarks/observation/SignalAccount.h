// benchmarks/observation/SignalAccount.h - an account that notifies of changes of its balance by Qt's signal. It has a
// header of its own because Qt's tool that generates the signal's code does not understand C++20 headers.
#pragma once

#include <QObject>
#include <cstdint>

class SignalAccount : public QObject {
  Q_OBJECT
 public:
  std::int64_t balance = 0;
  void setBalance(std::int64_t value) {
    balance = value;
    emit changed(value);
  }
 signals:
  void changed(std::int64_t value);
};
