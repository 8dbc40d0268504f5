#include "NorvikCore/qt/NKArrayModel.h"

#include "NorvikCore/logging/DDLogMacros.h"
#include "NorvikCore/platform/collections/NSArray.h"
#include "NorvikCore/platform/collections/NSError.h"
#include "NorvikCore/platform/kernel/Mutex.h"
#include "NorvikCore/platform/keyvalue/KeyValueCoding.h"
#include "NorvikCore/platform/keyvalue/KeyValueObserving.h"
#include "NorvikCore/platform/object/Weak.h"
#include "NorvikCore/platform/values/NSException.h"
#include "NorvikCore/qt/QtConversions.h"
#include "NorvikCore/qt/internal/QtLink.h"

#include <QCollator>
#include <QLocale>
#include <QThread>

#include <algorithm>
#include <cstdint>
#include <map>
#include <numeric>
#include <optional>
#include <unordered_map>
#include <utility>

namespace norvik {
namespace {

constexpr int mostRuns = 16;  ///< runs of removed and inserted rows that are reported one by one

/// Elements are compared as rows: objects by identity, other values by equality.
struct RowIdentity {
  std::size_t operator()(const Value& value) const {
    return value.isObject() ? std::hash<const NSObject*>{}(value.object()) : value.hash();
  }
  bool operator()(const Value& a, const Value& b) const {
    return a.isObject() || b.isObject() ? a.object() == b.object() : a == b;
  }
};

/// Rows from `first` to before `end`.
struct Run {
  std::size_t first, end;
};

/// The maximal runs of the numbers below `count` for which `test` is true.
template <class Test>
std::vector<Run> runsOf(std::size_t count, Test test) {
  std::vector<Run> runs;
  for (std::size_t i = 0; i < count; ++i) {
    if (!test(i)) continue;
    if (!runs.empty() && runs.back().end == i) {
      ++runs.back().end;
    } else {
      runs.push_back({i, i + 1});
    }
  }
  return runs;
}

std::vector<Value> elementsIn(const Value& content) {
  if (content.isAbsent() || content.isNull()) return {};
  const auto* const array = content.object<NSArray>();
  if (array == nullptr) NSException::raise(NSInvalidArgumentException, "the content of an NKArrayModel is no array");
  return {array->elements().begin(), array->elements().end()};
}

/// The place of an element in a sorted column.
class SortKey {
 public:
  SortKey(Value value, const QCollator& collator) : value_(std::move(value)) {
    if (value_.isAbsent() || value_.isNull()) {
      kind_ = Kind::Nothing;
    } else if (value_.isDate()) {
      kind_ = Kind::Date;
    } else if (value_.isString() || value_.isObject()) {
      kind_ = Kind::Text;
      text_ = collator.sortKey(nk_toQVariant(value_, QMetaType::fromType<QString>()).toString());
    }
  }
  friend bool operator<(const SortKey& a, const SortKey& b) {
    if (a.kind_ != b.kind_) return a.kind_ < b.kind_;
    if (a.kind_ == Kind::Nothing) return false;
    return a.kind_ == Kind::Text ? *a.text_ < *b.text_ : a.value_.compare(b.value_) == NSOrderedAscending;
  }

 private:
  enum class Kind { Nothing, Number, Date, Text };
  Kind kind_ = Kind::Number;
  Value value_;
  std::optional<QCollatorSortKey> text_;
};

}  // namespace

class NKArrayModel::Rows {
 public:
  class Observer;

  explicit Rows(NKArrayModel& model);
  ~Rows();

  void follow(NSObject& owner, const NSString& keyPath);
  void stopFollowing();
  void reload();
  /// Shows these elements of an array, sorted.
  void change(std::vector<Value> next);
  void sort(int column, Qt::SortOrder order);
  void cellChanged(const NSObject& object, int column);
  /// The value of the cell, and observes the element from now on. Absent if it cannot be read.
  Value read(std::size_t row, std::size_t column);
  void setColumns(std::vector<Column> next);

  NKArrayModel& model;
  std::vector<Column> columns;
  struct Row {
    Value element;
    bool isObserved = false;
  };
  std::vector<Row> rows;

  template <class Visit>
  void forEachRowOf(const NSObject& object, Visit visit);

 private:
  /// The value of the cell; absent if it cannot be read.
  Value valueOf(const Value& element, std::size_t column);
  [[nodiscard]] std::vector<Value> sorted();
  /// Changes the rows to these, and reports the difference.
  void show(const std::vector<Value>& next);
  void observe(Row& row);
  void stopObserving(Row& row);
  void removeRun(Run run);
  void insertRun(std::size_t at, std::size_t count, const std::vector<Value>& next, std::size_t from);
  /// Row i becomes the present row order[i].
  void reorder(const std::vector<std::size_t>& order);

  std::vector<Value> array_;  ///< in its own order
  int sortColumn_ = -1;
  Qt::SortOrder sortOrder_ = Qt::AscendingOrder;
  const Ref<Observer> observer_;
  Weak<NSObject> owner_;
  NSString keyPath_;
  std::vector<std::pair<const NSObject*, int>> rowsByObject_;  ///< sorted; empty if it must be built
  std::unordered_map<const NSObject*, int> observedRows_;      ///< an element is observed once, in how many rows it is
  std::vector<bool> isReported_;                               ///< the columns of which an unreadable cell was logged
};

/// Receives changes on any thread.
class NKArrayModel::Rows::Observer : public NSObject {
 public:
  Observer(Rows& rows, NKArrayModel& model) : rows_(&rows), thread_(model.thread()) {}

  /// On the model's thread.
  void close() {
    link_.close();
    rows_ = nullptr;
  }

  static void* contentContext() { return nullptr; }
  static void* columnContext(std::size_t column) {
    return reinterpret_cast<void*>(static_cast<std::uintptr_t>(column + 1));
  }

  void observeValueForKeyPath(const NSString&, NSObject& object, const KeyValueChange& change, void* context) override {
    const bool isOnModelThread = QThread::currentThread() == thread_;
    if (isOnModelThread && rows_ == nullptr) return;
    if (context == contentContext()) {
      std::vector<Value> next = elementsIn(change.newValue());
      {
        const MutexLock lock(mutex_);
        next_ = isOnModelThread ? std::nullopt : std::optional(next);
      }
      if (isOnModelThread) return rows_->change(std::move(next));
    } else {
      const int column = static_cast<int>(reinterpret_cast<std::uintptr_t>(context)) - 1;
      if (isOnModelThread) return rows_->cellChanged(object, column);
      const MutexLock lock(mutex_);
      cells_.emplace(std::pair(&object, column), ref(object));
    }
    {
      const MutexLock lock(mutex_);
      if (std::exchange(isPosted_, true)) return;
    }
    link_.post([self = ref(*this)] { self->deliver(); });
  }

 private:
  using Cells = std::map<std::pair<NSObject*, int>, Ref<NSObject>>;

  void deliver() {
    std::optional<std::vector<Value>> next;
    Cells cells;
    {
      const MutexLock lock(mutex_);
      isPosted_ = false;
      next.swap(next_);
      cells.swap(cells_);
    }
    if (next && rows_ != nullptr) rows_->change(std::move(*next));
    for (const auto& [cell, object] : cells) {
      if (rows_ != nullptr) rows_->cellChanged(*object, cell.second);
    }
  }

  Rows* rows_;
  QThread* const thread_;
  const detail::QtLink link_;
  Mutex mutex_;
  // What changed on other threads and was not delivered yet.
  std::optional<std::vector<Value>> next_ NK_GUARDED_BY(mutex_);
  Cells cells_ NK_GUARDED_BY(mutex_);
  bool isPosted_ NK_GUARDED_BY(mutex_) = false;
};

NKArrayModel::Rows::Rows(NKArrayModel& owner) : model(owner), observer_(make<Observer>(*this, owner)) {}

NKArrayModel::Rows::~Rows() {
  observer_->close();
  stopFollowing();
  for (Row& row : rows) stopObserving(row);
}

void NKArrayModel::Rows::follow(NSObject& owner, const NSString& keyPath) {
  owner.addObserver(*observer_, keyPath, NSKeyValueObservingOptionNew, Observer::contentContext());
  owner_ = Weak<NSObject>(&owner);
  keyPath_ = keyPath;
  try {
    reload();
  } catch (const NSException&) {
    stopFollowing();
    throw;
  }
}

void NKArrayModel::Rows::stopFollowing() {
  if (const Ref<NSObject> owner = owner_.lock()) {
    owner->removeObserver(*observer_, keyPath_, Observer::contentContext());
  }
  owner_ = nullptr;
}

void NKArrayModel::Rows::reload() {
  if (const Ref<NSObject> owner = owner_.lock()) change(elementsIn(owner->valueForKeyPath(keyPath_)));
}

void NKArrayModel::Rows::observe(Row& row) {
  NSObject* const object = row.element.object();
  if (object == nullptr || row.isObserved) return;
  row.isObserved = true;
  if (++observedRows_[object] > 1) return;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (columns[i].keyPath == "self") continue;
    try {
      object->addObserver(*observer_, columns[i].keyPath, {}, Observer::columnContext(i));
    } catch (const NSException&) {
      // An element without that key; reading the cell reports it.
    }
  }
}

void NKArrayModel::Rows::stopObserving(Row& row) {
  if (!std::exchange(row.isObserved, false)) return;
  const auto count = observedRows_.find(row.element.object());
  if (--count->second > 0) return;
  observedRows_.erase(count);
  for (std::size_t i = 0; i < columns.size(); ++i) {
    if (columns[i].keyPath == "self") continue;
    try {
      row.element.object()->removeObserver(*observer_, columns[i].keyPath, Observer::columnContext(i));
    } catch (const NSException&) {
      // It could not be observed either.
    }
  }
}

void NKArrayModel::Rows::setColumns(std::vector<Column> next) {
  for (Row& row : rows) stopObserving(row);
  columns = std::move(next);
  isReported_.assign(columns.size(), false);
  sortColumn_ = -1;
  rows.clear();
  for (const Value& element : array_) rows.push_back({element});
  rowsByObject_.clear();
}

Value NKArrayModel::Rows::read(std::size_t row, std::size_t column) {
  observe(rows[row]);
  return valueOf(rows[row].element, column);
}

Value NKArrayModel::Rows::valueOf(const Value& element, std::size_t column) {
  const NSString& keyPath = columns[column].keyPath;
  try {
    return keyPath == "self" ? element : valueForKeyPath(element, keyPath);
  } catch (const NSException& exception) {  // must not pass through Qt's painting
    if (!isReported_[column]) {
      isReported_[column] = true;
      DDLogError("The cells of the column \"%@\" cannot be read: %@", keyPath, exception.reason());
    }
    return {};
  }
}

template <class Visit>
void NKArrayModel::Rows::forEachRowOf(const NSObject& object, Visit visit) {
  if (rowsByObject_.empty()) {
    for (std::size_t i = 0; i < rows.size(); ++i) {
      if (const NSObject* const each = rows[i].element.object()) rowsByObject_.emplace_back(each, static_cast<int>(i));
    }
    std::sort(rowsByObject_.begin(), rowsByObject_.end());
  }
  for (auto it = std::lower_bound(rowsByObject_.begin(), rowsByObject_.end(), std::pair(&object, 0));
       it != rowsByObject_.end() && it->first == &object; ++it) {
    if (!visit(it->second)) return;
  }
}

void NKArrayModel::Rows::cellChanged(const NSObject& object, int column) {
  std::vector<int> changed;
  forEachRowOf(object, [&](int row) {
    changed.push_back(row);
    return true;
  });
  for (const int row : changed) {
    const QModelIndex cell = model.index(row, column);
    if (cell.isValid()) Q_EMIT model.dataChanged(cell, cell);
  }
}

void NKArrayModel::Rows::change(std::vector<Value> next) {
  array_ = std::move(next);
  show(sorted());
}

void NKArrayModel::Rows::sort(int column, Qt::SortOrder order) {
  sortColumn_ = column < model.columnCount() ? column : -1;
  sortOrder_ = order;
  show(sorted());
}

std::vector<Value> NKArrayModel::Rows::sorted() {
  if (sortColumn_ < 0) return array_;
  const QLocale locale;
  QCollator collator(locale.language() == QLocale::C ? QLocale(QLocale::English) : locale);  // C knows no numbers
  collator.setNumericMode(true);
  collator.setCaseSensitivity(Qt::CaseInsensitive);
  std::vector<SortKey> keys;
  keys.reserve(array_.size());
  for (const Value& element : array_) {
    keys.emplace_back(valueOf(element, static_cast<std::size_t>(sortColumn_)), collator);
  }
  std::vector<std::size_t> order(array_.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    return sortOrder_ == Qt::AscendingOrder ? keys[a] < keys[b] : keys[b] < keys[a];
  });
  std::vector<Value> result;
  result.reserve(order.size());
  for (const std::size_t i : order) result.push_back(array_[i]);
  return result;
}

void NKArrayModel::Rows::show(const std::vector<Value>& next) {
  const RowIdentity same;
  const std::size_t shorter = std::min(rows.size(), next.size());
  std::size_t head = 0, tail = 0;
  while (head < shorter && same(rows[head].element, next[head])) ++head;
  while (tail < shorter - head && same(rows[rows.size() - 1 - tail].element, next[next.size() - 1 - tail])) ++tail;

  // Each element of `next` takes the first equal row that no element before it has taken.
  const std::size_t oldCount = rows.size(), newCount = next.size();
  constexpr std::size_t none = ~std::size_t{0};
  std::unordered_map<Value, std::vector<std::size_t>, RowIdentity, RowIdentity> oldRows;
  for (std::size_t i = oldCount - tail; i-- > head;) oldRows[rows[i].element].push_back(i);
  std::vector<std::size_t> rowOf(newCount, none);
  std::vector<bool> isKept(oldCount, false);
  bool isInOrder = true;
  std::size_t leastNext = 0;
  for (std::size_t i = 0; i < newCount; ++i) {
    if (i < head) {
      rowOf[i] = i;
    } else if (i >= newCount - tail) {
      rowOf[i] = i - newCount + oldCount;
    } else if (const auto it = oldRows.find(next[i]); it != oldRows.end() && !it->second.empty()) {
      rowOf[i] = it->second.back();
      it->second.pop_back();
    } else {
      continue;
    }
    isKept[rowOf[i]] = true;
    isInOrder = isInOrder && rowOf[i] >= leastNext;
    leastNext = rowOf[i] + 1;
  }

  const std::vector<Run> removed = runsOf(oldCount, [&](std::size_t i) { return !isKept[i]; });
  const std::vector<Run> inserted = runsOf(newCount, [&](std::size_t i) { return rowOf[i] == none; });
  if (isInOrder && removed.size() + inserted.size() <= mostRuns) {
    for (auto run = removed.rbegin(); run != removed.rend(); ++run) removeRun(*run);
    for (const Run& run : inserted) insertRun(run.first, run.end - run.first, next, run.first);
    return;
  }

  // The kept rows in their new order, then the removed ones; without those; with the inserted ones at the end; in
  // order.
  std::vector<std::size_t> order;
  for (const std::size_t row : rowOf) {
    if (row != none) order.push_back(row);
  }
  const std::size_t keptCount = order.size();
  for (std::size_t i = 0; i < oldCount; ++i) {
    if (!isKept[i]) order.push_back(i);
  }
  reorder(order);
  if (keptCount < oldCount) removeRun({keptCount, oldCount});
  if (keptCount == newCount) return;
  std::vector<Value> added;
  order.clear();
  std::size_t nextKept = 0;
  for (std::size_t i = 0; i < newCount; ++i) {
    if (rowOf[i] != none) {
      order.push_back(nextKept++);
    } else {
      order.push_back(keptCount + added.size());
      added.push_back(next[i]);
    }
  }
  insertRun(keptCount, added.size(), added, 0);
  reorder(order);
}

void NKArrayModel::Rows::removeRun(Run run) {
  model.beginRemoveRows({}, static_cast<int>(run.first), static_cast<int>(run.end) - 1);
  const auto first = rows.begin() + static_cast<std::ptrdiff_t>(run.first);
  const auto end = rows.begin() + static_cast<std::ptrdiff_t>(run.end);
  for (auto row = first; row != end; ++row) stopObserving(*row);
  rows.erase(first, end);
  rowsByObject_.clear();
  model.endRemoveRows();
}

void NKArrayModel::Rows::insertRun(std::size_t at, std::size_t count, const std::vector<Value>& next,
                                   std::size_t from) {
  model.beginInsertRows({}, static_cast<int>(at), static_cast<int>(at + count) - 1);
  std::vector<Row> added;
  added.reserve(count);
  for (std::size_t i = 0; i < count; ++i) added.push_back({next[from + i]});
  rows.insert(rows.begin() + static_cast<std::ptrdiff_t>(at), std::make_move_iterator(added.begin()),
              std::make_move_iterator(added.end()));
  rowsByObject_.clear();
  model.endInsertRows();
}

void NKArrayModel::Rows::reorder(const std::vector<std::size_t>& order) {
  if (std::is_sorted(order.begin(), order.end())) return;
  Q_EMIT model.layoutAboutToBeChanged();
  std::vector<Row> moved;
  moved.reserve(rows.size());
  std::vector<int> newRowOf(rows.size());
  for (std::size_t i = 0; i < order.size(); ++i) {
    moved.push_back(std::move(rows[order[i]]));
    newRowOf[order[i]] = static_cast<int>(i);
  }
  rows.swap(moved);
  rowsByObject_.clear();
  const QModelIndexList before = model.persistentIndexList();
  QModelIndexList after;
  after.reserve(before.size());
  for (const QModelIndex& index : before) {
    after.push_back(model.index(newRowOf[static_cast<std::size_t>(index.row())], index.column()));
  }
  model.changePersistentIndexList(before, after);
  Q_EMIT model.layoutChanged();
}

NKArrayModel::NKArrayModel(QObject* parent) : QAbstractTableModel(parent), rows_(std::make_unique<Rows>(*this)) {}

NKArrayModel::~NKArrayModel() = default;

void NKArrayModel::setColumns(std::vector<Column> columns) {
  beginResetModel();
  rows_->setColumns(std::move(columns));
  endResetModel();
}

const std::vector<NKArrayModel::Column>& NKArrayModel::columns() const noexcept { return rows_->columns; }

void NKArrayModel::setContent(NSObject& owner, const NSString& keyPath) {
  rows_->stopFollowing();
  try {
    rows_->follow(owner, keyPath);
  } catch (const NSException&) {
    rows_->change({});
    throw;
  }
}

void NKArrayModel::removeContent() {
  rows_->stopFollowing();
  rows_->change({});
}

void NKArrayModel::reload() { rows_->reload(); }

const Value& NKArrayModel::objectAtRow(int row) const {
  if (row < 0 || row >= rowCount()) NSException::raise(NSRangeException, "no such row of the NKArrayModel");
  return rows_->rows[static_cast<std::size_t>(row)].element;
}

int NKArrayModel::rowOfObject(const NSObject& object) const {
  int found = -1;
  rows_->forEachRowOf(object, [&](int row) {
    found = row;
    return false;
  });
  return found;
}

int NKArrayModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(rows_->rows.size());
}

int NKArrayModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(rows_->columns.size());
}

QVariant NKArrayModel::data(const QModelIndex& index, int role) const {
  if (!hasIndex(index.row(), index.column(), index.parent())) return {};
  const auto row = static_cast<std::size_t>(index.row()), column = static_cast<std::size_t>(index.column());
  const Column& shown = rows_->columns[column];
  switch (role) {
    case Qt::DisplayRole: {
      const Value value = rows_->read(row, column);
      if (shown.formatter) {
        if (const auto text = shown.formatter->stringForObjectValue(value)) return nk_toQString(*text);
      }
      return nk_toQVariant(value, QMetaType::fromType<QString>());
    }
    case Qt::EditRole:
      return nk_toQVariant(rows_->read(row, column));
    case Qt::TextAlignmentRole:
      return QVariant::fromValue(shown.alignment);
    case objectRole:
      return QVariant::fromValue(rows_->rows[row].element);
    default:
      return {};
  }
}

bool NKArrayModel::setData(const QModelIndex& index, const QVariant& value, int role) {
  if (role != Qt::EditRole || !(flags(index) & Qt::ItemIsEditable)) return false;
  const Column column = rows_->columns[static_cast<std::size_t>(index.column())];
  const Value element = rows_->rows[static_cast<std::size_t>(index.row())].element;
  const QPersistentModelIndex edited = index;
  NSString reason;
  try {
    Value read = nk_toValue(value);
    Ref<NSError> error;
    if (column.formatter && read.isString() &&
        !column.formatter->getObjectValue_forString_errorDescription(read, *Value(read).string(), &reason)) {
      // refused, with the reason
    } else if (!element.object()->validateValue_forKeyPath_error(read, column.keyPath, &error)) {
      reason = error ? error->localizedDescription() : "The value is not accepted.";
    } else {
      element.object()->setValue_forKeyPath(read, column.keyPath);
      return true;
    }
  } catch (const NSException& exception) {
    reason = exception.reason();
  }
  Q_EMIT editRefused(edited, nk_toQString(reason));
  return false;
}

QVariant NKArrayModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || section < 0 || section >= columnCount()) return {};
  const Column& column = rows_->columns[static_cast<std::size_t>(section)];
  if (role == Qt::DisplayRole) return column.title;
  if (role == Qt::TextAlignmentRole) return QVariant::fromValue(column.alignment);
  return {};
}

void NKArrayModel::sort(int column, Qt::SortOrder order) { rows_->sort(column, order); }

Qt::ItemFlags NKArrayModel::flags(const QModelIndex& index) const {
  if (!hasIndex(index.row(), index.column(), index.parent())) return Qt::NoItemFlags;
  Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
  const bool isObject = rows_->rows[static_cast<std::size_t>(index.row())].element.isObject();
  if (isObject && rows_->columns[static_cast<std::size_t>(index.column())].isEditable) flags |= Qt::ItemIsEditable;
  return flags;
}

}  // namespace norvik
