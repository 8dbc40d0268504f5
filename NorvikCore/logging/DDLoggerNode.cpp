#include "NorvikCore/logging/DDLoggerNode.h"

#include "NorvikCore/logging/DDAbstractLogger.h"

namespace norvik {

DDLoggerNode::DDLoggerNode(const Ref<DDLogger>& logger, const dispatch_queue_t& loggerQueue, int logLevel)
    : logger_(logger), loggerQueue_(loggerQueue), logLevel_(logLevel) {
  auto* base = dynamic_cast<DDAbstractLogger*>(logger.get());
  runLogger_ = base ? base->messageRunLogger() : nullptr;
}

DDLoggerNode::~DDLoggerNode() = default;

Ref<DDLoggerNode> DDLoggerNode::nodeWithLogger(const Ref<DDLogger>& logger, const dispatch_queue_t& loggerQueue,
                                               int logLevel) {
  return make<DDLoggerNode>(logger, loggerQueue, logLevel);
}

Ref<DDLoggerNode> DDLoggerNode::initWithLogger(const Ref<DDLogger>& logger, const dispatch_queue_t& loggerQueue,
                                               int logLevel) {
  return make<DDLoggerNode>(logger, loggerQueue, logLevel);
}

}  // namespace norvik
