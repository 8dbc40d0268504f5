// examples/payrun/OutputFile.h - files that exist completely or not at all, shared with the other programs.
#pragma once

#include "programs/common/OutputFile.h"

namespace payrun {

using programs::behindLink;
using programs::OutputFolder;
using programs::printWhole;
using programs::writeWhole;

}  // namespace payrun
