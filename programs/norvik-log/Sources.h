// programs/norvik-log/Sources.h - which kind of source a word of the command line is.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "FileSource.h"
#include "LogSource.h"

namespace norvik_log {

enum class SourceKind { File, Folder, Sqlite, Postgres };

/// By its beginning where it is a file. What cannot be looked at is a file, which says so when it is opened.
[[nodiscard]] SourceKind kindOfSource(const std::string& name);

/// `name` outlives the source and its records.
[[nodiscard]] std::unique_ptr<LogSource> sourceNamed(const std::string& name, const Reading& reading);

}  // namespace norvik_log
