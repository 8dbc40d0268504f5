#include "NorvikCore/platform/kernel/Paths.h"

#include "NorvikCore/platform/kernel/internal/OwnFile.h"

#include <errno.h>
#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <utility>
#include <vector>

namespace norvik::kernel {
namespace {

std::string withoutSlashAtEnd(std::string path) {
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  return path;
}

// Empty if the variable is not set to an absolute path.
std::string fromEnvironment(const char* variable) {
  const char* value = std::getenv(variable);
  return value && *value == '/' ? withoutSlashAtEnd(value) : "";
}

std::string inHome(std::string_view name) {
  std::string home = homeDirectory();
  if (home != "/") home += '/';
  return home.append(name);
}

std::string environmentOrHome(const char* variable, std::string_view name) {
  std::string path = fromEnvironment(variable);
  return path.empty() ? inHome(name) : path;
}

// Queries the account database by `ask(entry, buffer, size, &found)`; empty if there is no such account.
template <class Ask>
std::string homeOfAccount(const Ask& ask) {
  std::vector<char> buffer(1024);
  for (;;) {
    passwd entry{};
    passwd* found = nullptr;
    const int error = ask(&entry, buffer.data(), buffer.size(), &found);
    if (error == EINTR) continue;
    if (error != ERANGE) return found && found->pw_dir && *found->pw_dir ? withoutSlashAtEnd(found->pw_dir) : "";
    buffer.resize(buffer.size() * 2);
  }
}

// Empty if neither the environment nor the account gives a home.
std::string knownHome() {
  std::string home = fromEnvironment("HOME");
  if (!home.empty()) return home;
  return homeOfAccount([](passwd* entry, char* buffer, std::size_t size, passwd** found) {
    return getpwuid_r(geteuid(), entry, buffer, size, found);
  });
}

// Removes spaces, tabs and then `expected` from the front; false if something else is there.
bool takeOff(std::string_view& line, std::string_view expected) {
  line.remove_prefix(std::min(line.size(), line.find_first_not_of(" \t")));
  if (!line.starts_with(expected)) return false;
  line.remove_prefix(expected.size());
  return true;
}

// The value of a line NAME="value" of user-dirs.dirs, by the rules in Paths.h; empty for any other line.
std::string folderIn(std::string_view line, std::string_view name) {
  if (!takeOff(line, name) || !takeOff(line, "=") || !takeOff(line, "\"")) return "";
  constexpr std::string_view home = "$HOME";
  std::string value;
  if (line.starts_with(home)) {
    line.remove_prefix(home.size());
    value = knownHome();
    if (value.empty() || !(line.starts_with('/') || line.starts_with('"'))) return "";
    if (value == "/") value.clear();
  } else if (!line.starts_with('/')) {
    return "";
  }
  std::size_t i = 0;
  for (; i < line.size() && line[i] != '"'; ++i) {
    if (line[i] == '\\' && i + 1 < line.size()) ++i;
    value += line[i];
  }
  const bool isWhole = i < line.size() && value.find('\0') == value.npos;
  if (!isWhole) return "";
  return value.empty() ? "/" : withoutSlashAtEnd(value);
}

std::string fromUserDirectories(std::string_view name) {
  constexpr std::size_t most = 1 << 20;
  std::string text, answer;
  if (readOwnFile(configurationDirectory() + "/user-dirs.dirs", most, text) != 0) return "";
  std::string_view rest = text;
  while (!rest.empty()) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(std::min(rest.size(), line.size() + 1));
    if (std::string folder = folderIn(line, name); !folder.empty()) answer = std::move(folder);
  }
  return answer;
}

std::string inKnownHome(std::string_view name) { return knownHome().empty() ? "" : inHome(name); }

std::string userDirectory(std::string_view variable, std::string_view usual) {
  std::string path = fromUserDirectories(variable);
  return path.empty() ? inKnownHome(usual) : path;
}

}  // namespace

std::string homeDirectory() {
  std::string home = knownHome();
  return home.empty() ? "/" : home;
}

std::string homeDirectoryOfUser(const std::string& name) {
  if (name.find('\0') != name.npos) return "";  // the account database would use only the part before the NUL
  return homeOfAccount([&](passwd* entry, char* buffer, std::size_t size, passwd** found) {
    return getpwnam_r(name.c_str(), entry, buffer, size, found);
  });
}

std::string libraryDirectory() {
  std::string path = fromEnvironment("XDG_DATA_HOME");
  return path.empty() ? inKnownHome(".local/share") : path;
}
std::string configurationDirectory() { return environmentOrHome("XDG_CONFIG_HOME", ".config"); }
std::string cachesDirectory() {
  std::string path = fromEnvironment("XDG_CACHE_HOME");
  return path.empty() ? inKnownHome(".cache") : path;
}
std::string stateDirectory() { return environmentOrHome("XDG_STATE_HOME", ".local/state"); }
std::string documentsDirectory() { return userDirectory("XDG_DOCUMENTS_DIR", "Documents"); }
std::string downloadsDirectory() { return userDirectory("XDG_DOWNLOAD_DIR", "Downloads"); }
std::string desktopDirectory() { return userDirectory("XDG_DESKTOP_DIR", "Desktop"); }

std::string temporaryDirectory() {
  std::string path = fromEnvironment("TMPDIR");
  return path.empty() ? "/tmp" : path;
}

std::string expandTilde(std::string_view path) {
  if (!path.starts_with('~')) return std::string(path);
  const std::string_view name = path.substr(1, path.find('/') == path.npos ? path.npos : path.find('/') - 1);
  const std::string_view rest = path.substr(1 + name.size());
  std::string home = name.empty() ? homeDirectory() : homeDirectoryOfUser(std::string(name));
  if (home.empty()) return std::string(path);
  if (home == "/" && !rest.empty()) return std::string(rest);
  return home.append(rest);
}

}  // namespace norvik::kernel
