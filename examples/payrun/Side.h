// examples/payrun/Side.h - the alignment of a text.
#pragma once

namespace payrun {

enum class Side { Left, Right };

}  // namespace payrun
