#include "DeskWindow.h"

#include <QCloseEvent>
#include <QComboBox>
#include <QFileDialog>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QScrollBar>
#include <QSplitter>
#include <QStatusBar>
#include <QTabWidget>
#include <QTableView>
#include <QTextBrowser>
#include <QVBoxLayout>

#include <functional>
#include <utility>

#include "Counted.h"
#include "NorvikCore/Categories/NSObject+Norvik_Binding.h"
#include "NorvikCore/Categories/NSUserDefaults+Norvik.h"
#include "NorvikCore/constants/NKBind.h"
#include "NorvikCore/formatters/NKMonetaryTermDecimalNumberFormatter.h"
#include "NorvikCore/formatters/NKPercentageTermDecimalNumberFormatter.h"
#include "NorvikCore/formatters/NKPlainTextFormatter.h"
#include "NorvikCore/formatters/NKUKSortCodeFormatter.h"
#include "NorvikCore/qt/NKFormatterValidator.h"
#include "NorvikCore/qt/NKLogModel.h"
#include "NorvikCore/qt/NKLogView.h"
#include "NorvikCore/qt/NKPropertyBinding.h"
#include "NorvikCore/qt/QtConversions.h"
#include "Report.h"

namespace desk {

using namespace norvik;

/// Calls a function for each change of what it observes.
class DeskWindow::Watch : public NSObject {
 public:
  void observeValueForKeyPath(const NSString& keyPath, NSObject&, const KeyValueChange&, void*) override {
    changed(keyPath);
  }
  std::function<void(const NSString& keyPath)> changed;
};

namespace {

// Preferences.
const NSString widthKey = "DeskWindowWidth", heightKey = "DeskWindowHeight", peopleWidthKey = "DeskPeopleWidth",
               darkKey = "DeskIsDark";

QLabel* labelNamed(const char* name, const QString& text = {}) {
  auto* const label = new QLabel(text);
  label->setObjectName(QLatin1String(name));
  label->setTextFormat(Qt::PlainText);
  return label;
}

QFrame* makeCard() {
  auto* const card = new QFrame;
  card->setObjectName(QStringLiteral("card"));
  return card;
}

void bind(QObject& receiver, const char* property, NSObject& object, const NSString& keyPath,
          const NKTransformBlock& block = nullptr) {
  nk_bind_toObject_withKeyPath_options_block_reverseBlock(receiver, property, object, keyPath, nullptr, block, nullptr);
}

Value inPounds(const Value& amount) { return amount.isNumber() ? payrun::poundsText(amount.as<Decimal>()) : "\u2013"; }

Value groupedCount(const Value& count) { return grouped(count.isNumber() ? count.as<std::uint64_t>() : 0); }

Value isThere(const Value& object) { return !object.isAbsent() && !object.isNull(); }

Ref<NKPlainTextFormatter> plainText(std::int64_t maxLength) {
  auto formatter = make<NKPlainTextFormatter>();
  formatter->setMaxLength(maxLength);
  return formatter;
}

}  // namespace

DeskWindow::DeskWindow(Ref<Desk> desk) : desk_(std::move(desk)) {
  setWindowTitle(tr("Payroll Desk"));
  auto* const page = new QWidget;
  page->setObjectName(QStringLiteral("page"));
  auto* const layout = new QVBoxLayout(page);
  layout->setContentsMargins(20, 16, 20, 8);
  layout->setSpacing(14);
  layout->addWidget(makeHeader());

  splitter_ = new QSplitter;
  splitter_->setHandleWidth(14);
  splitter_->setChildrenCollapsible(false);
  splitter_->addWidget(makePeople());
  tabs_ = new QTabWidget;
  tabs_->setDocumentMode(true);
  tabs_->addTab(makePayslip(), tr("Payslip"));
  auto* const log = makeCard();
  auto* const logLayout = new QVBoxLayout(log);
  logLayout->setContentsMargins(6, 4, 6, 6);
  auto* const logView = new NKLogView(new NKLogModel);
  logView->setLevel(LOG_LEVEL_INFO);
  logLayout->addWidget(logView);
  auto* const logPage = new QWidget;
  auto* const logPageLayout = new QVBoxLayout(logPage);
  logPageLayout->setContentsMargins(0, 10, 0, 0);
  logPageLayout->addWidget(log);
  tabs_->addTab(logPage, tr("Log"));
  splitter_->addWidget(tabs_);
  splitter_->setStretchFactor(0, 0);
  splitter_->setStretchFactor(1, 1);
  layout->addWidget(splitter_, 1);
  setCentralWidget(page);

  auto* const status = labelNamed("status");
  statusBar()->addWidget(status);
  statusBar()->setSizeGripEnabled(false);
  statusBar()->setContentsMargins(18, 0, 18, 4);
  bind(*status, "text", *desk_, "status");

  QMenu* const file = menuBar()->addMenu(tr("&File"));
  file->addAction(tr("&Open folder\u2026"), QKeySequence::Open, this, &DeskWindow::chooseFolder);
  file->addAction(tr("&Save"), QKeySequence::Save, this, &DeskWindow::save);
  file->addAction(tr("&Print payslip\u2026"), QKeySequence::Print, this, &DeskWindow::choosePrintFolder);
  file->addSeparator();
  file->addAction(tr("&Quit"), QKeySequence::Quit, this, &QWidget::close);
  QMenu* const view = menuBar()->addMenu(tr("&View"));
  view->addAction(tr("&Light"), this, [this] { setAppearance(Appearance::Light); });
  view->addAction(tr("&Dark"), this, [this] { setAppearance(Appearance::Dark); });

  watch_ = make<Watch>();
  watch_->changed = [this](const NSString& keyPath) {
    if (keyPath == "shown") {
      isChangingRows_ = false;
      selectRow();
    } else if (keyPath == "selected") {
      showSelected();
    } else {
      refreshPreview();
    }
  };
  for (const char* path : {"shown", "selected", "selected.name", "selected.sortCode", "selected.account",
                           "selected.bonus", "selected.bonusReason"}) {
    desk_->addObserver(*watch_, path, NSKeyValueObservingOptionNew);
  }
  restore();
  showSelected();
}

DeskWindow::~DeskWindow() = default;

QWidget* DeskWindow::makeFigure(const QString& caption, const NSString& keyPath, const char* name) {
  auto* const card = makeCard();
  auto* const layout = new QVBoxLayout(card);
  layout->setContentsMargins(16, 10, 16, 12);
  layout->setSpacing(2);
  layout->addWidget(labelNamed("caption", caption));
  auto* const figure = labelNamed("figure");
  figure->setAccessibleName(QLatin1String(name));
  figure->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  bind(*figure, "text", *desk_, keyPath,
       keyPath == "totals.people" ? NKTransformBlock(groupedCount) : NKTransformBlock(inPounds));
  layout->addWidget(figure);
  return card;
}

QWidget* DeskWindow::makeHeader() {
  auto* const header = new QWidget;
  auto* const rows = new QVBoxLayout(header);
  rows->setContentsMargins(0, 0, 0, 0);
  rows->setSpacing(14);

  auto* const employer = labelNamed("employer");
  bind(*employer, "text", *desk_, "employer");
  auto* const period = labelNamed("period");
  bind(*period, "text", *desk_, "period");
  auto* const titles = new QVBoxLayout;
  titles->setSpacing(2);
  titles->addWidget(employer);
  titles->addWidget(period);

  months_ = new QComboBox;
  months_->setObjectName(QStringLiteral("months"));
  for (int month = 1; month <= 12; ++month) months_->addItem(tr("Tax month %1").arg(month), month);
  connect(months_, &QComboBox::activated, this, [this] {
    if (!desk_->isOpen()) return;
    if (!mayDiscardEdits()) return months_->setCurrentIndex(desk_->month() - 1);
    desk_->open(desk_->path(), months_->currentData().toInt());
  });
  auto* const print = new QPushButton(tr("Print payslip\u2026"));
  connect(print, &QPushButton::clicked, this, &DeskWindow::choosePrintFolder);
  bind(*print, "enabled", *desk_, "selected", isThere);
  auto* const save = new QPushButton(tr("Save"));
  save->setObjectName(QStringLiteral("primary"));
  connect(save, &QPushButton::clicked, this, &DeskWindow::save);
  bind(*save, "enabled", *desk_, "isEdited");

  auto* const first = new QHBoxLayout;
  first->setSpacing(10);
  first->addLayout(titles);
  first->addStretch();
  for (QWidget* const each :
       {static_cast<QWidget*>(months_), static_cast<QWidget*>(print), static_cast<QWidget*>(save)}) {
    first->addWidget(each, 0, Qt::AlignTop);
  }
  auto* const figures = new QHBoxLayout;
  figures->setSpacing(14);
  figures->addWidget(makeFigure(tr("People"), "totals.people", "total people"));
  figures->addWidget(makeFigure(tr("Gross pay"), "totals.gross", "total gross pay"));
  figures->addWidget(makeFigure(tr("Deductions"), "totals.deductions", "total deductions"));
  figures->addWidget(makeFigure(tr("Net pay"), "totals.net", "total net pay"));
  rows->addLayout(first);
  rows->addLayout(figures);
  return header;
}

QWidget* DeskWindow::makePeople() {
  auto* const card = makeCard();
  card->setMinimumWidth(540);
  auto* const layout = new QVBoxLayout(card);
  layout->setContentsMargins(12, 12, 12, 12);
  layout->setSpacing(8);

  auto* const search = new QLineEdit;
  search->setObjectName(QStringLiteral("search"));
  search->setPlaceholderText(tr("Search by name, number or department"));
  search->setClearButtonEnabled(true);
  connect(search, &QLineEdit::textChanged, this, [this](const QString& words) { desk_->search(nk_toNSString(words)); });
  auto* const count = labelNamed("count");
  bind(*count, "text", *desk_, "shown", [](const Value& shown) -> Value {
    const auto* const people = shown.object<NSArray>();
    return people == nullptr ? NSString() : counted(people->count(), "person", "people");
  });

  people_ = new NKArrayModel(this);
  people_->setColumns({{.keyPath = "name", .title = tr("Name")},
                       {.keyPath = "number", .title = tr("Number")},
                       {.keyPath = "department", .title = tr("Department")},
                       {.keyPath = "net",
                        .title = tr("Net pay (\u00a3)"),
                        .formatter = make<NKMonetaryTermDecimalNumberFormatter>(),
                        .alignment = Qt::AlignRight | Qt::AlignVCenter}});
  people_->setContent(*desk_, "shown");
  table_ = new QTableView;
  table_->setObjectName(QStringLiteral("people"));
  // Connected before the view, because the view makes a neighbour of a removed row the current one, which the user has
  // not chosen.
  connect(people_, &QAbstractItemModel::rowsAboutToBeRemoved, this, [this] { isChangingRows_ = true; });
  table_->setModel(people_);
  table_->setSelectionBehavior(QAbstractItemView::SelectRows);
  table_->setSelectionMode(QAbstractItemView::SingleSelection);
  table_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  table_->setShowGrid(false);
  table_->setAlternatingRowColors(true);
  table_->setWordWrap(false);
  table_->setTabKeyNavigation(false);
  table_->verticalHeader()->hide();
  table_->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  table_->verticalHeader()->setDefaultSectionSize(30);
  QHeaderView& header = *table_->horizontalHeader();
  header.setHighlightSections(false);
  header.setSectionResizeMode(QHeaderView::Fixed);
  header.setSectionResizeMode(0, QHeaderView::Stretch);
  header.resizeSection(1, 96);
  header.resizeSection(2, 164);
  header.resizeSection(3, 108);
  header.setSortIndicator(-1, Qt::AscendingOrder);  // the order of the files, until a title is clicked
  header.setSortIndicatorClearable(true);
  table_->setSortingEnabled(true);
  connect(table_->selectionModel(), &QItemSelectionModel::currentRowChanged, this, [this](const QModelIndex& current) {
    if (isChangingRows_ || !current.isValid()) return;
    const auto person = people_->objectAtRow(current.row()).as<Ref<Person>>();
    if (person != desk_->selected()) desk_->setSelected(person);
  });

  layout->addWidget(search);
  layout->addWidget(count);
  layout->addWidget(table_, 1);
  return card;
}

QLineEdit* DeskWindow::addField(QGridLayout& layout, int row, int column, int width, const QString& caption,
                                const char* key, Ref<NSFormatter> formatter) {
  auto* const edit = new QLineEdit;
  edit->setObjectName(QLatin1String(key));
  auto* const label = labelNamed("field", caption);
  label->setBuddy(edit);
  auto* const field = new NKFormatterValidator(std::move(formatter), *edit);
  nk_bind_toObject_withKeyPath_options(*field, "value", *desk_, "selected." + NSString(key),
                                       NSDictionary::dictionaryWith({{NKBind, "validate"}}));
  connect(field, &NKFormatterValidator::errorTextChanged, problem_, [this, caption](const QString& reason) {
    problem_->setText(reason.isEmpty() ? QString() : caption + QStringLiteral(": ") + reason);
  });
  layout.addWidget(label, row, column, 1, width);
  layout.addWidget(edit, row + 1, column, 1, width);
  return edit;
}

QWidget* DeskWindow::makePayslip() {
  payslip_ = new QWidget;
  auto* const both = new QHBoxLayout(payslip_);
  both->setContentsMargins(0, 10, 0, 0);
  both->setSpacing(14);

  auto* const card = makeCard();
  card->setFixedWidth(312);
  auto* const layout = new QVBoxLayout(card);
  layout->setContentsMargins(18, 16, 18, 16);
  layout->setSpacing(4);
  auto* const person = labelNamed("person");
  person->setWordWrap(true);
  bind(*person, "text", *desk_, "selected.name",
       [](const Value& name) -> Value { return name.isString() ? name : Value("No person selected"); });
  auto* const detail = labelNamed("detail");
  layout->addWidget(person);
  layout->addWidget(detail);
  detail_ = detail;
  layout->addSpacing(10);

  auto* const figures = new QGridLayout;
  figures->setHorizontalSpacing(12);
  figures->setVerticalSpacing(6);
  const struct {
    QString caption;
    const char* keyPath;
    const char* name;
  } rows[] = {{tr("Pay"), "selected.pay", "amount"},
              {tr("Bonus"), "selected.bonus", "amount"},
              {tr("Deductions"), "selected.deductions", "amount"},
              {tr("Net pay"), "selected.net", "figure"}};
  int row = 0;
  for (const auto& each : rows) {
    auto* const amount = labelNamed(each.name);
    amount->setAccessibleName(each.caption);
    amount->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    bind(*amount, "text", *desk_, each.keyPath, inPounds);
    figures->addWidget(labelNamed("field", each.caption), row, 0);
    figures->addWidget(amount, row++, 1);
  }
  layout->addLayout(figures);
  layout->addSpacing(14);

  problem_ = labelNamed("problem");
  problem_->setWordWrap(true);
  auto* const form = new QGridLayout;
  form->setHorizontalSpacing(12);
  form->setVerticalSpacing(4);
  form->setColumnStretch(0, 1);
  form->setColumnStretch(1, 1);
  addField(*form, 0, 0, 2, tr("Name"), "name", plainText(80));
  addField(*form, 3, 0, 1, tr("Sort code"), "sortCode", make<NKUKSortCodeFormatter>());
  addField(*form, 3, 1, 1, tr("Account number"), "account", plainText(8));
  addField(*form, 6, 0, 1, tr("Bonus rate (%)"), "bonusRate", make<NKPercentageTermDecimalNumberFormatter>())
      ->setAlignment(Qt::AlignRight);
  addField(*form, 6, 1, 1, tr("Bonus (\u00a3)"), "bonus", make<NKMonetaryTermDecimalNumberFormatter>())
      ->setAlignment(Qt::AlignRight);
  addField(*form, 9, 0, 2, tr("Reason on the payslip"), "bonusReason", plainText(60));
  for (const int gap : {2, 5, 8}) form->setRowMinimumHeight(gap, 8);
  layout->addLayout(form);
  layout->addSpacing(8);
  layout->addWidget(problem_);
  layout->addStretch();

  sheet_ = new QTextBrowser;
  sheet_->setObjectName(QStringLiteral("sheet"));
  sheet_->setOpenLinks(false);
  sheet_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  sheet_->document()->setDocumentMargin(20);
  both->addWidget(card);
  both->addWidget(sheet_, 1);
  return payslip_;
}

void DeskWindow::showSelected() {
  const Ref<Person> person = desk_->selected();
  detail_->setText(person ? nk_toQString(person->number() + "  \u00b7  " + person->department()) : QString());
  problem_->clear();
  for (QLineEdit* const edit : payslip_->findChildren<QLineEdit*>()) edit->setEnabled(person != nullptr);
  if (desk_->isOpen()) months_->setCurrentIndex(desk_->month() - 1);
  selectRow();
  refreshPreview();
}

void DeskWindow::selectRow() {
  const Ref<Person> person = desk_->selected();
  const int row = person ? people_->rowOfObject(*person) : -1;
  if (row < 0) return table_->selectionModel()->clear();  // a search has not found the selected person
  if (row != table_->currentIndex().row()) table_->setCurrentIndex(people_->index(row, 0));
}

void DeskWindow::refreshPreview() {
  desk_->preview([sheet = QPointer<QTextBrowser>(sheet_)](const QString& html) {
    if (!sheet) return;
    const int place = sheet->verticalScrollBar()->value();
    sheet->setHtml(html);
    sheet->verticalScrollBar()->setValue(place);
  });
}

void DeskWindow::endEditing() {
  if (QWidget* const focused = focusWidget()) focused->clearFocus();
}

void DeskWindow::save() {
  endEditing();
  desk_->save();
}

bool DeskWindow::mayDiscardEdits() {
  endEditing();
  return !desk_->isEdited() ||
         QMessageBox::question(this, tr("Payroll Desk"), tr("Discard the edits that are not saved?"),
                               QMessageBox::Discard | QMessageBox::Cancel) == QMessageBox::Discard;
}

void DeskWindow::chooseFolder() {
  if (!mayDiscardEdits()) return;
  const QString folder =
      QFileDialog::getExistingDirectory(this, tr("Open an employer's folder"), nk_toQString(navLastRootDirectory()));
  if (folder.isEmpty()) return;
  setNavLastRootDirectory(nk_toNSString(folder));
  desk_->open(nk_toNSString(folder).bytes(), months_->currentData().toInt());
}

void DeskWindow::choosePrintFolder() {
  endEditing();
  const QString folder = QFileDialog::getExistingDirectory(this, tr("Print the payslip to a folder"),
                                                           nk_toQString(navLastRootDirectory()));
  if (!folder.isEmpty()) desk_->print(nk_toNSString(folder).bytes());
}

void DeskWindow::setAppearance(Appearance appearance) {
  applyTheme(*qApp, appearance);
  NSUserDefaults::standardUserDefaults().setBool(appearance == Appearance::Dark, darkKey);
}

void DeskWindow::restore() {
  const NSUserDefaults& defaults = NSUserDefaults::standardUserDefaults();
  applyTheme(*qApp, defaults.boolForKey(darkKey) ? Appearance::Dark : Appearance::Light);
  const auto size = [&](const NSString& key, int initial) {
    const std::int64_t stored = defaults.integerForKey(key);
    return 200 <= stored && stored <= 20000 ? static_cast<int>(stored) : initial;
  };
  resize(size(widthKey, 1440), size(heightKey, 880));
  const int left = size(peopleWidthKey, 618);
  splitter_->setSizes({left, width() - left});
}

void DeskWindow::closeEvent(QCloseEvent* event) {
  if (!mayDiscardEdits()) return event->ignore();
  NSUserDefaults& defaults = NSUserDefaults::standardUserDefaults();
  defaults.setInteger(width(), widthKey);
  defaults.setInteger(height(), heightKey);
  defaults.setInteger(splitter_->sizes().value(0), peopleWidthKey);
  event->accept();
}

}  // namespace desk
