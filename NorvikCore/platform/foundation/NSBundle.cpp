#include "NorvikCore/platform/foundation/NSBundle.h"

#include "NorvikCore/platform/foundation/NSLog.h"
#include "NorvikCore/platform/kernel/HostInfo.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"
#include "NorvikCore/platform/kernel/SystemError.h"
#include "NorvikCore/platform/kernel/internal/OwnFile.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <string>
#include <string_view>

namespace norvik {
namespace {

constexpr std::string_view identifierKey = "CFBundleIdentifier";

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view whiteSpace = " \t\r";
  const std::size_t first = text.find_first_not_of(whiteSpace);
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(whiteSpace) - first + 1);
}

/// False if there is no such file.
bool readInformation(const std::string& path, NSMutableDictionary& values) {
  constexpr std::size_t most = 1 << 20;
  std::string content;
  const int error = kernel::readOwnFile(path, most, content);
  if (error == ENOENT) return false;
  if (error != 0) NSLog("Unable to read the bundle's information %@: %@", path, kernel::errorText(error));
  std::string_view rest = content;
  for (int number = 1; !rest.empty(); ++number) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(std::min(rest.size(), line.size() + 1));
    const std::string_view text = trimmed(line);
    if (text.empty() || text.front() == '#') continue;
    const std::size_t equals = text.find('=');
    if (equals == text.npos) {
      NSLog("The bundle's information %@ has no '=' in line %d", path, number);
      continue;
    }
    values.setObject(NSString(trimmed(text.substr(equals + 1))), NSString(trimmed(text.substr(0, equals))));
  }
  return true;
}

std::string folderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == path.npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
}

Ref<NSDictionary> informationOf(const std::string& executable) {
  const std::string name = executable.substr(executable.rfind('/') + 1);
  const Ref<NSMutableDictionary> values = NSMutableDictionary::dictionary();
  values->setObject(NSString(name), "CFBundleExecutable");
  values->setObject(NSString(name), "CFBundleName");
  if (name.empty() || !executable.starts_with('/')) return values->copy();
  const std::string folder = folderOf(executable);
  if (!readInformation(folder + "/" + name + ".info", *values))
    readInformation(folder + "/../share/" + name + "/" + name + ".info", *values);
  return values->copy();
}

std::string mainExecutable() {
  const std::string& path = kernel::executablePath();
  return path.empty() ? kernel::processName() : path;
}

NSBundle* mainOnce() {
  return &kernel::madeOnce([] { return make<NSBundle>(NSString(mainExecutable())).take(); });
}

}  // namespace

NSBundle::NSBundle(const NSString& executablePath)
    : executablePath_(executablePath),
      read_(informationOf(executablePath.str())),
      set_(NSMutableDictionary::dictionary()) {}

NSBundle::~NSBundle() = default;

NSBundle& NSBundle::mainBundle() { return *mainOnce(); }

Ref<NSBundle> NSBundle::bundleWithExecutablePath(const NSString& path) { return make<NSBundle>(path); }

bool NSBundle::isMain() const noexcept { return this == mainOnce(); }

NSString NSBundle::bundlePath() const { return folderOf(executablePath_.str()); }

std::optional<NSString> NSBundle::bundleIdentifier() const {
  const Value value = objectForInfoDictionaryKey(identifierKey);
  const NSString* text = value.string();
  if (text == nullptr || text->length() == 0) return std::nullopt;
  return *text;
}

Value NSBundle::objectForInfoDictionaryKey(const NSString& key) const {
  {
    const MutexLock lock(mutex_);
    if (const Value* value = set_->find(key)) return *value;
  }
  if (key == identifierKey && isMain()) {
    const char* identifier = std::getenv("NORVIK_BUNDLE_IDENTIFIER");
    if (identifier != nullptr && *identifier != '\0') return NSString(identifier);
  }
  return read_->objectForKey(key);
}

void NSBundle::setObject_forInfoDictionaryKey(const Value& value, const NSString& key) {
  Value old;  // released after the lock
  const MutexLock lock(mutex_);
  old = set_->objectForKey(key);
  if (value.isAbsent()) {
    set_->removeObjectForKey(key);
  } else {
    set_->setObject(value, key);
  }
}

Ref<NSDictionary> NSBundle::infoDictionary() const {
  const Ref<NSMutableDictionary> all = NSMutableDictionary::dictionaryWithDictionary(*read_);
  const Value identifier = objectForInfoDictionaryKey(identifierKey);
  if (!identifier.isAbsent()) all->setObject(identifier, identifierKey);
  const MutexLock lock(mutex_);
  all->addEntriesFromDictionary(*set_);
  return all->copy();
}

}  // namespace norvik
