#include "NorvikCore/qt/NKLogModel.h"

#include "NorvikCore/logging/DDAbstractLogger.h"
#include "NorvikCore/logging/DDLog.h"
#include "NorvikCore/logging/DDLogLineFormatter.h"
#include "NorvikCore/platform/kernel/Mutex.h"
#include "NorvikCore/qt/QtConversions.h"
#include "NorvikCore/qt/internal/QtLink.h"

#include <QTextDocument>
#include <QTimeZone>

#include <algorithm>
#include <deque>
#include <iterator>
#include <utility>
#include <vector>

namespace norvik {
namespace {

constexpr std::size_t longestText = 2000;  // UTF-16 units
constexpr std::size_t mostPerTurn = 500;

QString shownText(const NSString& text) {
  const bool isLong = text.length() > longestText;
  const NSString cut = isLong ? text.substringToIndex(longestText) : text;
  return nk_toQString(DDLogLineFormatter::escaped(cut)) + (isLong ? QStringLiteral("…") : QString());
}

QString nameOfFlag(int flag) {
  switch (flag) {
    case LOG_FLAG_ERROR:
      return QStringLiteral("Error");
    case LOG_FLAG_WARN:
      return QStringLiteral("Warning");
    case LOG_FLAG_INFO:
      return QStringLiteral("Info");
    case LOG_FLAG_DEBUG:
      return QStringLiteral("Debug");
    case LOG_FLAG_VERBOSE:
      return QStringLiteral("Verbose");
    default:
      return QString::number(flag);
  }
}

}  // namespace

class NKLogModel::Lines {
 public:
  class Logger;
  /// One message, as little of it as the view shows.
  struct LogLine {
    Date time;
    int flag;
    int lineNumber;
    QString queue, text, file;
  };

  Lines(NKLogModel& model, int maximumCount);
  ~Lines();

  void append(std::vector<LogLine> added);
  void filter();

  NKLogModel& model;
  const std::size_t maximumCount;
  LogLevel level = LOG_LEVEL_VERBOSE;
  std::deque<LogLine> kept;
  std::size_t firstNumber = 0;    ///< of kept.front(): messages are numbered as they arrive
  std::deque<std::size_t> shown;  ///< numbers of the kept messages that the level admits

  [[nodiscard]] const LogLine& at(int row) const { return kept[shown[static_cast<std::size_t>(row)] - firstNumber]; }
  [[nodiscard]] bool isShown(const LogLine& line) const { return line.flag <= level; }
  void clear();

 private:
  const Ref<Logger> logger_;
};

/// Collects the messages on its queue for the model's thread.
class NKLogModel::Lines::Logger : public DDAbstractLogger {
 public:
  Logger(Lines& lines, std::size_t maximumCount) : lines_(&lines), maximumCount_(maximumCount) {}

  void logMessage(const DDLogMessage& message) override {
    LogLine line{message.timestamp(),         message.logFlag(),
                 message.lineNumber(),        QString::fromUtf8(message.queueLabel()),
                 shownText(message.logMsg()), nk_toQString(message.fileName().value_or(NSString()))};
    {
      const MutexLock lock(mutex_);
      waiting_.push_back(std::move(line));
      if (waiting_.size() > maximumCount_) waiting_.pop_front();
      if (std::exchange(isPosted_, true)) return;
    }
    post();
  }
  [[nodiscard]] std::optional<NSString> loggerName() override { return "com.norvik.log-view"; }

  /// On the model's thread.
  void close() {
    link_.close();
    lines_ = nullptr;
  }
  void discard() {
    const MutexLock lock(mutex_);
    waiting_.clear();
  }

 private:
  void post() {
    link_.post([self = ref(*this)] { self->deliver(); });
  }
  void deliver() {
    if (lines_ == nullptr) return;
    std::vector<LogLine> next;
    bool isMore = false;
    {
      const MutexLock lock(mutex_);
      const auto end = waiting_.begin() + static_cast<std::ptrdiff_t>(std::min(waiting_.size(), mostPerTurn));
      next.assign(std::make_move_iterator(waiting_.begin()), std::make_move_iterator(end));
      waiting_.erase(waiting_.begin(), end);
      isMore = isPosted_ = !waiting_.empty();
    }
    if (isMore) post();
    if (!next.empty()) lines_->append(std::move(next));
  }

  Lines* lines_;
  const detail::QtLink link_;
  const std::size_t maximumCount_;
  Mutex mutex_;
  std::deque<LogLine> waiting_ NK_GUARDED_BY(mutex_);
  bool isPosted_ NK_GUARDED_BY(mutex_) = false;
};

NKLogModel::Lines::Lines(NKLogModel& owner, int count)
    : model(owner),
      maximumCount(static_cast<std::size_t>(std::max(count, 1))),
      logger_(make<Logger>(*this, maximumCount)) {
  DDLog::addLogger(logger_);
}

NKLogModel::Lines::~Lines() {
  logger_->close();
  DDLog::removeLogger(logger_);
}

void NKLogModel::Lines::append(std::vector<LogLine> added) {
  if (added.size() > maximumCount) {
    added.erase(added.begin(), added.end() - static_cast<std::ptrdiff_t>(maximumCount));
  }
  const std::size_t surplus = std::max(kept.size() + added.size(), maximumCount) - maximumCount;
  const auto goneEnd = std::lower_bound(shown.begin(), shown.end(), firstNumber + surplus);
  if (const auto gone = static_cast<int>(goneEnd - shown.begin()); gone > 0) {
    model.beginRemoveRows({}, 0, gone - 1);
    shown.erase(shown.begin(), goneEnd);
    model.endRemoveRows();
  }
  kept.erase(kept.begin(), kept.begin() + static_cast<std::ptrdiff_t>(surplus));
  firstNumber += surplus;

  std::vector<std::size_t> numbers;
  for (std::size_t i = 0; i < added.size(); ++i) {
    if (isShown(added[i])) numbers.push_back(firstNumber + kept.size() + i);
  }
  kept.insert(kept.end(), std::make_move_iterator(added.begin()), std::make_move_iterator(added.end()));
  if (numbers.empty()) return;
  const auto first = static_cast<int>(shown.size());
  model.beginInsertRows({}, first, first + static_cast<int>(numbers.size()) - 1);
  shown.insert(shown.end(), numbers.begin(), numbers.end());
  model.endInsertRows();
}

void NKLogModel::Lines::filter() {
  model.beginResetModel();
  shown.clear();
  for (std::size_t i = 0; i < kept.size(); ++i) {
    if (isShown(kept[i])) shown.push_back(firstNumber + i);
  }
  model.endResetModel();
}

void NKLogModel::Lines::clear() {
  logger_->discard();
  model.beginResetModel();
  firstNumber += kept.size();
  kept.clear();
  shown.clear();
  model.endResetModel();
}

NKLogModel::NKLogModel(QObject* parent) : NKLogModel(10000, parent) {}

NKLogModel::NKLogModel(int maximumCount, QObject* parent)
    : QAbstractTableModel(parent), lines_(std::make_unique<Lines>(*this, maximumCount)) {}

NKLogModel::~NKLogModel() = default;

int NKLogModel::maximumCount() const noexcept { return static_cast<int>(lines_->maximumCount); }

LogLevel NKLogModel::level() const noexcept { return lines_->level; }

void NKLogModel::setLevel(LogLevel level) {
  if (level == lines_->level) return;
  lines_->level = level;
  lines_->filter();
}

void NKLogModel::clear() { lines_->clear(); }

int NKLogModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(lines_->shown.size());
}

int NKLogModel::columnCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : ColumnCount; }

QVariant NKLogModel::data(const QModelIndex& index, int role) const {
  if (!hasIndex(index.row(), index.column(), index.parent())) return {};
  const Lines::LogLine& line = lines_->at(index.row());
  if (role == levelRole) return line.flag;
  if (role == Qt::ToolTipRole) {
    // As rich text, which a tool tip wraps.
    return Qt::convertFromPlainText(line.text + QStringLiteral("\n%1:%2").arg(line.file).arg(line.lineNumber));
  }
  if (role != Qt::DisplayRole) return {};
  switch (index.column()) {
    case TimeColumn:
      return nk_toQDateTime(line.time, QTimeZone::systemTimeZone()).toString(QStringLiteral("HH:mm:ss.zzz"));
    case LevelColumn:
      return nameOfFlag(line.flag);
    case QueueColumn:
      return line.queue;
    default:
      return line.text;
  }
}

QVariant NKLogModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal) return {};
  if (role == Qt::TextAlignmentRole) return QVariant::fromValue(Qt::Alignment(Qt::AlignLeft | Qt::AlignVCenter));
  if (role != Qt::DisplayRole) return {};
  switch (section) {
    case TimeColumn:
      return tr("Time");
    case LevelColumn:
      return tr("Level");
    case QueueColumn:
      return tr("Queue");
    case TextColumn:
      return tr("Message");
    default:
      return {};
  }
}

}  // namespace norvik
