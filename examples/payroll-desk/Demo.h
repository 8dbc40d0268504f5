// examples/payroll-desk/Demo.h - a scripted session without a screen, which saves pictures of the window.
#pragma once

#include <filesystem>

#include "DeskWindow.h"
#include "MainThreadWatch.h"

namespace desk {

/// Opens the employer's folder, searches, edits by keys, prints and saves, all in `target`, which gets a copy of the
/// folder, the pictures and the PDF file. Prints what it did and the longest time of the main thread. Returns the
/// program's exit status: 1 if a step went wrong.
int runDemo(MainThreadWatch& application, const std::filesystem::path& employer, const std::filesystem::path& target);

}  // namespace desk
