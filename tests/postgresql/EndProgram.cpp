// A program for DDPostgreSQLLogger_end_test.cpp. It logs to the PostgreSQL server of its second argument, and ends in
// the way that its first argument names. Its output is what it writes to the system console.
#include <openssl/crypto.h>
#include <openssl/rand.h>
#include <openssl/ssl.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "NorvikCore/logging/DDLog.h"
#include "NorvikCore/logging/DDLogMacros.h"
#include "NorvikCore/postgresql/DDPostgreSQLLogger.h"

namespace {

using namespace norvik;

bool logsAtTheVeryEnd = false;

// Created before main(), and destroyed after it.
struct Static {
  ~Static() {
    if (logsAtTheVeryEnd) DDLogError("from a static object");
  }
} const object;

void useOpenSSL() {
  unsigned char byte = 0;
  if (RAND_bytes(&byte, 1) != 1) std::abort();
  SSL_CTX* const context = SSL_CTX_new(TLS_client_method());
  if (context == nullptr) std::abort();
  SSL_CTX_free(context);
}

void waitForALine() {
  for (char byte = 0; read(STDIN_FILENO, &byte, 1) == 1 && byte != '\n';) continue;
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 3 || dup2(STDOUT_FILENO, STDERR_FILENO) < 0) return 97;
  const std::string way = arguments[1];
  const auto is = [&way](const char* word) { return way.find(word) != std::string::npos; };
  ddLogLevel = LOG_LEVEL_VERBOSE;

  if (is("openssl-first")) useOpenSSL();
  DDLog::addLogger(DDPostgreSQLLogger::initWithConnectionString(NSString(arguments[2])));
  if (is("openssl-between")) useOpenSSL();
  if (is("connected")) {
    DDLogError("connected");
    DDLog::flushLog();
  }
  if (is("openssl-after")) useOpenSSL();
  if (is("restarted")) {
    if (write(STDOUT_FILENO, "restart\n", 8) != 8) return 96;
    waitForALine();
  }
  logsAtTheVeryEnd = is("static");
  DDLogInfo("last");
  if (is("cleaned-up")) OPENSSL_cleanup();
  if (is("exit")) std::exit(0);
  return 0;
}
