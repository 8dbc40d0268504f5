#include "NorvikCore/qt/NKLogView.h"

#include "NorvikCore/qt/NKLogModel.h"

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QStyledItemDelegate>
#include <QTableView>
#include <QVBoxLayout>

#include <algorithm>

namespace norvik {
namespace {

/// Errors and warnings in a colour that is readable on the palette's background.
class LevelColours : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

 protected:
  void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override {
    QStyledItemDelegate::initStyleOption(option, index);
    const int flag = index.data(NKLogModel::levelRole).toInt();
    const bool isDark = option->palette.color(QPalette::Base).lightness() < 128;
    QColor colour;
    if (flag == LOG_FLAG_ERROR) {
      colour = isDark ? QColor(0xff, 0x8a, 0x80) : QColor(0xb3, 0x26, 0x1e);
    } else if (flag == LOG_FLAG_WARN) {
      colour = isDark ? QColor(0xff, 0xcc, 0x66) : QColor(0x8a, 0x5a, 0x00);
    } else if (index.column() == NKLogModel::TextColumn) {
      return;
    } else {
      colour = option->palette.color(QPalette::PlaceholderText);
    }
    option->palette.setColor(QPalette::Text, colour);
  }
};

}  // namespace

NKLogView::NKLogView(NKLogModel* model, QWidget* parent)
    : QWidget(parent), model_(*model), level_(new QComboBox(this)), messages_(new QTableView(this)) {
  model->setParent(this);
  level_->setObjectName(QStringLiteral("level"));
  level_->addItem(tr("Errors"), LOG_LEVEL_ERROR);
  level_->addItem(tr("Warnings and errors"), LOG_LEVEL_WARN);
  level_->addItem(tr("Information"), LOG_LEVEL_INFO);
  level_->addItem(tr("Debugging"), LOG_LEVEL_DEBUG);
  level_->addItem(tr("Everything"), LOG_LEVEL_VERBOSE);
  level_->setCurrentIndex(level_->findData(model->level()));
  connect(level_, &QComboBox::currentIndexChanged, this, [this] { model_.setLevel(level()); });
  auto* const label = new QLabel(tr("&Show:"), this);
  label->setBuddy(level_);
  auto* const clear = new QPushButton(tr("Clear"), this);
  clear->setObjectName(QStringLiteral("clear"));
  connect(clear, &QPushButton::clicked, model, &NKLogModel::clear);

  messages_->setObjectName(QStringLiteral("messages"));
  messages_->setItemDelegate(new LevelColours(messages_));
  messages_->setModel(model);
  messages_->setSelectionBehavior(QAbstractItemView::SelectRows);
  messages_->setShowGrid(false);
  messages_->setWordWrap(false);
  messages_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  messages_->verticalHeader()->hide();
  messages_->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  QHeaderView& header = *messages_->horizontalHeader();
  header.setHighlightSections(false);
  header.setStretchLastSection(true);

  connect(model, &QAbstractItemModel::rowsAboutToBeInserted, this, [this] {
    const QScrollBar& bar = *messages_->verticalScrollBar();
    isAtEnd_ = bar.value() == bar.maximum();
  });
  connect(model, &QAbstractItemModel::rowsInserted, this, [this] {
    if (isAtEnd_) messages_->scrollToBottom();
  });
  connect(model, &QAbstractItemModel::modelReset, messages_, &QTableView::scrollToBottom);
  messages_->installEventFilter(this);

  auto* const bar = new QHBoxLayout;
  bar->addWidget(label);
  bar->addWidget(level_);
  bar->addStretch();
  bar->addWidget(clear);
  auto* const layout = new QVBoxLayout(this);
  layout->addLayout(bar);
  layout->addWidget(messages_);
}

NKLogView::~NKLogView() = default;

void NKLogView::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) fitColumns();
}

void NKLogView::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  fitColumns();
}

void NKLogView::fitColumns() {
  constexpr int margins = 36;  // with the padding that a style sheet may add
  const QFontMetrics metrics(messages_->font());
  const struct {
    int column;
    QString widest;
  } columns[] = {{NKLogModel::TimeColumn, QStringLiteral("00:00:00.000")},
                 {NKLogModel::LevelColumn, QStringLiteral("Warning")},
                 {NKLogModel::QueueColumn, QStringLiteral("com.norvik.main-thread")}};
  for (const auto& each : columns) {
    messages_->horizontalHeader()->resizeSection(each.column, metrics.horizontalAdvance(each.widest) + margins);
  }
  messages_->verticalHeader()->setDefaultSectionSize(metrics.height() + 6);
}

bool NKLogView::eventFilter(QObject* watched, QEvent* event) {
  // Without this the table copies one cell.
  if (event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->matches(QKeySequence::Copy)) {
    QApplication::clipboard()->setText(selectedText());
    return true;
  }
  return QWidget::eventFilter(watched, event);
}

LogLevel NKLogView::level() const { return static_cast<LogLevel>(level_->currentData().toInt()); }

void NKLogView::setLevel(LogLevel level) {
  // A level that is none of the choices is shown as the next one that admits it.
  for (int i = 0; i < level_->count(); ++i) {
    if (level_->itemData(i).toInt() >= level) return level_->setCurrentIndex(i);
  }
}

QString NKLogView::selectedText() const {
  QModelIndexList rows = messages_->selectionModel()->selectedRows();
  std::sort(rows.begin(), rows.end());
  QString text;
  for (const QModelIndex& row : rows) {
    for (int column = 0; column < NKLogModel::ColumnCount; ++column) {
      if (column > 0) text += QLatin1Char('\t');
      text += row.siblingAtColumn(column).data().toString();
    }
    text += QLatin1Char('\n');
  }
  return text;
}

}  // namespace norvik
