// NorvikCore/qt/internal/ErrorMarks.h - shows on a widget why its value was refused.
#pragma once

#include <QString>

QT_BEGIN_NAMESPACE
class QObject;
class QWidget;
QT_END_NAMESPACE

namespace norvik::detail {

/// The reason of one source, empty for none. While a source has a reason, the widget's tool tip shows the newest one
/// and its dynamic property "invalid" is true; after the last one the former tool tip returns. The reason of a source
/// that is destroyed ends. Confined to the widget's thread.
void markError(QWidget& widget, const QObject& source, const QString& reason);

}  // namespace norvik::detail
