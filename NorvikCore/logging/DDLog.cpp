#include "NorvikCore/logging/DDLog.h"

#include "NorvikCore/logging/internal/LogIntake.h"
#include "NorvikCore/logging/internal/LogPipeline.h"
#include "NorvikCore/platform/foundation/NSLog.h"
#include "NorvikCore/platform/object/internal/SharedName.h"
#include "NorvikCore/platform/values/NSException.h"

#include <new>
#include <string>
#include <utility>

namespace norvik {

using detail::LogPipeline;

namespace {

/// Returns null, and reports on the console, if several classes share the name.
const Class* classNamed(const NSString& name) {
  const Class* found = Class::named(name);
  if (!found) {
    if (const std::string problem = detail::sharedNameProblem(name); !problem.empty())
      NSLog("DDLog: %@", NSString(problem));
  }
  return found;
}

}  // namespace

void* const GlobalLoggingQueueIdentityKey = const_cast<void**>(&GlobalLoggingQueueIdentityKey);

void DDLog::initialize() { (void)LogPipeline::shared(); }

dispatch_queue_t DDLog::loggingQueue() { return LogPipeline::shared().queue(); }

void DDLog::applicationWillTerminate(const NSNotification&) { LogPipeline::shared().lifetime().flushFromAnyQueue(); }

void DDLog::addLogger(const Ref<DDLogger>& logger) { addLogger(logger, LOG_LEVEL_VERBOSE); }

void DDLog::addLogger(const Ref<DDLogger>& logger, std::uint32_t withLogLevel) {
  LogPipeline::shared().addLogger(logger, static_cast<int>(withLogLevel));
}

void DDLog::removeLogger(const Ref<DDLogger>& logger) { LogPipeline::shared().removeLogger(logger); }

void DDLog::removeAllLoggers() { LogPipeline::shared().removeAllLoggers(); }

std::vector<Ref<DDLogger>> DDLog::allLoggers() {
  std::vector<Ref<DDLogger>> loggers;
  for (const auto& node : LogPipeline::shared().lifetime().rememberedLoggers()) loggers.push_back(node->logger());
  return loggers;
}

void DDLog::queueLogMessage(const Ref<DDLogMessage>& logMessage, bool asynchronously) {
  if (!logMessage) return;
  LogPipeline& pipeline = LogPipeline::shared();
  if (asynchronously) {
    detail::LogIntake::queueMessage(logMessage);
  } else {
    pipeline.log(*logMessage);
  }
}

void DDLog::log(bool asynchronous, int level, int flag, int context, const char* file, const char* function, int line,
                const Value& tag, const RuntimeFormat& format, FormatArguments arguments) {
  if (!format.text) return;
  detail::logNow(asynchronous, {level, flag, context, line, file, function}, &tag, format.text->view(), arguments);
}

void DDLog::log(bool asynchronous, int level, int flag, int context, const char* file, const char* function, int line,
                std::nullptr_t, const RuntimeFormat& format, FormatArguments arguments) {
  log(asynchronous, level, flag, context, file, function, line, Value(), format, arguments);
}

void DDLog::flushLog() { LogPipeline::shared().flush(); }

bool DDLog::isRegisteredClass(const Class& aClass) {
  return aClass.classMethod("ddLogLevel") && aClass.classMethod("ddSetLogLevel:");
}

std::vector<const Class*> DDLog::registeredClasses() {
  try {
    std::vector<const Class*> classes = Class::all();
    std::erase_if(classes, [](const Class* aClass) { return !isRegisteredClass(*aClass); });
    return classes;
  } catch (const std::bad_alloc&) {
    return {};
  }
}

std::vector<NSString> DDLog::registeredClassNames() {
  std::vector<NSString> names;
  for (const Class* aClass : registeredClasses()) names.push_back(aClass->distinctName());
  return names;
}

std::uint32_t DDLog::logLevelForClass(const Class& aClass) {
  if (!isRegisteredClass(aClass)) return 0xFFFFFFFF;
  return static_cast<std::uint32_t>(aClass.performClassOperation("ddLogLevel").as<std::int64_t>());
}

std::uint32_t DDLog::logLevelForClassWithName(const NSString& aClassName) {
  const Class* aClass = classNamed(aClassName);
  return aClass ? logLevelForClass(*aClass) : 0xFFFFFFFF;
}

void DDLog::setLogLevel_forClass(std::uint32_t level, const Class& aClass) {
  if (!isRegisteredClass(aClass)) return;
  const auto set = [&](const Value& argument) { aClass.performClassOperation("ddSetLogLevel:", {&argument, 1}); };
  if (level <= INT32_MAX) return set(level);
  // A setter takes either a signed or an unsigned level. The bits are the same, but the numbers differ, and each kind
  // of setter refuses the other number.
  try {
    set(level);
  } catch (const NSException& exception) {
    if (exception.name() != NSInvalidArgumentException) throw;
    set(static_cast<std::int32_t>(level));
  }
}

void DDLog::setLogLevel_forClassWithName(std::uint32_t level, const NSString& aClassName) {
  if (const Class* aClass = classNamed(aClassName)) setLogLevel_forClass(level, *aClass);
}

}  // namespace norvik
