// examples/payrun/InputError.h - input that cannot be paid: where it is, what it says and what is wrong with it.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

namespace payrun {

/// A place in a file: lines and columns count from 1, columns in characters.
struct Place {
  std::size_t line = 1, column = 1;
};

/// What what() says: `items.csv:12:31: "12.3x" is no amount`.
class InputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
  InputError(const std::string& file, Place place, const std::string& problem);
};

/// `text` between quotation marks, fit for one line of a terminal: control characters and bytes that are not UTF-8 as
/// \xNN, and cut after some 60 characters.
std::string quoted(std::string_view text);

}  // namespace payrun
