#include "NorvikCore/logging/DDLogLineFormatter.h"

#include "NorvikCore/logging/LogLevel.h"
#include "NorvikCore/logging/internal/LineEscape.h"
#include "NorvikCore/logging/internal/LogRecord.h"
#include "NorvikCore/platform/foundation/NSDateFormatter.h"
#include "NorvikCore/platform/foundation/NSLocale.h"
#include "NorvikCore/platform/foundation/NSTimeZone.h"

#include <charconv>
#include <string_view>

namespace norvik {
namespace {

template <class Number>
void appendNumber(std::string& line, Number number) {
  char text[24];
  const auto [end, error] = std::to_chars(text, text + sizeof text, number);
  line.append(text, end);
}

void appendLevel(std::string& line, int flag) {
  constexpr std::size_t width = 7;
  switch (flag) {
    case LOG_FLAG_ERROR:
      line += "ERROR  ";
      return;
    case LOG_FLAG_WARN:
      line += "WARN   ";
      return;
    case LOG_FLAG_INFO:
      line += "INFO   ";
      return;
    case LOG_FLAG_DEBUG:
      line += "DEBUG  ";
      return;
    case LOG_FLAG_VERBOSE:
      line += "VERBOSE";
      return;
    default: {
      const std::size_t begin = line.size();
      appendNumber(line, flag);
      if (line.size() - begin < width) line.append(width - (line.size() - begin), ' ');
    }
  }
}

/// Of bytes that may not be UTF-8.
void appendName(std::string& line, std::string_view name, char alsoEscaped) {
  if (detail::plainPrefix(name) == name.size() && name.find(alsoEscaped) == name.npos) [[likely]] {
    line += name;
  } else {
    detail::appendEscaped(line, NSString(name).view(), alsoEscaped);
  }
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

std::optional<NSString> DDLogLineFormatter::formatLogMessage(const DDLogMessage& message) {
  std::string line;
  appendLogMessage(line, message);
  return NSString(line);
}

void DDLogLineFormatter::appendLogMessage(std::string& text, const DDLogMessage& message) const {
  appendHead(text, {message.timestamp(), message.queueLabel(), message.machThreadID(), message.logFlag(),
                    message.lineNumber(), message.file()});
  detail::appendEscaped(text, message.logMsg().view());
}

void DDLogLineFormatter::appendRecord(std::string& text, const detail::LogRecord& record) const {
  const detail::LogSite& site = record.site();
  appendHead(text, {record.timestamp(), record.queueLabel(), record.threadId(), site.flag, site.line, site.file});
  const std::size_t begin = text.size();
  record.appendText(text);
  if (detail::plainPrefix(std::string_view(text).substr(begin)) == text.size() - begin) [[likely]]
    return;
  text.resize(begin);
  detail::appendEscaped(text, record.text().view());  // which still has the halves that UTF-8 has no form for
}

void DDLogLineFormatter::appendHead(std::string& text, const Head& head) const {
  dateFormatter_->appendStringFromDate(head.timestamp, text);
  appendLevel(text, head.flag);
  text += " [";
  appendName(text, head.label, ']');
  text += ':';
  appendNumber(text, head.threadId);
  text += "] ";
  appendName(text, lastPart(head.file), ' ');
  text += ':';
  appendNumber(text, head.line);
  text += "  ";
}

NSString DDLogLineFormatter::escaped(const NSString& text) {
  std::string line;
  detail::appendEscaped(line, text.view());
  return NSString(line);
}

std::optional<NSString> DDLogLineFormatter::unescaped(const NSString& text) { return detail::unescapedText(text); }

}  // namespace norvik
