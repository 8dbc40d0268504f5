// NorvikCore/platform/kernel/CodePlace.h - where an address of the program's code lies, found out without a lock or
// memory, so that a handler of a fatal signal can ask.
//
//   const kernel::CodePlace place = kernel::placeOfCode(address);
//   // addr2line -e place.module place.offset
//
// Reads the tables of the dynamic linker: functions that a file does not export have no name there.
//
// Any thread, signal handlers too.
#pragma once

#include "NorvikCore/platform/export.h"

#include <cstdint>

namespace norvik::kernel {

struct CodePlace {
  const char* module = nullptr;  ///< the file with the code, as it was loaded; null where no file has the address
  std::uintptr_t offset = 0;     ///< the address in that file, as addr2line takes it; without a module the address
  const char* symbol = nullptr;  ///< the linker's name of the function; null where it has none
  std::uintptr_t into = 0;       ///< how many bytes into the function
};

[[nodiscard]] NK_EXPORT CodePlace placeOfCode(std::uintptr_t address) noexcept;

/// To be called before the first crash: finds out the path of the program.
NK_EXPORT void prepareCodePlaces();

}  // namespace norvik::kernel
