// NorvikCore/logging/DDLogMessage.h - one log message: its text, time, source location and thread.
//
// A message never changes after it is created, so loggers share it across threads.
//
//   std::optional<NSString> MyFormatter::formatLogMessage(const DDLogMessage& message) {
//     return stringWithFormat("%@ %@:%d", message.logMsg(), message.fileName(), message.lineNumber());
//   }
#pragma once

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/kernel/Hidden.h"
#include "NorvikCore/platform/object/NSObject.h"
#include "NorvikCore/platform/values/Date.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace norvik {

namespace detail {
class LogFanOut;
class LogRecord;
}  // namespace detail

/// The last component of a path without its extension: "/a/b/File.m" gives "File". Returns nothing for a null path. The
/// last dot of the whole path begins the extension; a dot before the last slash ("dir.d/name") does not count, and the
/// name then extends to the end of the path. Without `copy` the result refers to the caller's bytes, which must live
/// until the process ends.
[[nodiscard]] NK_EXPORT std::optional<NSString> DDExtractFileNameWithoutExtension(const char* filePath, bool copy);

class NK_EXPORT DDLogMessage : public NSObject {
  NK_OBJECT(DDLogMessage, NSObject)

  /// Options: which of the caller's texts a message copies instead of borrowing.
  static constexpr std::uint32_t copyFile = 1, copyFunction = 2;

  /// Creates a message of the calling thread. Its time is the system clock's, also while another current date is
  /// mocked. `file` and `function` may be null. They are borrowed for as long as the message may live, unless `options`
  /// says that they are copied.
  [[nodiscard]] static Ref<DDLogMessage> initWithLogMsg(NSString logMsg, int level, int flag, int context,
                                                        const char* file, const char* function, int line, Value tag,
                                                        std::uint32_t options);

  /// The level of the code that logs.
  [[nodiscard]] int logLevel() const noexcept { return logLevel_; }
  /// The kind of message; see LogFlag.
  [[nodiscard]] int logFlag() const noexcept { return logFlag_; }
  /// A number that the caller chooses, to group messages.
  [[nodiscard]] int logContext() const noexcept { return logContext_; }
  [[nodiscard]] const NSString& logMsg() const noexcept { return logMsg_; }
  /// The time of the log call, exact to a microsecond. Two messages of different threads that are closer than that may
  /// have times in the opposite order.
  [[nodiscard]] Date timestamp() const noexcept { return timestamp_; }
  [[nodiscard]] const char* file() const noexcept { return file_; }
  [[nodiscard]] const char* function() const noexcept { return function_; }
  [[nodiscard]] int lineNumber() const noexcept { return lineNumber_; }
  /// The kernel's thread id.
  [[nodiscard]] std::uint32_t machThreadID() const noexcept { return machThreadID_; }
  /// The label of the queue on which the message was logged. If it was logged outside any queue: a name of the thread.
  [[nodiscard]] const char* queueLabel() const noexcept {
    return longQueueLabel_ ? longQueueLabel_.get() : queueLabel_;
  }
  /// The name that was given to the thread, or the kernel's name for a thread without one.
  [[nodiscard]] const NSString& threadName() const noexcept { return threadName_; }
  /// A value that the caller attached, or an absent value.
  [[nodiscard]] const Value& tag() const noexcept { return tag_; }
  [[nodiscard]] std::uint32_t options() const noexcept { return options_; }

  /// machThreadID in lower-case hexadecimal.
  [[nodiscard]] NSString threadID() const;
  /// The name of `file` without folders and extension; absent if there is no file.
  [[nodiscard]] std::optional<NSString> fileName() const;
  /// `function` as text; absent if there is none.
  [[nodiscard]] std::optional<NSString> methodName() const;

 protected:
  /// What a message holds, in the order of initWithLogMsg().
  struct Fields {
    NSString logMsg;
    int level, flag, context, line;
    const char *file, *function;
    Value tag;
    std::uint32_t options;
  };
  explicit DDLogMessage(Fields fields);
  /// Creates the message of a log call that was recorded earlier.
  DDLogMessage(const detail::LogRecord& record, Date timestamp);
  ~DDLogMessage() override;

 private:
  friend class DDLogEntry;
  template <class T, class... Args>
  friend Ref<T> make(Args&&... args);

  void keepQueueLabel(std::string_view label);

  int logLevel_, logFlag_, logContext_, lineNumber_;
  NSString logMsg_;
  Date timestamp_;
  const char *file_, *function_;
  detail::Hidden<char[]> ownFile_, ownFunction_, longQueueLabel_;
  Value tag_;
  NSString threadName_;
  std::uint32_t machThreadID_, options_;
  char queueLabel_[40];
};

}  // namespace norvik
