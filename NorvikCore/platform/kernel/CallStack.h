// NorvikCore/platform/kernel/CallStack.h - the call stack as text.
//
//   for (const std::string& frame : kernel::callStackSymbols()) kernel::writeSystemLog(frame);
//   // 0   payrun                        0x00005581c2f3a1d4 norvik::runPayroll(norvik::Employer const&) + 84
//
// A frame is: its number, the file that contains the code, the address, the function and the offset in it in bytes.
// Functions that the file does not export have no name (link a program with -rdynamic, or ENABLE_EXPORTS in CMake, to
// see its own). The frame then shows the file's name and the offset from its beginning, which addr2line accepts. Any
// thread, not in signal handlers. Naming a frame costs some microseconds, recording its address 0.1.
#pragma once  // include time: <string> and <vector> are result types

#include "NorvikCore/platform/export.h"

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace norvik::kernel {

/// The return addresses of the callers, innermost first. The first is in the function that calls this one, unless
/// `skip` omits more frames. 128 frames at most.
[[nodiscard]] NK_EXPORT std::vector<void*> callStackAddresses(std::size_t skip = 0);

/// The texts for such addresses.
[[nodiscard]] NK_EXPORT std::vector<std::string> symbolsOfAddresses(std::span<void* const> addresses);

/// Both in one call.
[[nodiscard]] NK_EXPORT std::vector<std::string> callStackSymbols(std::size_t skip = 0);

/// The C++ name for a linker's name; other names are returned unchanged.
[[nodiscard]] NK_EXPORT std::string demangled(const char* symbol);

}  // namespace norvik::kernel
