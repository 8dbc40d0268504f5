// The console logger, with colours if standard error is a terminal.
#include "NorvikCore/logging/DDLogMacros.h"
#include "NorvikCore/logging/DDTTYLogger.h"

#include <unistd.h>

using namespace norvik;

int main() {
  const Ref<DDTTYLogger>& console = DDTTYLogger::sharedInstance();
  console->setColorsEnabled(isatty(STDERR_FILENO));  // errors red, warnings orange, unless other colours were set
  console->setForegroundColor_backgroundColor_forFlag(NSColor::grayColor(), nullptr, LOG_FLAG_INFO);
  console->setForegroundColor_backgroundColor_forTag(NSColor::blueColor(), nullptr, "bacs");
  DDLog::addLogger(console);

  ddLogLevel = LOG_LEVEL_INFO;
  DDLogError("no bank account for %@", NSString("Zoë Smith"));
  // 2021-05-10 14:30:12:045 console_example[4711:12a7] no bank account for Zoë Smith
}
