#include "LogChoice.h"

#include <array>

#include "Arguments.h"

namespace payrun {

namespace {

constexpr std::array<std::string_view, 5> kinds = {"console", "file", "sqlite=", "postgres=", "syslog"};

/// The kind at the beginning of the text, or empty.
std::string_view kindOf(std::string_view text) {
  for (const std::string_view kind : kinds) {
    if (!text.starts_with(kind)) continue;
    const std::string_view rest = text.substr(kind.size());
    if (kind.ends_with('=') || rest.empty() || rest.starts_with(',')) return kind;
  }
  return {};
}

/// The end of the value at the beginning of the text.
std::size_t endOfValue(std::string_view text) {
  for (std::size_t comma = text.find(','); comma != text.npos; comma = text.find(',', comma + 1)) {
    if (!kindOf(text.substr(comma + 1)).empty()) return comma;
  }
  return text.size();
}

void set(LogChoice& choice, std::string_view kind, std::string_view value) {
  const auto mark = [&](bool& isThere) {
    if (isThere) throw UsageError("--log has \"" + std::string(kind) + "\" twice");
    isThere = true;
  };
  const auto keep = [&](auto& place) {
    if (value.empty()) throw UsageError("--log has no value after \"" + std::string(kind) + "\"");
    if (place) throw UsageError("--log has \"" + std::string(kind) + "\" twice");
    place.emplace(value);
  };
  if (kind == "console") return mark(choice.console);
  if (kind == "file") return mark(choice.file);
  if (kind == "syslog") return mark(choice.syslog);
  if (kind == "sqlite=") {
    refuseTilde("--log sqlite", value);
    return keep(choice.sqlite);
  }
  keep(choice.postgres);
}

}  // namespace

LogChoice parseLogChoice(std::string_view list) {
  LogChoice choice;
  for (std::string_view rest = list;;) {
    const std::string_view kind = kindOf(rest);
    if (kind.empty()) {
      throw UsageError(
          "--log takes console, file, sqlite=PATH, postgres=URL and syslog, with commas between them, not \"" +
          withoutValue(rest) + "\"");
    }
    rest.remove_prefix(kind.size());
    const std::string_view value = rest.substr(0, kind.ends_with('=') ? endOfValue(rest) : 0);
    set(choice, kind, value);
    rest.remove_prefix(value.size());
    if (rest.empty()) return choice;
    rest.remove_prefix(1);
  }
}

}  // namespace payrun
