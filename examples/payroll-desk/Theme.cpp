#include "Theme.h"

#include <QFont>
#include <QImage>
#include <QPainter>
#include <QPalette>
#include <QStyleFactory>
#include <QTemporaryDir>

namespace desk {

namespace {

// %1 to %10 are the colours and %11 the arrow, in the order of applyTheme().
constexpr const char* styleSheet = R"(
* { outline: none; }
QMainWindow, QWidget#page { background: %1; }
QToolTip { background: %2; color: %3; border: 1px solid %5; padding: 4px; }
QFrame#card { background: %2; border: 1px solid %5; border-radius: 8px; }
QLabel { background: transparent; }
QLabel#employer { font-size: 17pt; font-weight: 600; color: %3; }
QLabel#period, QLabel#count, QLabel#detail { color: %4; }
QLabel#caption { color: %4; font-size: 9pt; }
QLabel#figure { font-size: 15pt; font-weight: 600; color: %3; }
QLabel#person { font-size: 14pt; font-weight: 600; color: %3; }
QLabel#problem { color: %9; }
QLabel#field { color: %4; }
QLineEdit, QComboBox { background: %2; color: %3; border: 1px solid %5; border-radius: 5px; padding: 5px 8px;
  min-height: 18px; selection-background-color: %6; selection-color: %7; }
QLineEdit:focus, QComboBox:focus { border: 1px solid %6; }
QLineEdit[invalid="true"], QLineEdit[invalid="true"]:focus { border: 1px solid %9; }
QLineEdit:disabled { color: %4; background: %1; }
QComboBox::drop-down { border: none; width: 26px; }
QComboBox::down-arrow { image: url(%11); width: 12px; height: 12px; }
QComboBox QAbstractItemView { background: %2; color: %3; border: 1px solid %5; selection-background-color: %8;
  selection-color: %3; }
QPushButton { background: %2; color: %3; border: 1px solid %5; border-radius: 5px; padding: 6px 14px; }
QPushButton:hover { border-color: %6; }
QPushButton:focus { border-color: %6; }
QPushButton:disabled { color: %4; background: %1; }
QPushButton#primary { background: %6; color: %7; border-color: %6; font-weight: 600; }
QPushButton#primary:disabled { background: %1; color: %4; border-color: %5; }
QTableView { background: %2; color: %3; border: none; selection-background-color: %8; selection-color: %3;
  alternate-background-color: %10; }
QTableView::item { padding: 0 8px; border: none; }
QTableView::item:selected { background: %8; color: %3; }
QHeaderView { background: %2; }
QHeaderView::section { background: %2; color: %4; border: none; border-bottom: 1px solid %5; padding: 6px 11px;
  font-size: 9pt; }
QTabWidget::pane { border: none; }
QTabBar { background: transparent; qproperty-drawBase: 0; }
QTabBar::tab { background: transparent; color: %4; padding: 7px 4px; margin-right: 18px;
  border-bottom: 2px solid transparent; }
QTabBar::tab:selected { color: %3; border-bottom: 2px solid %6; }
QTabBar::tab:focus { color: %6; }
QScrollBar:vertical { background: transparent; width: 12px; margin: 0; }
QScrollBar::handle:vertical { background: %5; border-radius: 4px; min-height: 32px; margin: 2px; }
QScrollBar:horizontal { background: transparent; height: 12px; margin: 0; }
QScrollBar::handle:horizontal { background: %5; border-radius: 4px; min-width: 32px; margin: 2px; }
QScrollBar::add-line, QScrollBar::sub-line, QScrollBar::add-page, QScrollBar::sub-page { background: none; border: none;
  width: 0; height: 0; }
QSplitter::handle { background: transparent; }
QTextBrowser { background: #ffffff; border: 1px solid %5; border-radius: 8px; }
QMenuBar { background: %1; color: %3; padding: 2px 12px; }
QMenuBar::item { background: transparent; padding: 5px 10px; border-radius: 4px; }
QMenuBar::item:selected { background: %8; }
QMenu { background: %2; color: %3; border: 1px solid %5; padding: 4px; }
QMenu::item { padding: 6px 28px 6px 14px; border-radius: 4px; }
QMenu::item:selected { background: %8; }
QMenu::separator { height: 1px; background: %5; margin: 4px 8px; }
QLabel#status { color: %4; }
QTextBrowser QScrollBar::handle:vertical { background: #c9ced6; }
QStatusBar { background: %1; color: %4; }
QStatusBar::item { border: none; }
)";

/// The file of an arrow of that colour, and its @2x file; a style sheet takes pictures only from files. Empty if no
/// file can be written; then there is no arrow.
QString arrowFile(const QColor& colour) {
  static const QTemporaryDir folder;
  const QString name = folder.filePath(QStringLiteral("arrow-") + colour.name().mid(1));
  for (const int scale : {1, 2}) {
    QImage image(12 * scale, 12 * scale, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(scale, scale);
    painter.setPen(QPen(colour, 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPolyline(QPolygonF({{2.5, 4.5}, {6, 8}, {9.5, 4.5}}));
    painter.end();
    if (!image.save(name + (scale == 2 ? QStringLiteral("@2x.png") : QStringLiteral(".png")))) return {};
  }
  return name + QStringLiteral(".png");
}

}  // namespace

Colours coloursOf(Appearance appearance) {
  if (appearance == Appearance::Dark) {
    return {"#14181e", "#1d232b", "#e7ebf0", "#9aa6b4", "#343d49",
            "#7ab0ff", "#0d1420", "#29415f", "#ff8a80", "#20272f"};
  }
  return {"#f3f5f8", "#ffffff", "#1b2430", "#5c6877", "#d5dce4", "#1d5fbf", "#ffffff", "#dbe8fb", "#b3261e", "#f8fafc"};
}

void applyTheme(QApplication& application, Appearance appearance) {
  const Colours colours = coloursOf(appearance);
  application.setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
  QFont font = application.font();
  font.setFamily(QStringLiteral("DejaVu Sans"));
  font.setPointSize(10);
  application.setFont(font);
  QPalette palette;
  palette.setColor(QPalette::Window, colours.window);
  palette.setColor(QPalette::WindowText, colours.text);
  palette.setColor(QPalette::Base, colours.card);
  palette.setColor(QPalette::AlternateBase, colours.stripe);
  palette.setColor(QPalette::Text, colours.text);
  palette.setColor(QPalette::Button, colours.card);
  palette.setColor(QPalette::ButtonText, colours.text);
  palette.setColor(QPalette::Highlight, colours.selection);
  palette.setColor(QPalette::HighlightedText, colours.text);
  palette.setColor(QPalette::PlaceholderText, colours.muted);
  palette.setColor(QPalette::ToolTipBase, colours.card);
  palette.setColor(QPalette::ToolTipText, colours.text);
  palette.setColor(QPalette::Link, colours.accent);
  application.setPalette(palette);
  QString sheet = QString::fromUtf8(styleSheet);
  const QColor inOrder[] = {colours.window, colours.card,     colours.text,      colours.muted, colours.line,
                            colours.accent, colours.onAccent, colours.selection, colours.error, colours.stripe};
  for (const QColor& colour : inOrder) sheet = sheet.arg(colour.name());
  sheet = sheet.arg(arrowFile(colours.muted));
  application.setStyleSheet(sheet);
}

}  // namespace desk
