// NorvikCore/logging/DDTTYLogger.h - writes each message as one line to standard error, in colours if that is a
// terminal that shows them.
//
//   const Ref<DDTTYLogger>& console = DDTTYLogger::sharedInstance();
//   console->setColorsEnabled(true);                                   // errors red, warnings orange
//   console->setForegroundColor_backgroundColor_forFlag(NSColor::grayColor(), nullptr, LOG_FLAG_VERBOSE);
//   DDLog::addLogger(console);
//   DDLogError("no bank account for %@", name);
//   // 2021-05-10 14:30:12:045 payrun[4711:12a7] no bank account for Zoë Smith
//
// The time is local. The numbers are those of the process and of the thread (in hexadecimal). If the logger has a
// formatter, the line is the formatter's text, unless that is the message's own text (isIdenticalTo; empty texts are
// identical): then the line is as above. The text is written unchanged, including control characters and zero bytes;
// DDLogLineFormatter escapes them. A line feed is added to every text. A text that ends with a line feed is therefore
// followed by an empty line. Milliseconds are rounded down, also before 2001, so that they belong to the second shown.
// From the year 10000 the milliseconds have one digit less.
//
// The environment at the first use of the class determines the colours, whether or not standard error is a terminal. If
// TERM contains "color", there are 256 colours if it also contains "256", else 16. If TERM is not set and XcodeColors
// is YES, the colours are those of a debugger's console. Otherwise there are none. A colour is shown as the terminal's
// nearest colour.
//
// Each line is one call of writev() to the current descriptor 2, so lines of several processes up to 4096 bytes do not
// mix. If another process or printf() wrote part of a line, the logger does not end it first; its line continues that
// one. If standard error does not accept a line:
//   - closed, no reader, or a full disk: the line is lost without a report, and the next one is attempted. SIGPIPE
//     does no harm;
//   - interrupted, or accepted in part: the rest is written before any other line;
//   - full: the logger waits, at most a second. Then that line and the following lines are lost, without another wait,
//     until standard error accepts output again. Other loggers are not delayed any further. (If the process cannot
//     start a thread, the logger waits for a blocked terminal or pipe.)
//   - no memory for the line: it is lost without a report, and the next one is attempted;
//   - begun before a fork: the parent completes the line, the child does not.
//
// Threads: operations that set and clear may be called on any thread. They take effect for messages logged afterwards;
//          on the logger's own queue they take effect at once, except setColorsEnabled(), which is always enqueued.
//          colorsEnabled() waits for the logging queue and then for the logger's queue, and must not be called on
//          either.
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

  /// Every other operation calls this on first use. It reads the environment and creates the shared instance.
  static void initialize();
  /// The only instance: make<DDTTYLogger>() always returns an empty Ref.
  [[nodiscard]] static const Ref<DDTTYLogger>& sharedInstance();
  DDTTYLogger();

  /// Load the colours of a terminal, unless colours are loaded. initialize() calls one of these if TERM requests it.
  static void initialize_colors_16();
  static void initialize_colors_256();
  /// The components, 0 to 1; all 0 for an empty colour. Null pointers are skipped.
  static void getRed(double* red, double* green, double* blue, const Ref<NSColor>& fromColor);
  /// The index, from 0, of the nearest loaded colour, the first of several; 0 if none are loaded. With 256 colours the
  /// first 16 are left out: index 0 is colour 16.
  [[nodiscard]] static std::size_t codeIndexForColor(const Ref<NSColor>& color);

  /// Gives errors the foreground 214, 57, 30 and warnings 204, 121, 32, in every context, as if they were set in this
  /// order. Replaces earlier colours of both; other profiles stay.
  void loadDefaultColorProfiles();

  /// Initially false.
  [[nodiscard]] bool colorsEnabled() const;
  /// If no flag has a profile, this also loads the default profiles, even when it switches colours off.
  void setColorsEnabled(bool enabled);

  /// The colours of messages whose flag is in `mask`, in one context or in every context. An empty colour leaves the
  /// console's own. Setting the same mask and context again replaces the colours. If several profiles apply to a
  /// message, the first for its context is used, or, if there is none, the last for every context.
  void setForegroundColor_backgroundColor_forFlag(const Ref<NSColor>& foregroundColor,
                                                  const Ref<NSColor>& backgroundColor, int mask);
  void setForegroundColor_backgroundColor_forFlag_context(const Ref<NSColor>& foregroundColor,
                                                          const Ref<NSColor>& backgroundColor, int mask, int context);
  /// The colours of messages with an equal tag, which take precedence over those for flags. An absent tag is ignored.
  void setForegroundColor_backgroundColor_forTag(const Ref<NSColor>& foregroundColor,
                                                 const Ref<NSColor>& backgroundColor, const Value& tag);

  /// Clears colours that were set for context 0. To clear colours that were set without a context, call
  /// clearColorsForFlag(mask, DDTTYLoggerColorProfile::everyContext).
  void clearColorsForFlag(int mask);
  void clearColorsForFlag(int mask, int context);
  void clearColorsForTag(const Value& tag);
  void clearColorsForAllFlags();
  void clearColorsForAllTags();
  void clearAllColors();

  void logMessage(const DDLogMessage& message) override;
  [[nodiscard]] bool takesRuns() const noexcept override;
  /// Writes each line by a call of its own, as logMessage() does.
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
  /// On the logger's queue the change is made at once.
  template <class Change>
  void change(Change change);

  detail::Hidden<State> state_;  // empty unless it is the shared instance
};

}  // namespace norvik
