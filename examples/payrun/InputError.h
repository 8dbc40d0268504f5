// examples/payrun/InputError.h - an error in the input: its place, the text and the problem.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>

namespace payrun {

/// A place in a file. Lines and columns count from 1, and columns count characters.
struct Place {
  std::size_t line = 1, column = 1;
};

/// what() has the form `items.csv:12:31: "12.3x" is not an amount`.
class InputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
  InputError(const std::string& file, Place place, const std::string& problem);
};

/// `text` in quotation marks, for one line of a terminal: control characters and bytes that are not UTF-8 become \xNN,
/// and the text is cut after about 60 characters.
std::string quoted(std::string_view text);

}  // namespace payrun
