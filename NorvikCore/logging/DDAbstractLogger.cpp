#include "NorvikCore/logging/DDAbstractLogger.h"

#include "NorvikCore/logging/DDLog.h"
#include "NorvikCore/platform/dispatch/internal/WorkerPool.h"

#include <string>

namespace norvik {

DDAbstractLogger::~DDAbstractLogger() {
  // The queue may outlive this object, and another logger may be created at this address.
  if (loggerQueue_) dispatch_queue_set_specific(loggerQueue_, this, nullptr);
}

bool DDAbstractLogger::init() {
  if (!DDLogger::init()) return false;
  const std::optional<NSString> name = loggerName();
  loggerQueue_ = dispatch_queue_create(name ? name->utf8().c_str() : nullptr);
  dispatch_queue_set_specific(loggerQueue_, this, this);
  detail::WorkerPool::shared().prepare();  // so that the process's first message finds a worker
  return true;
}

void DDAbstractLogger::logMessage(const DDLogMessage&) {}

Ref<DDLogFormatter> DDAbstractLogger::logFormatter() {
  return dispatch_sync(DDLog::loggingQueue(),
                       [this] { return dispatch_sync(loggerQueue_, [this] { return formatter_; }); });
}

void DDAbstractLogger::setLogFormatter(const Ref<DDLogFormatter>& formatter) {
  dispatch_async(DDLog::loggingQueue(), [self = ref(*this), formatter] {
    dispatch_async(self->loggerQueue_, [self, formatter] { self->changeFormatter(formatter); });
  });
}

void DDAbstractLogger::changeFormatter(const Ref<DDLogFormatter>& formatter) {
  if (formatter == formatter_) return;
  if (formatter_) formatter_->willRemoveFromLogger(*this);
  formatter_ = formatter;
  if (formatter_) formatter_->didAddToLogger(*this);
}

dispatch_queue_t DDAbstractLogger::loggerQueue() { return loggerQueue_; }

std::optional<NSString> DDAbstractLogger::loggerName() { return classObject().name(); }

bool DDAbstractLogger::isOnGlobalLoggingQueue() const {
  return dispatch_get_specific(GlobalLoggingQueueIdentityKey) != nullptr;
}

bool DDAbstractLogger::isOnInternalLoggerQueue() const { return dispatch_get_specific(this) != nullptr; }

}  // namespace norvik
