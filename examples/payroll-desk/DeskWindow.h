// examples/payroll-desk/DeskWindow.h - the window: people on the left, the selected payslip on the right, totals above.
#pragma once

#include <QMainWindow>

#include "Desk.h"
#include "NorvikCore/qt/NKArrayModel.h"
#include "Theme.h"

QT_BEGIN_NAMESPACE
class QComboBox;
class QGridLayout;
class QLabel;
class QLineEdit;
class QSplitter;
class QTabWidget;
class QTableView;
class QTextBrowser;
QT_END_NAMESPACE

namespace desk {

class DeskWindow : public QMainWindow {
 public:
  explicit DeskWindow(norvik::Ref<Desk> desk);
  ~DeskWindow() override;

  [[nodiscard]] Desk& desk() const { return *desk_; }

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  class Watch;
  QWidget* makeHeader();
  QWidget* makePeople();
  QWidget* makePayslip();
  QWidget* makeFigure(const QString& caption, const norvik::NSString& keyPath, const char* name);
  /// A caption, a line edit and its formatter, bound to a key path of the selected person.
  QLineEdit* addField(QGridLayout& layout, int row, int column, int width, const QString& caption, const char* key,
                      norvik::Ref<norvik::NSFormatter> formatter);
  /// Takes over what is typed in the field that has the focus: a key of a menu leaves the focus there.
  void endEditing();
  void save();
  /// Asks the user if there are edits.
  bool mayDiscardEdits();
  void chooseFolder();
  void choosePrintFolder();
  void setAppearance(Appearance appearance);
  void showSelected();
  /// Makes the row of the selected person the current one.
  void selectRow();
  void refreshPreview();
  void restore();

  const norvik::Ref<Desk> desk_;
  norvik::Ref<Watch> watch_;
  norvik::NKArrayModel* people_ = nullptr;
  QTableView* table_ = nullptr;
  QComboBox* months_ = nullptr;
  QTextBrowser* sheet_ = nullptr;
  QTabWidget* tabs_ = nullptr;
  QWidget* payslip_ = nullptr;
  QLabel *detail_ = nullptr, *problem_ = nullptr;
  QSplitter* splitter_ = nullptr;
  bool isChangingRows_ = false;
};

}  // namespace desk
