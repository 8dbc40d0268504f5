// programs/norvik-log/Sources.h - the kind of source that a word of the command line names.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "FileSource.h"
#include "LogSource.h"

namespace norvik_log {

enum class SourceKind { File, Folder, Sqlite, Postgres };

/// Decides by the beginning of an address, or by the first bytes of a file. A path that cannot be examined counts as a
/// file, and opening it reports the error.
[[nodiscard]] SourceKind kindOfSource(const std::string& name);

/// `name` must outlive the source and its records.
[[nodiscard]] std::unique_ptr<LogSource> sourceNamed(const std::string& name, const Reading& reading);

}  // namespace norvik_log
