// NorvikCore/platform/kernel/internal/SideFiles.h - attributes as hidden files, for file systems without attributes.
//
// The file that has the attributes must exist; these functions do not check it. Names and errors as in
// ExtendedAttributes.h.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace norvik::kernel::detail {

/// ".pay.csv.attr-payroll.locked" beside the file.
[[nodiscard]] std::string sideFilePath(const std::string& path, std::string_view attribute);

/// The name of the file to which a side file belongs; empty if the name is not a side file's.
[[nodiscard]] std::string_view ownerOfSideFile(std::string_view name) noexcept;

int getSideFile(const std::string& path, std::string_view attribute, std::string& value);
int setSideFile(const std::string& path, std::string_view attribute, std::string_view value);
int removeSideFile(const std::string& path, std::string_view attribute);
int listSideFiles(const std::string& path, std::vector<std::string>& attributes);
/// Removes the side files of `to`, then moves those of `from` to `to`.
int moveSideFiles(const std::string& from, const std::string& to);
int removeSideFiles(const std::string& path);

}  // namespace norvik::kernel::detail
