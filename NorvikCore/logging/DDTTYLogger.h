// NorvikCore/logging/DDTTYLogger.h - writes each message as one line to standard error, in colours where that is a
// terminal that shows them.
//
//   const Ref<DDTTYLogger>& console = DDTTYLogger::sharedInstance();
//   console->setColorsEnabled(true);                                   // errors red, warnings orange
//   console->setForegroundColor_backgroundColor_forFlag(NSColor::grayColor(), nullptr, LOG_FLAG_VERBOSE);
//   DDLog::addLogger(console);
//   DDLogError("no bank account for %@", name);
//   // 2021-05-10 14:30:12:045 payrun[4711:12a7] no bank account for Zoë Smith
//
// The time is local, the numbers are those of the process and of the thread (in hexadecimal). With a formatter the line
// is what that gives; one that gives the message's own text (isIdenticalTo; empty texts are identical) counts as none.
// The text is written as it is, control characters and a zero byte included; DDLogLineFormatter escapes them. A line
// feed is added to every text, to one that ends with a line feed too: an empty line follows it. Milliseconds are
// rounded down, before 2001 too, so that they are those of the second shown. The year 10000 takes a digit from them.
//
// What the environment says when the class is first used decides on the colours, whatever standard error is: 256 or 16
// where TERM contains "color" (with or without "256"), those of a debugger's console where TERM is not set and
// XcodeColors is YES, none elsewhere. A colour is shown as the nearest one of the terminal's.
//
// Each line is one call of writev() to descriptor 2, whatever that is at the time, so lines of several processes do not
// mix up to 4096 bytes. Half a line of another process, or of printf(), is not ended first: a line goes on behind it.
// What becomes of a line that is not taken:
//   - closed, or no reader, or a full disk: it is lost, silently, and the next one is attempted; SIGPIPE does no harm;
//   - interrupted, or taken in part: the rest follows before any other line;
//   - full: it is waited for, a second at most. Then that line and those that follow are lost, without another wait,
//     until standard error takes something again. Other loggers are not held up any further. (In a process that can
//     start no more threads, a terminal or pipe that blocks is waited for.)
//   - no memory for it: it is lost, silently, and the next one is attempted;
//   - begun before a fork: the parent finishes it, the child does not.
//
// Threads: operations that set and clear from any thread; they take effect for messages logged afterwards, on the
//          logger's own queue at once, except setColorsEnabled(), which always takes its turn. colorsEnabled() waits
//          for the logging queue and then for the logger's queue, and must not be called on either.
// Errors:  none are reported.
#pragma once

#include "NorvikCore/logging/DDAbstractLogger.h"
#include "NorvikCore/platform/appkit/NSColor.h"
#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/kernel/Hidden.h"

#include <cstddef>
#include <optional>

namespace norvik {

class NK_EXPORT DDTTYLogger : public DDAbstractLogger {
  NK_OBJECT(DDTTYLogger, DDAbstractLogger)

  /// Done by every other operation on first use: reads the environment and makes the shared instance.
  static void initialize();
  /// The only one: make<DDTTYLogger>() gives an empty Ref, always.
  [[nodiscard]] static const Ref<DDTTYLogger>& sharedInstance();
  DDTTYLogger();

  /// Load the colours of a terminal, unless some are loaded. initialize() does it where TERM asks for it.
  static void initialize_colors_16();
  static void initialize_colors_256();
  /// The components, 0 to 1; of an empty colour 0. Null pointers are passed over.
  static void getRed(double* red, double* green, double* blue, const Ref<NSColor>& fromColor);
  /// The place, from 0, of the nearest of the colours that are loaded, the first of several; 0 where none are. Of the
  /// 256 colours the first 16 are left out: 0 is number 16.
  [[nodiscard]] static std::size_t codeIndexForColor(const Ref<NSColor>& color);

  /// Gives errors the foreground 214, 57, 30 and warnings 204, 121, 32, in every context, as if they were set in this
  /// order: what was set for either before is replaced, other profiles stay.
  void loadDefaultColorProfiles();

  /// False unless it was set.
  [[nodiscard]] bool colorsEnabled() const;
  /// Also loads the default profiles where no flag has a profile, even when colours are switched off.
  void setColorsEnabled(bool enabled);

  /// The colours of messages whose flag is in `mask`, in one context or in every one; an empty one leaves the console's
  /// own. The same mask and context again replaces them. If several apply to a message, the first of its context
  /// counts, and without one the last of every context.
  void setForegroundColor_backgroundColor_forFlag(const Ref<NSColor>& foregroundColor,
                                                  const Ref<NSColor>& backgroundColor, int mask);
  void setForegroundColor_backgroundColor_forFlag_context(const Ref<NSColor>& foregroundColor,
                                                          const Ref<NSColor>& backgroundColor, int mask, int context);
  /// Of messages with an equal tag: these count before those for flags. An absent tag is ignored.
  void setForegroundColor_backgroundColor_forTag(const Ref<NSColor>& foregroundColor,
                                                 const Ref<NSColor>& backgroundColor, const Value& tag);

  /// Clears what was set for context 0. It does not clear what was set without a context: that is
  /// clearColorsForFlag(mask, DDTTYLoggerColorProfile::everyContext).
  void clearColorsForFlag(int mask);
  void clearColorsForFlag(int mask, int context);
  void clearColorsForTag(const Value& tag);
  void clearColorsForAllFlags();
  void clearColorsForAllTags();
  void clearAllColors();

  void logMessage(const DDLogMessage& message) override;
  [[nodiscard]] bool takesRuns() const noexcept override;
  /// Each line by a call of its own, as logMessage() does.
  [[nodiscard]] std::size_t logMessages(const DDLogRun& run) override;
  /// "cocoa.quillmarch.ttyLogger".
  [[nodiscard]] std::optional<NSString> loggerName() override;

 protected:
  ~DDTTYLogger() override;
  bool init() override;

 private:
  struct Shared {};
  struct State;
  template <class T, class... Args>
  friend Ref<T> make(Args&&... args);
  explicit DDTTYLogger(Shared);

  void write(const DDLogMessage& message);
  template <class Change>
  void changeLater(Change change);
  /// At once on the logger's queue.
  template <class Change>
  void change(Change change);

  detail::Hidden<State> state_;  // empty unless it is the shared instance
};

}  // namespace norvik
