#include "Sources.h"

#include <sys/stat.h>

#include "LogFolder.h"
#include "PostgresSource.h"
#include "SqliteSource.h"

namespace norvik_log {

SourceKind kindOfSource(const std::string& name) {
  if (name.starts_with("postgresql://") || name.starts_with("postgres://")) return SourceKind::Postgres;
  struct stat status {};
  if (::stat(name.c_str(), &status) != 0) return SourceKind::File;
  if (S_ISDIR(status.st_mode)) return SourceKind::Folder;
  return S_ISREG(status.st_mode) && isSqliteFile(name) ? SourceKind::Sqlite : SourceKind::File;
}

std::unique_ptr<LogSource> sourceNamed(const std::string& name, const Reading& reading) {
  switch (kindOfSource(name)) {
    case SourceKind::Folder:
      return std::make_unique<FolderSource>(name, reading);
    case SourceKind::Sqlite:
      return std::make_unique<SqliteSource>(name, reading);
    case SourceKind::Postgres:
      return std::make_unique<PostgresSource>(name, reading);
    case SourceKind::File:
      break;
  }
  return std::make_unique<FileSource>(name, reading);
}

}  // namespace norvik_log
