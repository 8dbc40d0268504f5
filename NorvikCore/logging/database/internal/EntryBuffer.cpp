#include "NorvikCore/logging/database/internal/EntryBuffer.h"

#include "NorvikCore/platform/values/Utf8.h"
#include "NorvikCore/platform/values/internal/ShownMillisecond.h"

#include <new>

namespace norvik::detail {
namespace {

std::string_view queueOf(const DDLogEntry& entry) { return entry.queueLabel(); }
std::string_view queueOf(const DDLogMessage& message) { return message.queueLabel(); }

bool appendText(std::string& texts, const DDLogEntry& entry, DDLogFormatter* formatter) {
  if (formatter) return formatter->appendLogEntry(texts, entry);
  entry.appendText(texts);
  return true;
}

bool appendText(std::string& texts, const DDLogMessage& message, DDLogFormatter* formatter) {
  if (formatter) return formatter->appendLogMessage(texts, message);
  texts += message.logMsg().utf8();
  return true;
}

/// Removes what was appended, unless keep() is called.
class Appended {
 public:
  explicit Appended(std::string& texts) noexcept : texts_(&texts), size_(texts.size()) {}
  Appended(const Appended&) = delete;
  Appended& operator=(const Appended&) = delete;
  ~Appended() {
    if (texts_) texts_->resize(size_);
  }
  void keep() noexcept { texts_ = nullptr; }

 private:
  std::string* texts_;
  std::size_t size_;
};

}  // namespace

EntryBuffer::Outcome EntryBuffer::add(const DDLogEntry& entry, DDLogFormatter* formatter) {
  return addFrom(entry, formatter);
}

EntryBuffer::Outcome EntryBuffer::add(const DDLogMessage& message, DDLogFormatter* formatter) {
  return addFrom(message, formatter);
}

template <class Source>
EntryBuffer::Outcome EntryBuffer::addFrom(const Source& source, DDLogFormatter* formatter) {
  if (isFull()) return Outcome::noRoom;
  try {
    return append(source, formatter);
  } catch (const std::bad_alloc&) {
    return Outcome::noRoom;
  }
}

template <class Source>
EntryBuffer::Outcome EntryBuffer::append(const Source& source, DDLogFormatter* formatter) {
  Appended appended(texts_);
  Row row;
  row.time = storedSeconds(source.timestamp());
  row.level = source.logFlag();
  row.context = source.logContext();
  row.line = source.lineNumber();
  row.thread = source.machThreadID();
  row.queueSize = append(queueOf(source));
  row.fileSize = append(source.file());
  row.functionSize = append(source.function());
  const std::size_t begin = texts_.size();
  if (!appendText(texts_, source, formatter)) return Outcome::dropped;
  row.textSize = cleanFrom(begin);
  rows_.push_back(row);
  appended.keep();
  return Outcome::taken;
}

std::uint32_t EntryBuffer::append(const char* text) { return text ? append(std::string_view(text)) : absent; }

std::uint32_t EntryBuffer::append(std::string_view text) {
  constexpr std::size_t longest = 1 << 20;  // longest name; the rest is cut
  const std::size_t begin = texts_.size();
  texts_ += text.substr(0, longest);
  return static_cast<std::uint32_t>(cleanFrom(begin));
}

/// Makes the bytes from `begin` on valid UTF-8; returns their new number.
std::size_t EntryBuffer::cleanFrom(std::size_t begin) {
  const std::string_view added = std::string_view(texts_).substr(begin);
  if (!utf8::isAscii(added) && !utf8::isValid(added)) {
    const std::string clean = NSString(added).utf8();
    texts_.replace(begin, std::string::npos, clean);
  }
  return texts_.size() - begin;
}

void EntryBuffer::clear() {
  constexpr std::size_t usualBytes = 1 << 20;
  if (texts_.capacity() > usualBytes) {
    texts_ = {};
    rows_ = {};
  } else {
    texts_.clear();
    rows_.clear();
  }
}

}  // namespace norvik::detail
