// NorvikCore/qt/NKLogView.h - a widget that shows the log, with a choice of the level.
//
//   auto* log = new NKLogView(new NKLogModel(window));
//   tabs->addTab(log, "Log");
//
// New messages scroll into view while the last one is visible. Ctrl+C copies the selected messages. Confined to the
// main thread; its parts have the object names "level", "clear" and "messages".
#pragma once

#include "NorvikCore/platform/export.h"

#ifndef Q_MOC_RUN  // moc of Qt 6.4 cannot read <concepts>
#include "NorvikCore/logging/LogLevel.h"
#endif

#include <QWidget>

QT_BEGIN_NAMESPACE
class QComboBox;
class QTableView;
QT_END_NAMESPACE

namespace norvik {

class NKLogModel;

class NK_EXPORT NKLogView : public QWidget {
  Q_OBJECT

 public:
  /// The model becomes a child of the view.
  explicit NKLogView(NKLogModel* model, QWidget* parent = nullptr);
  ~NKLogView() override;

  [[nodiscard]] NKLogModel& model() const noexcept { return model_; }
  [[nodiscard]] LogLevel level() const;
  void setLevel(LogLevel level);
  /// The selected messages, one per line, their columns separated by tabs.
  [[nodiscard]] QString selectedText() const;
  [[nodiscard]] bool eventFilter(QObject* watched, QEvent* event) override;

 protected:
  void changeEvent(QEvent* event) override;
  void showEvent(QShowEvent* event) override;

 private:
  void fitColumns();

  NKLogModel& model_;
  QComboBox* const level_;
  QTableView* const messages_;
  bool isAtEnd_ = true;
};

}  // namespace norvik
