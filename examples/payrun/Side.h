// examples/payrun/Side.h - the side of its place at which a text stands.
#pragma once

namespace payrun {

enum class Side { Left, Right };

}  // namespace payrun
