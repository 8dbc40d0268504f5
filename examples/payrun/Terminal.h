// examples/payrun/Terminal.h - what standard output can show.
#pragma once

#include <cstddef>

#include "NorvikCore/platform/appkit/AttributedStringTerminal.h"

namespace payrun {

/// Plain where it is no terminal, where that is a dumb one, and where the user set NO_COLOR; else as many colours as
/// COLORTERM and TERM say.
norvik::TerminalColors outputColors();

/// In cells, 100 at most, for longer lines are hard to read; 80 where it is no terminal or does not say.
std::size_t outputWidth();

}  // namespace payrun
