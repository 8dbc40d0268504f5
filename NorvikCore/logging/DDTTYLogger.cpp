#include "NorvikCore/logging/DDTTYLogger.h"

#include "NorvikCore/logging/DDLog.h"
#include "NorvikCore/logging/DDTTYLoggerColorProfile.h"
#include "NorvikCore/logging/internal/ConsoleColors.h"
#include "NorvikCore/logging/internal/ConsoleOutput.h"
#include "NorvikCore/logging/internal/ConsoleStamp.h"
#include "NorvikCore/platform/foundation/NSProcessInfo.h"
#include "NorvikCore/platform/kernel/Fork.h"
#include "NorvikCore/platform/kernel/MadeOnce.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <new>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace norvik {
namespace {

using Profile = DDTTYLoggerColorProfile;

constexpr double byteRange = 255;

Ref<NSColor> colorOfBytes(int red, int green, int blue) {
  return NSColor::colorWithRed(red / byteRange, green / byteRange, blue / byteRange, 1);
}

/// If there is no memory for a line, the line is lost.
template <class Write>
void unlessMemoryLacks(const Write& write) {
  try {
    write();
  } catch (const std::bad_alloc&) {  // not reported, because that would need memory too
    return;
  }
}

}  // namespace

struct DDTTYLogger::State {
  State();

  /// Sets the number of the current process, which may be a forked child. The name does not change.
  void nameProcess();
  [[nodiscard]] const Profile* profileFor(const Value* tag, int flag, int context) const;
  void setProfile(const Ref<Profile>& profile);
  [[nodiscard]] auto find(int mask, int context) const;
  void writeFormatted(std::string_view text, const Profile* profile);
  void write(std::string_view text, const Profile* profile, Date timestamp, std::uint32_t threadId);

  detail::ConsoleStamp stamp;
  std::string app;
  std::size_t appLen = 0;
  std::string processID;
  std::size_t pidLen = 0;
  std::uint32_t generation = 0;  // the process of processID (kernel::forkGeneration)
  bool colorsEnabled = false;
  std::vector<Ref<Profile>> colorProfilesArray;
  std::unordered_map<Value, Ref<Profile>> colorProfilesDict;
  detail::ConsoleOutput output;
  std::string text;  // of one message of a run; a member so that its memory is reused
};

DDTTYLogger::State::State() {
  constexpr std::size_t usualProfiles = 8;
  colorProfilesArray.reserve(usualProfiles);
  colorProfilesDict.reserve(usualProfiles);
  const NSString appName = NSProcessInfo::processInfo().processName();
  app = appName.utf8();
  appLen = app.size();
  nameProcess();
}

void DDTTYLogger::State::nameProcess() {
  processID = std::to_string(NSProcessInfo::processInfo().processIdentifier());
  pidLen = processID.size();
  generation = kernel::forkGeneration();
}

const Profile* DDTTYLogger::State::profileFor(const Value* tag, int flag, int context) const {
  if (!colorsEnabled) return nullptr;
  if (tag && !tag->isAbsent()) {
    const auto tagged = colorProfilesDict.find(*tag);
    if (tagged != colorProfilesDict.end()) return tagged->second.get();
  }
  const Profile* found = nullptr;
  for (const Ref<Profile>& profile : colorProfilesArray) {
    if ((profile->mask() & flag) == 0) continue;
    if (profile->context() == context) return profile.get();
    if (profile->context() == Profile::everyContext) found = profile.get();
  }
  return found;
}

auto DDTTYLogger::State::find(int mask, int context) const {
  return std::find_if(colorProfilesArray.begin(), colorProfilesArray.end(), [=](const Ref<Profile>& profile) {
    return profile->mask() == mask && profile->context() == context;
  });
}

void DDTTYLogger::State::setProfile(const Ref<Profile>& profile) {
  const auto place = find(profile->mask(), profile->context());
  if (place == colorProfilesArray.end()) {
    colorProfilesArray.push_back(profile);
  } else {
    colorProfilesArray[static_cast<std::size_t>(place - colorProfilesArray.begin())] = profile;
  }
}

void DDTTYLogger::State::writeFormatted(std::string_view line, const Profile* profile) {
  const std::string_view pieces[] = {profile ? profile->fgCode() : "", profile ? profile->bgCode() : "", line, "\n",
                                     profile ? profile->resetCode() : ""};
  output.write(pieces);
}

void DDTTYLogger::State::write(std::string_view line, const Profile* profile, Date timestamp, std::uint32_t threadId) {
  if (generation != kernel::forkGeneration()) nameProcess();
  char thread[8];
  const char* const threadEnd = std::to_chars(thread, std::end(thread), threadId, 16).ptr;
  const std::string_view pieces[] = {profile ? profile->fgCode() : "",
                                     profile ? profile->bgCode() : "",
                                     stamp.text(timestamp),
                                     " ",
                                     {app.data(), appLen},
                                     "[",
                                     {processID.data(), pidLen},
                                     ":",
                                     {thread, static_cast<std::size_t>(threadEnd - thread)},
                                     "] ",
                                     line,
                                     "\n",
                                     profile ? profile->resetCode() : ""};
  output.write(pieces);
}

// The one instance

void DDTTYLogger::initialize() { (void)sharedInstance(); }

const Ref<DDTTYLogger>& DDTTYLogger::sharedInstance() {
  return kernel::madeOnce([] {
    (void)detail::consoleMode();
    return new Ref<DDTTYLogger>(make<DDTTYLogger>(Shared{}));
  });
}

DDTTYLogger::DDTTYLogger() = default;

DDTTYLogger::DDTTYLogger(Shared) : state_(new State) {}

DDTTYLogger::~DDTTYLogger() = default;

bool DDTTYLogger::init() { return state_ && DDAbstractLogger::init(); }

std::optional<NSString> DDTTYLogger::loggerName() { return "cocoa.quillmarch.ttyLogger"; }

// Colours

void DDTTYLogger::initialize_colors_16() {
  initialize();
  detail::loadConsoleColors16();
}

void DDTTYLogger::initialize_colors_256() {
  initialize();
  detail::loadConsoleColors256();
}

void DDTTYLogger::getRed(double* red, double* green, double* blue, const Ref<NSColor>& fromColor) {
  if (red) *red = fromColor ? fromColor->redComponent() : 0;
  if (green) *green = fromColor ? fromColor->greenComponent() : 0;
  if (blue) *blue = fromColor ? fromColor->blueComponent() : 0;
}

std::size_t DDTTYLogger::codeIndexForColor(const Ref<NSColor>& color) {
  initialize();
  double red = 0, green = 0, blue = 0;
  getRed(&red, &green, &blue, color);
  return detail::nearestConsoleColor(red, green, blue);
}

template <class Change>
void DDTTYLogger::changeLater(Change change) {
  dispatch_async(DDLog::loggingQueue(), [self = ref(*this), change] {
    dispatch_async(self->loggerQueue(), [self, change] { change(*self); });
  });
}

template <class Change>
void DDTTYLogger::change(Change change) {
  if (isOnInternalLoggerQueue()) return change(*this);
  changeLater(change);
}

void DDTTYLogger::loadDefaultColorProfiles() {
  setForegroundColor_backgroundColor_forFlag(colorOfBytes(214, 57, 30), nullptr, LOG_FLAG_ERROR);
  setForegroundColor_backgroundColor_forFlag(colorOfBytes(204, 121, 32), nullptr, LOG_FLAG_WARN);
}

bool DDTTYLogger::colorsEnabled() const {
  const dispatch_queue_t queue = const_cast<DDTTYLogger*>(this)->loggerQueue();
  return dispatch_sync(DDLog::loggingQueue(),
                       [&] { return dispatch_sync(queue, [this] { return state_->colorsEnabled; }); });
}

void DDTTYLogger::setColorsEnabled(bool enabled) {
  changeLater([enabled](DDTTYLogger& logger) {
    logger.state_->colorsEnabled = enabled;
    if (logger.state_->colorProfilesArray.empty()) logger.loadDefaultColorProfiles();
  });
}

void DDTTYLogger::setForegroundColor_backgroundColor_forFlag(const Ref<NSColor>& foregroundColor,
                                                             const Ref<NSColor>& backgroundColor, int mask) {
  setForegroundColor_backgroundColor_forFlag_context(foregroundColor, backgroundColor, mask, Profile::everyContext);
}

void DDTTYLogger::setForegroundColor_backgroundColor_forFlag_context(const Ref<NSColor>& foregroundColor,
                                                                     const Ref<NSColor>& backgroundColor, int mask,
                                                                     int context) {
  change([profile = make<Profile>(foregroundColor, backgroundColor, mask, context)](DDTTYLogger& logger) {
    logger.state_->setProfile(profile);
  });
}

void DDTTYLogger::setForegroundColor_backgroundColor_forTag(const Ref<NSColor>& foregroundColor,
                                                            const Ref<NSColor>& backgroundColor, const Value& tag) {
  if (tag.isAbsent()) return;
  change([profile = make<Profile>(foregroundColor, backgroundColor, 0, 0), tag](DDTTYLogger& logger) {
    logger.state_->colorProfilesDict.insert_or_assign(tag, profile);
  });
}

void DDTTYLogger::clearColorsForFlag(int mask) { clearColorsForFlag(mask, 0); }

void DDTTYLogger::clearColorsForFlag(int mask, int context) {
  change([mask, context](DDTTYLogger& logger) {
    std::vector<Ref<Profile>>& profiles = logger.state_->colorProfilesArray;
    const auto place = logger.state_->find(mask, context);
    if (place != profiles.end()) profiles.erase(place);
  });
}

void DDTTYLogger::clearColorsForTag(const Value& tag) {
  change([tag](DDTTYLogger& logger) { logger.state_->colorProfilesDict.erase(tag); });
}

void DDTTYLogger::clearColorsForAllFlags() {
  change([](DDTTYLogger& logger) { logger.state_->colorProfilesArray.clear(); });
}

void DDTTYLogger::clearColorsForAllTags() {
  change([](DDTTYLogger& logger) { logger.state_->colorProfilesDict.clear(); });
}

void DDTTYLogger::clearAllColors() {
  change([](DDTTYLogger& logger) {
    logger.state_->colorProfilesArray.clear();
    logger.state_->colorProfilesDict.clear();
  });
}

// Writing

void DDTTYLogger::write(const DDLogMessage& message) {
  NSString text = message.logMsg();
  bool isFormatted = false;
  if (DDLogFormatter* own = formatter().get()) {
    std::optional<NSString> formatted = own->formatLogMessage(message);
    if (!formatted) return;
    isFormatted = !formatted->isIdenticalTo(text);
    text = *std::move(formatted);
  }
  const std::string replaced = text.isWellFormed() ? std::string() : text.utf8();
  const std::string_view line = text.isWellFormed() ? text.view() : replaced;
  const Profile* const profile = state_->profileFor(&message.tag(), message.logFlag(), message.logContext());
  if (isFormatted) {
    state_->writeFormatted(line, profile);
  } else {
    state_->write(line, profile, message.timestamp(), message.machThreadID());
  }
}

void DDTTYLogger::logMessage(const DDLogMessage& message) {
  unlessMemoryLacks([&] { write(message); });
}

bool DDTTYLogger::takesRuns() const noexcept { return true; }

std::size_t DDTTYLogger::logMessages(const DDLogRun& run) {
  const bool needsMessage = formatter() || (state_->colorsEnabled && !state_->colorProfilesDict.empty());
  for (const DDLogEntry& entry : run) {
    unlessMemoryLacks([&] {
      if (needsMessage) return write(entry.message());
      state_->text.clear();
      entry.appendText(state_->text);
      state_->write(state_->text, state_->profileFor(nullptr, entry.logFlag(), entry.logContext()), entry.timestamp(),
                    entry.machThreadID());
    });
  }
  constexpr std::size_t keptMemory = 256 << 10;
  if (state_->text.capacity() > keptMemory) state_->text = {};
  return run.count();
}

}  // namespace norvik
