// examples/payrun/IniFile.h - reads `key = value` lines under `[section]` lines, in their order.
//
// Blank lines and lines that begin with ';' or '#' are ignored. Spaces and tabs around keys and values are removed.
#pragma once

#include <string_view>
#include <vector>

#include "TextFile.h"

namespace payrun {

struct IniEntry {
  std::string_view section, key, value;
  std::size_t keyOffset = 0, valueOffset = 0;
};

/// The entries of a file, which must outlive them. Throws InputError for any other line, and for a repeated key.
std::vector<IniEntry> readIni(const TextFile& file);

}  // namespace payrun
