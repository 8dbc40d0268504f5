// tests/logging/console_child.cpp - a process that logs to the console as its arguments say; DDTTYLogger_test.cpp reads
// its standard error. Each argument is a command, followed by the command's arguments. Commands print to standard
// output.
//
//   console_child colors on flag 4 0,255,0 - say 4 0 "40 payslips written"
//
// Its own writev() replaces the system's: it counts the calls to standard error, and lets them fail. Memory is refused
// if a command asks for that.
#include "NorvikCore/logging/DDLog.h"
#include "NorvikCore/logging/DDTTYLogger.h"
#include "NorvikCore/logging/DDTTYLoggerColorProfile.h"
#include "NorvikCore/platform/dispatch/Semaphore.h"
#include "NorvikCore/platform/foundation/NSTimeZone.h"
#include "tests/support/LittleMemory.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <string>
#include <utility>
#include <vector>

namespace {

std::atomic<int> calls = 0, pieces = 0;
std::atomic<int> interruptions = 0;  // calls that still fail with EINTR
std::atomic<int> failure = 0;        // the error of every call
std::atomic<int> mostBytes = 0;      // the most bytes that the next calls write

}  // namespace

extern "C" NK_EXPORT ssize_t writev(int descriptor, const iovec* parts, int count) {
  static const auto original = reinterpret_cast<decltype(&writev)>(dlsym(RTLD_NEXT, "writev"));
  if (descriptor != STDERR_FILENO) return original(descriptor, parts, count);
  ++calls;
  pieces = count;
  if (interruptions > 0) {
    --interruptions;
    errno = EINTR;
    return -1;
  }
  if (failure != 0) {
    errno = failure;
    return -1;
  }
  if (mostBytes > 0) {
    std::string bytes;
    for (int i = 0; i < count; ++i) bytes.append(static_cast<const char*>(parts[i].iov_base), parts[i].iov_len);
    return write(descriptor, bytes.data(), std::min(bytes.size(), static_cast<std::size_t>(mostBytes)));
  }
  return original(descriptor, parts, count);
}

namespace {

using namespace norvik;

enum class Answer : std::uint8_t { copy, same, nothing };

class Formatter : public DDLogFormatter {
  NK_OBJECT(Formatter, DDLogFormatter)
  explicit Formatter(Answer answer) : answer_(answer) {}
  std::optional<NSString> formatLogMessage(const DDLogMessage& message) override {
    if (answer_ == Answer::nothing) return std::nullopt;
    return answer_ == Answer::same ? message.logMsg() : NSString(message.logMsg().str());
  }

 private:
  Answer answer_;
};

/// Another logger besides the console.
class Counter : public DDAbstractLogger {
  NK_OBJECT(Counter, DDAbstractLogger)
  void logMessage(const DDLogMessage&) override { ++count; }
  bool takesRuns() const noexcept override { return true; }
  std::size_t logMessages(const DDLogRun& run) override {
    count += static_cast<int>(run.count());
    return run.count();
  }
  std::atomic<int> count = 0;
};

Ref<NSColor> colorOf(const std::string& text) {
  int red = 0, green = 0, blue = 0;
  if (std::sscanf(text.c_str(), "%d,%d,%d", &red, &green, &blue) != 3) return nullptr;
  return NSColor::colorWithRed(red / 255.0, green / 255.0, blue / 255.0, 1);
}

void say(int flag, int context, const NSString& text, const Value& tag = {}, bool asynchronous = false) {
  DDLog::log(asynchronous, LOG_LEVEL_VERBOSE, flag, context, "f", "g", 1, tag, "%@", text);
}

class Commands {
 public:
  explicit Commands(std::deque<std::string> words) : words_(std::move(words)) {}

  int run() {
    DDTTYLogger& console = *DDTTYLogger::sharedInstance();
    const auto counter = make<Counter>();
    const dispatch_semaphore_t released = dispatch_semaphore_create(0);
    DDLog::addLogger(DDTTYLogger::sharedInstance());
    while (!words_.empty()) {
      const std::string command = text();
      if (command == "colors") {
        console.setColorsEnabled(text() == "on");
      } else if (command == "colors?") {
        std::printf("%d\n", console.colorsEnabled());
      } else if (command == "flag") {
        const int flag = number();
        const auto foreground = color();
        console.setForegroundColor_backgroundColor_forFlag(foreground, color(), flag);
      } else if (command == "context") {
        const int flag = number(), context = number();
        const auto foreground = color();
        console.setForegroundColor_backgroundColor_forFlag_context(foreground, color(), flag, context);
      } else if (command == "tag") {
        const NSString tag = text();
        const auto foreground = color();
        console.setForegroundColor_backgroundColor_forTag(foreground, color(), tag);
      } else if (command == "no-tag") {
        console.setForegroundColor_backgroundColor_forTag(color(), nullptr, Value());
      } else if (command == "defaults") {
        console.loadDefaultColorProfiles();
      } else if (command == "clear-flag") {
        console.clearColorsForFlag(number());
      } else if (command == "clear-context") {
        const int flag = number();
        console.clearColorsForFlag(flag, number());
      } else if (command == "clear-tag") {
        console.clearColorsForTag(NSString(text()));
      } else if (command == "clear-flags") {
        console.clearColorsForAllFlags();
      } else if (command == "clear-tags") {
        console.clearColorsForAllTags();
      } else if (command == "clear") {
        console.clearAllColors();
      } else if (command == "on-its-queue") {  // a change on the logger's queue is made at once
        DDLog::flushLog();
        dispatch_sync(console.loggerQueue(), [&] {
          console.setForegroundColor_backgroundColor_forFlag(colorOf("255,0,0"), nullptr, LOG_FLAG_INFO);
          console.logMessage(*DDLogMessage::initWithLogMsg("at once", 4, 4, 0, "f", "g", 1, Value(), 0));
        });
      } else if (command == "switch-on-on-its-queue") {
        DDLog::flushLog();
        dispatch_sync(console.loggerQueue(), [&] {
          console.setColorsEnabled(true);
          console.logMessage(*DDLogMessage::initWithLogMsg("before its turn", 1, 1, 0, "f", "g", 1, Value(), 0));
        });
      } else if (command == "say-with-less-memory") {  // logs a text, each time with one more allocation that succeeds
        const NSString line = text();
        DDLog::flushLog();
        const auto message = DDLogMessage::initWithLogMsg(line, 4, 4, 0, "f", "g", 1, Value(), 0);
        bool isShort = true;
        for (int granted = 0; isShort; ++granted) {
          dispatch_sync(console.loggerQueue(), [&] {
            const test::LittleMemory memory(granted);
            console.logMessage(*message);
            isShort = memory.wasRefused();
          });
        }
      } else if (command == "copy") {
        console.setLogFormatter(make<Formatter>(Answer::copy));
      } else if (command == "same") {
        console.setLogFormatter(make<Formatter>(Answer::same));
      } else if (command == "drop") {
        console.setLogFormatter(make<Formatter>(Answer::nothing));
      } else if (command == "zone") {
        NSTimeZone::setDefaultTimeZone(NSTimeZone::timeZoneWithName(text()));
      } else if (command == "say") {
        const int flag = number(), context = number();
        say(flag, context, text());
      } else if (command == "say-tagged") {
        const int flag = number(), context = number();
        const NSString tag = text();
        say(flag, context, text(), tag);
      } else if (command == "say-long") {  // this many letters
        say(LOG_FLAG_INFO, 0, NSString(std::string(static_cast<std::size_t>(number()), 'x')));
      } else if (command == "say-zero") {
        say(LOG_FLAG_INFO, 0, NSString(std::string_view("a\0b", 3)));
      } else if (command == "say-run") {  // this many lines, which come as runs
        dispatch_async(DDLog::loggingQueue(), [released] { dispatch_semaphore_wait(released, DISPATCH_TIME_FOREVER); });
        const int count = number();
        for (int i = 0; i < count; ++i) say(LOG_FLAG_INFO, 0, std::to_string(i), Value(), true);
        dispatch_semaphore_signal(released);
        DDLog::flushLog();
      } else if (command == "say-many") {  // this many lines of 100 bytes
        const int count = number();
        for (int i = 0; i < count; ++i) {
          std::string line = std::to_string(i);
          line.resize(99, '.');
          say(LOG_FLAG_INFO, 0, NSString(line), Value(), true);
        }
        DDLog::flushLog();
      } else if (command == "say-until-taken") {
        const NSString line = text();
        for (const int before = calls; calls == before;) say(LOG_FLAG_INFO, 0, line);
      } else if (command == "fork") {
        DDLog::flushLog();
        const pid_t child = fork();
        if (child == 0) {
          say(LOG_FLAG_INFO, 0, "child " + NSString(std::to_string(getpid())));
          _exit(0);
        }
        int status = 0;
        waitpid(child, &status, 0);
      } else if (command == "thread") {
        std::printf("%x\n", static_cast<unsigned>(gettid()));
      } else if (command == "index") {
        std::printf("%zu\n", DDTTYLogger::codeIndexForColor(color()));
      } else if (command == "load-colors") {
        if (text() == "16") {
          DDTTYLogger::initialize_colors_16();
        } else {
          DDTTYLogger::initialize_colors_256();
        }
      } else if (command == "profile") {
        const auto foreground = color();
        const auto profile = DDTTYLoggerColorProfile::initWithForegroundColor(foreground, color(), 3, 7);
        std::string description = profile->description().str();
        char address[32];
        std::snprintf(address, sizeof address, "%p", static_cast<void*>(profile.get()));
        if (const std::size_t at = description.find(address); at != description.npos) {
          description.replace(at, std::string_view(address).size(), "HERE");
        }
        std::printf("%s\n%zu %zu %zu %zu %zu\n", description.c_str(), profile->fgCodeIndex(), profile->bgCodeIndex(),
                    profile->fgCodeLen(), profile->bgCodeLen(), profile->resetCodeLen());
      } else if (command == "code-of-red") {
        auto profile =
            DDTTYLoggerColorProfile::initWithForegroundColor(NSColor::redColor(), nullptr, LOG_FLAG_ERROR, 7);
        std::printf("%s\n", std::string(profile->fgCode()).c_str());
      } else if (command == "second") {
        std::printf("%s\n", make<DDTTYLogger>() ? "another" : "none");
      } else if (command == "count-beside") {
        DDLog::addLogger(counter);
      } else if (command == "counted") {
        std::printf("%d\n", counter->count.load());
      } else if (command == "forget-calls") {
        calls = 0;
      } else if (command == "calls") {
        DDLog::flushLog();
        std::printf("%d of %d\n", calls.load(), pieces.load());
      } else if (command == "interrupt") {
        interruptions = number();
      } else if (command == "fail") {
        failure = number();
      } else if (command == "take-at-most") {
        mostBytes = number();
      } else if (command == "close") {
        close(STDERR_FILENO);
      } else if (command == "non-blocking") {
        if (fcntl(STDERR_FILENO, F_SETFL, fcntl(STDERR_FILENO, F_GETFL) | O_NONBLOCK) != 0) return 3;
      } else if (command == "meet") {  // the test continues, then this process does
        std::printf("met\n");
        std::fflush(stdout);
        if (std::getchar() != '\n') return 3;
      } else {
        return 2;
      }
    }
    DDLog::flushLog();
    std::fflush(stdout);
    return 0;
  }

 private:
  std::string text() {
    if (words_.empty()) std::_Exit(2);
    std::string word = words_.front();
    words_.pop_front();
    return word;
  }
  int number() { return std::atoi(text().c_str()); }
  Ref<NSColor> color() { return colorOf(text()); }

  std::deque<std::string> words_;
};

}  // namespace

int main(int argc, char** argv) {
  alarm(60);  // the signal ends a process that hangs
  return Commands({argv + 1, argv + argc}).run();
}
