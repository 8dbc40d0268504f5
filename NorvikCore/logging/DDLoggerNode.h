// NorvikCore/logging/DDLoggerNode.h - a logger as the dispatcher stores it, with its queue and the level with which it
// was added.
#pragma once

#include "NorvikCore/logging/DDLogger.h"
#include "NorvikCore/platform/dispatch/Queue.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/object/NSObject.h"

namespace norvik {

class NK_EXPORT DDLoggerNode : public NSObject {
  NK_OBJECT(DDLoggerNode, NSObject)

  [[nodiscard]] static Ref<DDLoggerNode> nodeWithLogger(const Ref<DDLogger>& logger,
                                                        const dispatch_queue_t& loggerQueue, int logLevel);
  /// Retains the logger and the queue. An empty queue stays empty.
  [[nodiscard]] static Ref<DDLoggerNode> initWithLogger(const Ref<DDLogger>& logger,
                                                        const dispatch_queue_t& loggerQueue, int logLevel);

  [[nodiscard]] const Ref<DDLogger>& logger() const noexcept { return logger_; }
  [[nodiscard]] const dispatch_queue_t& loggerQueue() const noexcept { return loggerQueue_; }
  [[nodiscard]] int logLevel() const noexcept { return logLevel_; }

  /// What the logger's takesRuns() returned when the logger was added.
  [[nodiscard]] bool takesRuns() const noexcept { return takesRuns_; }

 protected:
  ~DDLoggerNode() override;

 private:
  template <class T, class... Args>
  friend Ref<T> make(Args&&... args);
  DDLoggerNode(const Ref<DDLogger>& logger, const dispatch_queue_t& loggerQueue, int logLevel);

  Ref<DDLogger> logger_;
  dispatch_queue_t loggerQueue_;
  int logLevel_;
  bool takesRuns_;
};

}  // namespace norvik
