// NorvikCore/qt/NKLogModel.h - the newest messages of the log as a table for Qt's views.
//
//   auto* log = new NKLogModel(window);            // follows the log from now on, until it is destroyed
//   log->setLevel(LOG_LEVEL_WARN);                 // shows errors and warnings; the others are kept
//   view->setModel(log);                           // or NKLogView, which has a choice of levels
//
// Columns:   time (the user's clock, to the millisecond), level, queue or thread, text. Control characters in a text
//            are shown escaped, as DDLogLineFormatter does, so that a message is one line. The tool tip has the whole
//            text, file and line; levelRole the flag as an int.
// Memory:    bounded: maximumCount() messages, of which each text is cut to 2,000 characters. Messages that wait for
//            the event loop count too. So if a thread logs faster than Qt shows, the oldest messages are discarded.
// Threads:   messages come from any thread. The model is confined to its own thread, on which the messages arrive in
//            its event loop, at most 500 in each turn. Logging never waits for that thread.
// Lifetime:  the logger is removed from the log when the model is destroyed.
#pragma once  // include time: the base is a Qt model

#include "NorvikCore/platform/export.h"

#ifndef Q_MOC_RUN  // moc of Qt 6.4 cannot read <concepts>
#include "NorvikCore/logging/LogLevel.h"
#endif

#include <QAbstractTableModel>

#include <memory>

namespace norvik {

class NK_EXPORT NKLogModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  enum Column { TimeColumn, LevelColumn, QueueColumn, TextColumn, ColumnCount };
  static constexpr int levelRole = Qt::UserRole;

  /// Keeps 10,000 messages.
  explicit NKLogModel(QObject* parent = nullptr);
  /// At least one message is kept.
  NKLogModel(int maximumCount, QObject* parent);
  ~NKLogModel() override;

  [[nodiscard]] int maximumCount() const noexcept;
  /// The messages that are shown are those that the level admits; initially all. Resets the model.
  [[nodiscard]] LogLevel level() const noexcept;
  void setLevel(LogLevel level);
  void clear();

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
  [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                    int role = Qt::DisplayRole) const override;

 private:
  class Lines;
  const std::unique_ptr<Lines> lines_;
};

}  // namespace norvik
