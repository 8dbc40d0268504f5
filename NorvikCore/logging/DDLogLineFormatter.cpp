#include "NorvikCore/logging/DDLogLineFormatter.h"

#include "NorvikCore/logging/LogLevel.h"
#include "NorvikCore/logging/internal/LineEscape.h"
#include "NorvikCore/platform/foundation/NSDateFormatter.h"
#include "NorvikCore/platform/foundation/NSLocale.h"
#include "NorvikCore/platform/foundation/NSTimeZone.h"

#include <charconv>
#include <string_view>
#include <typeinfo>

namespace norvik {
namespace {

constexpr std::size_t numberSize = 11, levelSize = 7;  // a number's largest size, and a level's smallest

char* put(char* at, std::string_view text) noexcept { return at + text.copy(at, text.size()); }

template <class Number>
char* putNumber(char* at, Number number) noexcept {
  return std::to_chars(at, at + numberSize, number).ptr;
}

char* putLevel(char* at, int flag) noexcept {
  switch (flag) {
    case LOG_FLAG_ERROR:
      return put(at, "ERROR  ");
    case LOG_FLAG_WARN:
      return put(at, "WARN   ");
    case LOG_FLAG_INFO:
      return put(at, "INFO   ");
    case LOG_FLAG_DEBUG:
      return put(at, "DEBUG  ");
    case LOG_FLAG_VERBOSE:
      return put(at, "VERBOSE");
    default: {
      char* const end = at + levelSize;
      at = putNumber(at, flag);
      while (at < end) *at++ = ' ';
      return at;
    }
  }
}

/// Returns the name escaped for the line. `held` stores it if it had to be changed. The bytes may not be UTF-8.
std::string_view escapedName(std::string_view name, char alsoEscaped, std::string& held) {
  if (detail::plainPrefix(name) == name.size() && name.find(alsoEscaped) == name.npos) [[likely]]
    return name;
  detail::appendEscaped(held, NSString(name).view(), alsoEscaped);
  return held;
}

std::string_view lastPart(const char* path) noexcept {
  const std::string_view all = path ? path : "";
  const std::string_view name = all.substr(all.rfind('/') + 1);  // npos + 1 is 0
  return name.empty() ? "-" : name;
}

}  // namespace

struct DDLogLineFormatter::Head {
  Date timestamp;
  std::string_view label;
  std::uint32_t threadId;
  int flag, line;
  const char* file;
};

DDLogLineFormatter::DDLogLineFormatter() : dateFormatter_(make<NSDateFormatter>()) {
  dateFormatter_->setLocale(NSLocale::localeWithLocaleIdentifier("en_US_POSIX"));
  dateFormatter_->setTimeZone(NSTimeZone::timeZoneForSecondsFromGMT(0));
  dateFormatter_->setDateFormat("yyyy-MM-dd'T'HH:mm:ss.SSS'Z '");
}

DDLogLineFormatter::~DDLogLineFormatter() = default;

/// A derived class may override formatLogMessage().
bool DDLogLineFormatter::takesRuns() const noexcept { return typeid(*this) == typeid(DDLogLineFormatter); }

std::optional<NSString> DDLogLineFormatter::formatLogMessage(const DDLogMessage& message) {
  std::string line;
  appendMessage(line, message);
  return NSString(line);
}

bool DDLogLineFormatter::appendLogMessage(std::string& line, const DDLogMessage& message) {
  if (!DDLogLineFormatter::takesRuns()) return DDLogFormatter::appendLogMessage(line, message);
  appendMessage(line, message);
  return true;
}

bool DDLogLineFormatter::appendLogEntry(std::string& line, const DDLogEntry& entry) {
  if (!DDLogLineFormatter::takesRuns()) return DDLogFormatter::appendLogEntry(line, entry);
  appendHead(line, {entry.timestamp(), entry.queueLabel(), entry.machThreadID(), entry.logFlag(), entry.lineNumber(),
                    entry.file()});
  const std::size_t begin = line.size();
  entry.appendText(line);
  if (detail::plainPrefix(std::string_view(line).substr(begin)) == line.size() - begin) [[likely]]
    return true;
  line.resize(begin);
  detail::appendEscaped(line, entry.text().view());  // this text still has the lone halves, which UTF-8 cannot encode
  return true;
}

void DDLogLineFormatter::appendMessage(std::string& line, const DDLogMessage& message) const {
  appendHead(line, {message.timestamp(), message.queueLabel(), message.machThreadID(), message.logFlag(),
                    message.lineNumber(), message.file()});
  detail::appendEscaped(line, message.logMsg().view());
}

void DDLogLineFormatter::appendHead(std::string& line, const Head& head) const {
  std::string heldLabel, heldFile;
  const std::string_view label = escapedName(head.label, ']', heldLabel);
  const std::string_view file = escapedName(lastPart(head.file), ' ', heldFile);
  dateFormatter_->appendStringFromDate(head.timestamp, line);
  constexpr std::string_view beforeLabel = " [", beforeFile = "] ", beforeText = "  ";
  const std::size_t begin = line.size();
  line.resize(begin + 3 * numberSize + label.size() + file.size() + 8);  // the punctuation has eight characters
  char* at = line.data() + begin;
  at = put(putLevel(at, head.flag), beforeLabel);
  at = put(at, label);
  *at++ = ':';
  at = put(putNumber(at, head.threadId), beforeFile);
  at = put(at, file);
  *at++ = ':';
  at = put(putNumber(at, head.line), beforeText);
  line.resize(static_cast<std::size_t>(at - line.data()));
}

NSString DDLogLineFormatter::escaped(const NSString& text) {
  std::string line;
  detail::appendEscaped(line, text.view());
  return NSString(line);
}

std::optional<NSString> DDLogLineFormatter::unescaped(const NSString& text) { return detail::unescapedText(text); }

}  // namespace norvik
