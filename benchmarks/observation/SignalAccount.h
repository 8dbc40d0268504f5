// benchmarks/observation/SignalAccount.h - an account that tells of changes of its balance by Qt's signal, in a header
// of its own: Qt's tool that writes the signal's code does not understand the headers of C++20.
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
