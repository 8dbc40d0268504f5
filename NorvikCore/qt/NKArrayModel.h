// NorvikCore/qt/NKArrayModel.h - an array of a model as a table for Qt's views: a row for each element, a key path for
// each column.
//
//   auto* rows = new NKArrayModel(view);
//   rows->setColumns({{.keyPath = "name", .title = "Name"},
//                     {.keyPath = "grossPay", .title = "Gross pay", .formatter = amounts,
//                      .alignment = Qt::AlignRight | Qt::AlignVCenter, .isEditable = true}});
//   rows->setContent(*payRun, "payslips");           // follows payRun->setPayslips(...)
//   view->setModel(rows);
//   payRun->payslips()->objectAtIndex(3)...setGrossPay(1250_dec);          // the view shows it
//
// Rows follow the array's property: when it is set, the model compares the elements by identity and reports insertions,
// removals and moves, so that selections and persistent indexes stay with their elements. A few of them are reported
// one run at a time. More than sixteen runs are reported as one change of the layout, one removal or insertion at the
// end, and another change of the layout. Changing an NSMutableArray in place notifies no observer, so call reload().
//
// Cells follow the key paths. An element is observed from the first time that one of its cells is read, so that setting
// a large array costs nothing for rows that no view has shown. An element that is no object is not observed; the key
// path "self" shows it.
//
// Roles:     Qt::DisplayRole is the formatter's text, or nk_toQVariant() of the value as text. Qt::EditRole is the
//            value by nk_toQVariant(), Qt::TextAlignmentRole the column's alignment, objectRole the element as a
//            norvik::Value.
// Editing:   a text is read by the column's formatter, the value is validated by the element, and set. If the
//            formatter, the validation or the setter (by an NSException) refuses it, nothing is set, and editRefused()
//            has the reason.
// Sorting:   sort(), which QTableView::setSortingEnabled(true) calls. Do not sort by a QSortFilterProxyModel above this
//            model: it compares Decimal values as texts, so that 100 comes before 20.
// Threads:   confined to the model's thread. The array's property may be set on any thread. The elements of the new
//            array are copied on that thread and compared on the model's thread, in its event loop. A cell that another
//            thread changes is read later on the model's thread, so its property must allow that (NK_ATOMIC_PROPERTY).
// Ownership: retains the elements and the formatters, but not the owner of the array. When the owner is destroyed, the
//            rows stay.
// Cost:      a change of the array is linear in its rows, and n log n if the model is sorted. A change of a cell takes
//            the logarithm of the rows, after the first one that follows a change of the array.
#pragma once  // include time: the base is a Qt model; columns hold texts

#include "NorvikCore/platform/export.h"

#ifndef Q_MOC_RUN  // moc of Qt 6.4 cannot read <concepts>
#include "NorvikCore/platform/foundation/NSFormatter.h"
#include "NorvikCore/platform/object/Value.h"
#endif

#include <QAbstractTableModel>
#include <QString>

#include <memory>
#include <vector>

namespace norvik {

class NK_EXPORT NKArrayModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  /// What one column shows of each element, and how.
  struct Column {
    NSString keyPath;
    QString title;
    Ref<NSFormatter> formatter = nullptr;
    Qt::Alignment alignment = Qt::AlignLeft | Qt::AlignVCenter;
    bool isEditable = false;
  };
  static constexpr int objectRole = Qt::UserRole;

  explicit NKArrayModel(QObject* parent = nullptr);
  ~NKArrayModel() override;

  /// Resets the model. The rows are in the order of the array again.
  void setColumns(std::vector<Column> columns);
  [[nodiscard]] const std::vector<Column>& columns() const noexcept;

  /// Shows the array at the end of the key path and follows it. An absent array has no rows. An unknown key path, and a
  /// value there that is not an array, raise; then the model has no content.
  void setContent(NSObject& owner, const NSString& keyPath);
  /// Removes the rows and follows nothing any more.
  void removeContent();
  /// Compares the rows with the array again.
  void reload();

  /// The element of that row; NSRangeException beyond the end.
  [[nodiscard]] const Value& objectAtRow(int row) const;
  /// -1 if it is no element.
  [[nodiscard]] int rowOfObject(const NSObject& object) const;

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
  [[nodiscard]] bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;
  [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                    int role = Qt::DisplayRole) const override;
  [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;
  /// Sorts the rows by the values of that column, and sorts each later array; column -1 restores the array's order.
  /// Rows without a value come first in ascending order, then numbers, dates and texts; equal rows keep the array's
  /// order. Texts are compared as readers of the default QLocale expect (of English in the C locale): "A9" before
  /// "A10", capitals beside small letters. A cell that changes later does not move its row, so that an edited row stays
  /// under the cursor.
  void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

 Q_SIGNALS:
  void editRefused(const QModelIndex& index, const QString& errorText);

 private:
  class Rows;
  const std::unique_ptr<Rows> rows_;
};

}  // namespace norvik
