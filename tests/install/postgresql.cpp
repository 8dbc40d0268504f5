// A program that uses the component PostgreSQL, found by find_package.
#include "NorvikCore/postgresql/DDPostgreSQLLogger.h"

int main() {
  using namespace norvik;
  const auto logger = DDPostgreSQLLogger::initWithConnectionString("host=/nowhere dbname=payroll");
  return logger->loggerName() == "cocoa.quillmarch.postgresqlLogger" ? 0 : 1;
}
