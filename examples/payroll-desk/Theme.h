// examples/payroll-desk/Theme.h - the colours and the fonts of the window, light and dark.
#pragma once

#include <QApplication>
#include <QColor>

namespace desk {

enum class Appearance { Light, Dark };

struct Colours {
  QColor window, card, text, muted, line, accent, onAccent, selection, error, stripe;
};

Colours coloursOf(Appearance appearance);

/// Sets the style, the palette and the style sheet of all windows.
void applyTheme(QApplication& application, Appearance appearance);

}  // namespace desk
