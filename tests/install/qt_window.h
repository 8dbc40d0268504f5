// A class of an application that the meta-object compiler reads together with every header of the component Qt.
#pragma once

#include "NorvikCore/qt/NKArrayModel.h"
#include "NorvikCore/qt/NKFormatterValidator.h"
#include "NorvikCore/qt/NKLogModel.h"
#include "NorvikCore/qt/NKLogView.h"
#include "NorvikCore/qt/NKMainQueueRunner.h"
#include "NorvikCore/qt/NKPropertyBinding.h"
#include "NorvikCore/qt/NKSenderAction.h"
#include "NorvikCore/qt/QtConversions.h"

#include <QWidget>

class Window : public QWidget {
  Q_OBJECT

 public slots:
  void close(bool) { QWidget::close(); }

 signals:
  void closed();
};
