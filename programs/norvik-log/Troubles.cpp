#include "Troubles.h"

#include <cstdio>
#include <system_error>

#include "VisibleText.h"

namespace norvik_log {

void Troubles::note(std::string_view subject, std::string_view text) {
  std::string line = "norvik-log: ";
  appendVisible(line, subject, LineFeeds::Escaped);
  line += ": ";
  appendVisible(line, text, LineFeeds::Escaped);
  line += '\n';
  const std::lock_guard lock(mutex_);
  if (!said_.insert(line).second) return;
  std::fwrite(line.data(), 1, line.size(), stderr);
}

void Troubles::report(std::string_view subject, std::string_view reason) {
  any_ = true;
  note(subject, reason);
}

void Troubles::report(std::string_view subject, std::string_view reason, int error) {
  report(subject, std::string(reason) + ": " + std::generic_category().message(error));
}

}  // namespace norvik_log
