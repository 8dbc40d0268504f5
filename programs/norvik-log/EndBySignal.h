// programs/norvik-log/EndBySignal.h - cleanup when a signal ends the process.
#pragma once

namespace norvik_log {

/// Installs handlers for SIGHUP, SIGINT, SIGQUIT, SIGPIPE and SIGTERM, unless they are ignored. A handler removes the
/// draft of a page, switches the terminal's colours off, and then ends the process by the signal's default action. Call
/// it before other threads are started.
void endInOrderBySignals();

/// Call it if standard output is a terminal and colours are written to it. If the terminal accepts no bytes for a
/// second, its colours stay as they are.
void switchColoursOffAtEnd() noexcept;

}  // namespace norvik_log
