// examples/payrun/OutputFile.h - files that are there in whole or not at all, as every program here writes them.
#pragma once

#include "programs/common/OutputFile.h"

namespace payrun {

using programs::behindLink;
using programs::OutputFolder;
using programs::printWhole;
using programs::writeWhole;

}  // namespace payrun
