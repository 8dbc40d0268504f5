#include "InputError.h"

#include "Characters.h"

namespace payrun {

InputError::InputError(const std::string& file, Place place, const std::string& problem)
    : std::runtime_error(file + ":" + std::to_string(place.line) + ":" + std::to_string(place.column) + ": " +
                         problem) {}

std::string quoted(std::string_view text) { return "\"" + oneLine(text, 60) + "\""; }

}  // namespace payrun
