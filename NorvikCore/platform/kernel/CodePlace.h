// NorvikCore/platform/kernel/CodePlace.h - the module and function of a code address, found without locks or
// allocation, so that a handler of a fatal signal can call it.
//
//   const kernel::CodePlace place = kernel::placeOfCode(address);
//   // addr2line -e place.module place.offset
//
// The functions read the tables of the dynamic linker. Functions that a file does not export have no name there.
//
// Any thread, also in signal handlers.
#pragma once

#include "NorvikCore/platform/export.h"

#include <cstdint>

namespace norvik::kernel {

struct CodePlace {
  const char* module = nullptr;  ///< the file that contains the code, as loaded; null if no file has it
  std::uintptr_t offset = 0;     ///< the address in that file, as addr2line takes it; without a module the address
  const char* symbol = nullptr;  ///< the linker's name of the function; null if it has none
  std::uintptr_t into = 0;       ///< the offset in the function, in bytes
};

[[nodiscard]] NK_EXPORT CodePlace placeOfCode(std::uintptr_t address) noexcept;

/// Call it before the first crash: it determines the path of the program.
NK_EXPORT void prepareCodePlaces();

}  // namespace norvik::kernel
