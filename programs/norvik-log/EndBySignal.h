// programs/norvik-log/EndBySignal.h - what is put in order when a signal ends the process.
#pragma once

namespace norvik_log {

/// From here on SIGHUP, SIGINT, SIGQUIT, SIGPIPE and SIGTERM first remove the draft of a page and switch the terminal's
/// colours off, unless they are ignored; then they end the process as they usually do. Before other threads are
/// started.
void endInOrderBySignals();

/// Standard output is a terminal, and colours are written to it. A terminal that takes nothing for a second keeps them.
void switchColoursOffAtEnd() noexcept;

}  // namespace norvik_log
