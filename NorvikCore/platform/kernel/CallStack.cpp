#include "NorvikCore/platform/kernel/CallStack.h"

#include <cxxabi.h>
#include <dlfcn.h>
#include <execinfo.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace norvik::kernel {
namespace {

std::string symbolOf(std::size_t number, void* address) {
  Dl_info info{};
  const auto value = reinterpret_cast<std::uintptr_t>(address);
  // If the call never returns, its return address may belong to the next function. So the byte before it is looked up.
  const bool known = dladdr(reinterpret_cast<void*>(value - 1), &info) != 0;
  const char* file = known && info.dli_fname ? info.dli_fname : "?";
  if (const char* slash = std::strrchr(file, '/')) file = slash + 1;
  std::array<char, 96> head;
  std::snprintf(head.data(), head.size(), "%-3zu %-30.50s 0x%016zx ", number, file, value);
  std::string line = head.data();
  if (known && info.dli_sname) {
    line +=
        demangled(info.dli_sname) + " + " + std::to_string(value - reinterpret_cast<std::uintptr_t>(info.dli_saddr));
  } else {
    std::array<char, 24> distance;
    std::snprintf(distance.data(), distance.size(), "0x%zx",
                  known ? value - reinterpret_cast<std::uintptr_t>(info.dli_fbase) : value);
    line += std::string(file) + " + " + distance.data();
  }
  return line;
}

std::vector<void*> addressesFrom(void* caller, std::size_t skip) {
  constexpr std::size_t limit = 128;
  std::array<void*, limit + 8> frames;
  const int count = backtrace(frames.data(), static_cast<int>(frames.size()));
  auto* const end = frames.data() + count;
  auto* first = std::find(frames.data(), end, caller);
  first += std::min(skip, static_cast<std::size_t>(end - first));
  return std::vector<void*>(first, first + std::min(limit, static_cast<std::size_t>(end - first)));
}

// Removes the tags of the compiler's library version, which are of no use to the reader.
void eraseABITags(std::string& name) {
  constexpr std::string_view tag = "[abi:cxx11]";
  for (std::size_t at = 0; (at = name.find(tag, at)) != name.npos;) name.erase(at, tag.size());
}

}  // namespace

std::string demangled(const char* symbol) {
  int status = 0;
  char* name = abi::__cxa_demangle(symbol, nullptr, nullptr, &status);
  std::string text = name ? name : symbol;
  std::free(name);
  eraseABITags(text);
  return text;
}

// The caller is identified by its return address. So frames of this library, or of a tool that observes the program,
// may lie inside of it in any number.
[[gnu::noinline]] std::vector<void*> callStackAddresses(std::size_t skip) {
  return addressesFrom(__builtin_return_address(0), skip);
}

std::vector<std::string> symbolsOfAddresses(std::span<void* const> addresses) {
  std::vector<std::string> symbols;
  symbols.reserve(addresses.size());
  for (void* address : addresses) symbols.push_back(symbolOf(symbols.size(), address));
  return symbols;
}

[[gnu::noinline]] std::vector<std::string> callStackSymbols(std::size_t skip) {
  return symbolsOfAddresses(addressesFrom(__builtin_return_address(0), skip));
}

}  // namespace norvik::kernel
