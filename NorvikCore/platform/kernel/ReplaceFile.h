// NorvikCore/platform/kernel/ReplaceFile.h - replaces the content of a file as a whole or not at all.
//
//   if (const int error = kernel::replaceFile(path, text)) report(kernel::errorText(error));   // the old content
//   stands
#pragma once  // include time: <string> is an argument type

#include "NorvikCore/platform/export.h"

#include <string>
#include <string_view>

namespace norvik::kernel {

/// Creates a file with that content, or replaces the content of an existing one. 0 or an error number. Any thread.
///
/// The new content of an existing regular file is written to a temporary file in the same folder, synchronized with the
/// disk, given the owner, permissions and attributes of the old file, and renamed over it. So after a failure, and
/// after a crash, the file has its old content or the new one. A symbolic link stays, and its target is replaced. A
/// reader that has the file open keeps the old content. A crash may leave the temporary file, named ".UUID.new".
///
/// The content is written into the existing file, which a failure then leaves incomplete, if replacing it would change
/// more than its content: a file with several names (hard links) or an access list, a pipe or device, a file whose
/// owner or group the process may not give to another file, and a file in a folder in which the process may not create
/// one.
[[nodiscard]] NK_EXPORT_FOR_TESTS int replaceFile(const std::string& path, std::string_view content);

}  // namespace norvik::kernel
