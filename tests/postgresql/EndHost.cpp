// A program for DDPostgreSQLLogger_end_test.cpp. It uses OpenSSL, loads the plug-in of its first argument, lets the
// plug-in log to the PostgreSQL server of the second argument, and ends. Its output is what is written to the system
// console.
#include <dlfcn.h>
#include <openssl/rand.h>
#include <unistd.h>

#include <cstdlib>

int main(int count, char** arguments) {
  if (count != 3 || dup2(STDOUT_FILENO, STDERR_FILENO) < 0) return 97;
  unsigned char byte = 0;
  if (RAND_bytes(&byte, 1) != 1) return 96;
  void* const plugin = dlopen(arguments[1], RTLD_NOW);
  void* const logTo = plugin != nullptr ? dlsym(plugin, "logTo") : nullptr;
  if (logTo == nullptr) return 95;
  reinterpret_cast<void (*)(const char*)>(logTo)(arguments[2]);
  return 0;
}
