#include "NorvikCore/logging/DDLoggerNode.h"

namespace norvik {

DDLoggerNode::DDLoggerNode(const Ref<DDLogger>& logger, const dispatch_queue_t& loggerQueue, int logLevel)
    : logger_(logger), loggerQueue_(loggerQueue), logLevel_(logLevel), takesRuns_(logger && logger->takesRuns()) {}

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
