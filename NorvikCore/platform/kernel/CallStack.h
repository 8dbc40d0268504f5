// NorvikCore/platform/kernel/CallStack.h - how the program got here, as text.
//
//   for (const std::string& frame : kernel::callStackSymbols()) kernel::writeSystemLog(frame);
//   // 0   payrun                        0x00005581c2f3a1d4 norvik::runPayroll(norvik::Employer const&) + 84
//
// A frame is: its number, the file that holds the code, the address, the function and how many bytes into it. Functions
// that the file does not export have no name (link a program with -rdynamic, or ENABLE_EXPORTS in CMake, to see its
// own): then the file's name and the distance from its beginning stand there, which addr2line understands. Any thread,
// not in signal handlers. Naming a frame costs some microseconds, remembering its address 0.1.
#pragma once  // include time: <string> and <vector> are result types

#include "NorvikCore/platform/export.h"

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace norvik::kernel {

/// The addresses the callers will return to, innermost first; the first is in the function that calls this one, unless
/// `skip` frames more are left out. 128 frames at most.
[[nodiscard]] NK_EXPORT std::vector<void*> callStackAddresses(std::size_t skip = 0);

/// Words for such addresses.
[[nodiscard]] NK_EXPORT std::vector<std::string> symbolsOfAddresses(std::span<void* const> addresses);

/// Both at once.
[[nodiscard]] NK_EXPORT std::vector<std::string> callStackSymbols(std::size_t skip = 0);

/// The C++ name behind a linker's name; other names come back as they are.
[[nodiscard]] NK_EXPORT std::string demangled(const char* symbol);

}  // namespace norvik::kernel
