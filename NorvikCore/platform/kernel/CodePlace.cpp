#include "NorvikCore/platform/kernel/CodePlace.h"

#include "NorvikCore/platform/kernel/HostInfo.h"

#include <dlfcn.h>
#include <elf.h>
#include <link.h>

#include <atomic>
#include <cstddef>

namespace norvik::kernel {
namespace {

constinit std::atomic<const char*> programPath{nullptr};

struct SymbolTable {
  const ElfW(Sym) * symbols = nullptr;
  const char* names = nullptr;
  std::size_t count = 0;
};

/// The linker has added the module's base to these addresses, except in modules with read-only tables.
std::uintptr_t relocated(const link_map& module, ElfW(Addr) address) noexcept {
  return address < module.l_addr ? address + module.l_addr : address;
}

/// Only the hash table shows how many symbols there are: the last chain ends at the last symbol.
std::size_t symbolCount(const std::uint32_t* hash) noexcept {
  const std::uint32_t buckets = hash[0], first = hash[1], bloomWords = hash[2];
  const std::uint32_t* const bucket = hash + 4 + bloomWords * (sizeof(ElfW(Addr)) / sizeof(std::uint32_t));
  const std::uint32_t* const chain = bucket + buckets;
  std::uint32_t last = 0;
  for (std::uint32_t i = 0; i < buckets; ++i) last = bucket[i] > last ? bucket[i] : last;
  if (last < first) return first;
  while ((chain[last - first] & 1U) == 0) ++last;
  return std::size_t{last} + 1;
}

SymbolTable symbolsOf(const link_map& module) noexcept {
  SymbolTable table;
  for (const ElfW(Dyn)* entry = module.l_ld; entry && entry->d_tag != DT_NULL; ++entry) {
    const std::uintptr_t address = relocated(module, entry->d_un.d_ptr);
    switch (entry->d_tag) {
      case DT_SYMTAB:
        table.symbols = reinterpret_cast<const ElfW(Sym)*>(address);
        break;
      case DT_STRTAB:
        table.names = reinterpret_cast<const char*>(address);
        break;
      case DT_GNU_HASH:
        table.count = symbolCount(reinterpret_cast<const std::uint32_t*>(address));
        break;
      default:
        break;
    }
  }
  if (!table.symbols || !table.names) table.count = 0;
  return table;
}

}  // namespace

void prepareCodePlaces() { programPath.store(executablePath().c_str(), std::memory_order_release); }

CodePlace placeOfCode(std::uintptr_t address) noexcept {
  CodePlace place{.offset = address};
  dl_find_object found{};
  if (_dl_find_object(reinterpret_cast<void*>(address), &found) != 0) return place;  // takes no lock, unlike dladdr
  const link_map& module = *found.dlfo_link_map;
  place.offset = address - module.l_addr;
  const bool isProgram = !module.l_name || module.l_name[0] == '\0';
  place.module = isProgram ? programPath.load(std::memory_order_acquire) : module.l_name;
  const SymbolTable table = symbolsOf(module);
  for (std::size_t i = 0; i < table.count; ++i) {
    const ElfW(Sym)& symbol = table.symbols[i];
    if (symbol.st_shndx == SHN_UNDEF || (symbol.st_info & 0xFU) != STT_FUNC) continue;
    if (place.offset < symbol.st_value || place.offset - symbol.st_value >= symbol.st_size) continue;
    place.symbol = table.names + symbol.st_name;
    place.into = place.offset - symbol.st_value;
    break;
  }
  return place;
}

}  // namespace norvik::kernel
