#include "NorvikCore/qt/internal/ErrorMarks.h"

#include <QStyle>
#include <QVariant>
#include <QWidget>

#include <algorithm>
#include <utility>
#include <vector>

namespace norvik::detail {
namespace {

/// A child of the marked widget while there is a reason.
class ErrorMarks : public QObject {
 public:
  explicit ErrorMarks(QWidget& widget) : QObject(&widget), widget_(widget), formerToolTip_(widget.toolTip()) {
    setObjectName(QStringLiteral("nk_errorMarks"));
    setInvalid(true);
  }

  void set(const QObject& source, const QString& reason) {
    const auto it = placeOf(source);
    if (it == reasons_.end()) {
      if (reason.isEmpty()) return;
      reasons_.emplace_back(&source, reason);
      connect(&source, &QObject::destroyed, this, [this, &source] {
        if (const auto place = placeOf(source); place != reasons_.end()) reasons_.erase(place);
        // Later, because the widget may be in its destructor.
        QMetaObject::invokeMethod(
            this, [this] { show(); }, Qt::QueuedConnection);
      });
    } else if (reason.isEmpty()) {
      disconnect(&source, nullptr, this, nullptr);
      reasons_.erase(it);
    } else {
      it->second = reason;
      std::rotate(it, it + 1, reasons_.end());  // the newest is the last one
    }
    show();
  }

 private:
  using Reasons = std::vector<std::pair<const QObject*, QString>>;

  Reasons::iterator placeOf(const QObject& source) {
    return std::find_if(reasons_.begin(), reasons_.end(), [&](const auto& each) { return each.first == &source; });
  }
  /// Ends the object after the last reason.
  void show() {
    if (!reasons_.empty()) return widget_.setToolTip(reasons_.back().second);
    widget_.setToolTip(formerToolTip_);
    setInvalid(false);
    delete this;
  }
  void setInvalid(bool isInvalid) {
    widget_.setProperty("invalid", isInvalid);
    widget_.style()->unpolish(&widget_);  // a style sheet may name the property
    widget_.style()->polish(&widget_);
    widget_.update();
  }

  QWidget& widget_;
  const QString formerToolTip_;
  Reasons reasons_;
};

}  // namespace

void markError(QWidget& widget, const QObject& source, const QString& reason) {
  auto* marks =
      static_cast<ErrorMarks*>(widget.findChild<QObject*>(QStringLiteral("nk_errorMarks"), Qt::FindDirectChildrenOnly));
  if (marks == nullptr) {
    if (reason.isEmpty()) return;
    marks = new ErrorMarks(widget);
  }
  marks->set(source, reason);
}

}  // namespace norvik::detail
