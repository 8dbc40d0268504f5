#include "NorvikCore/logging/DDLogMessage.h"

#include "NorvikCore/logging/internal/LogRecord.h"
#include "NorvikCore/platform/dispatch/Queue.h"
#include "NorvikCore/platform/kernel/Thread.h"
#include "NorvikCore/platform/values/Format.h"

#include <cstring>
#include <new>
#include <string_view>
#include <utility>

namespace norvik {
namespace {

detail::Hidden<char[]> copied(const char* text) {
  const std::size_t size = std::strlen(text) + 1;
  detail::Hidden<char[]> copy(new (std::nothrow) char[size]);
  if (copy) std::memcpy(copy.get(), text, size);
  return copy;
}

// The thread's name as a text, created again only when the name has changed. A thread may log while its thread-local
// objects are being destroyed; the text is then created each time.
struct NameCache {
  NSString name;
  ~NameCache() { gone = true; }
  static thread_local bool gone;
};
thread_local bool NameCache::gone = false;

NSString currentThreadName() {
  const std::string_view name = kernel::currentThreadName();
  if (NameCache::gone) return name;
  static thread_local NameCache cache;
  if (cache.name.view() != name) cache.name = name;
  return cache.name;
}

}  // namespace

std::optional<NSString> DDExtractFileNameWithoutExtension(const char* filePath, bool copy) {
  if (!filePath) return std::nullopt;
  const std::string_view path = filePath;
  const std::size_t slash = path.rfind('/'), dot = path.rfind('.');
  const std::size_t begin = slash == std::string_view::npos ? 0 : slash + 1;
  const std::size_t end = dot == std::string_view::npos || dot < begin ? path.size() : dot;
  const std::string_view name = path.substr(begin, end - begin);
  return copy ? NSString(name) : NSString::borrowing(name);
}

DDLogMessage::DDLogMessage(Fields fields)
    : logLevel_(fields.level),
      logFlag_(fields.flag),
      logContext_(fields.context),
      lineNumber_(fields.line),
      logMsg_(std::move(fields.logMsg)),
      timestamp_(Date::systemDate()),
      file_(fields.file),
      function_(fields.function),
      tag_(std::move(fields.tag)),
      threadName_(currentThreadName()),
      machThreadID_(kernel::currentThreadId()),
      options_(fields.options) {
  if (file_ && (options_ & copyFile) != 0) {
    ownFile_ = copied(file_);
    file_ = ownFile_.get();
  }
  if (function_ && (options_ & copyFunction) != 0) {
    ownFunction_ = copied(function_);
    function_ = ownFunction_.get();
  }
  keepQueueLabel(dispatch_queue_get_label(DISPATCH_CURRENT_QUEUE_LABEL));
}

DDLogMessage::DDLogMessage(const detail::LogRecord& record, Date timestamp)
    : logLevel_(record.site().level),
      logFlag_(record.site().flag),
      logContext_(record.site().context),
      lineNumber_(record.site().line),
      logMsg_(record.text()),
      timestamp_(timestamp),
      file_(record.site().file),
      function_(record.site().function),
      tag_(record.tag()),
      threadName_(record.threadName()),
      machThreadID_(record.threadId()),
      options_(0) {
  keepQueueLabel(record.queueLabel());
}

DDLogMessage::~DDLogMessage() = default;

void DDLogMessage::keepQueueLabel(std::string_view label) {
  char* to = queueLabel_;
  if (label.size() >= sizeof queueLabel_) {
    longQueueLabel_ = detail::Hidden<char[]>(new (std::nothrow) char[label.size() + 1]);
    to = longQueueLabel_.get();
  }
  queueLabel_[0] = '\0';
  if (!to) return;
  label.copy(to, label.size());
  to[label.size()] = '\0';
}

Ref<DDLogMessage> DDLogMessage::initWithLogMsg(NSString logMsg, int level, int flag, int context, const char* file,
                                               const char* function, int line, Value tag, std::uint32_t options) {
  return make<DDLogMessage>(Fields{.logMsg = std::move(logMsg),
                                   .level = level,
                                   .flag = flag,
                                   .context = context,
                                   .line = line,
                                   .file = file,
                                   .function = function,
                                   .tag = std::move(tag),
                                   .options = options});
}

NSString DDLogMessage::threadID() const { return stringWithFormat("%x", machThreadID_); }

std::optional<NSString> DDLogMessage::fileName() const {
  return DDExtractFileNameWithoutExtension(file_, (options_ & copyFile) != 0);
}

std::optional<NSString> DDLogMessage::methodName() const {
  if (!function_) return std::nullopt;
  return NSString(function_);
}

}  // namespace norvik
