// examples/payrun/Terminal.h - the colours and the width of standard output.
#pragma once

#include <cstddef>

#include "NorvikCore/platform/appkit/AttributedStringTerminal.h"

namespace payrun {

/// Plain if standard output is not a terminal or is a dumb one, or if NO_COLOR is set. Otherwise the number of colours
/// that COLORTERM and TERM name.
norvik::TerminalColors outputColors();

/// In cells. At most 100, because longer lines are hard to read. 80 if standard output is not a terminal or has no
/// width.
std::size_t outputWidth();

}  // namespace payrun
