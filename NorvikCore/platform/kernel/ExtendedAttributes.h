// NorvikCore/platform/kernel/ExtendedAttributes.h - named marks on files, beside their content.
//
//   kernel::setAttribute(path, "payroll.locked", "");
//   std::string value;
//   kernel::getAttribute(path, "payroll.locked", value);      // 0: there, and empty
//   kernel::getAttribute(path, "payroll.sealed", value);      // attributeAbsent
//   kernel::renameWithAttributes(path, newPath);              // the mark goes along
//
// An attribute "x" is the kernel's extended attribute "user.x". On a file system that has none (ramfs, some network
// disks) each attribute is a side file in the same folder instead: attribute "payroll.locked" of "pay.csv" is the
// content of ".pay.csv.attr-payroll.locked" (in the attribute's name '%' is written %25, '/' %2F, and ".attr-"
// .attr%2D, so that names stay apart). A side file does not follow a file that is renamed or removed by other means
// than the two operations at the end of this header, and one that stays behind would mark the next file of that name.
//
// Paths are followed through symbolic links, except by those two and where Links::stay is given: then the last name of
// the path may be a link, a pipe or a device without anything being followed or opened; it has no attributes
// (attributeAbsent) and can be given none (EPERM). Operations answer 0 or an error number (see
// SystemError.h). Any thread; two that change the same attribute leave one of the two values whole.
#pragma once  // include time: <string> and <vector> are result types

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/kernel/FileStatus.h"
#include "NorvikCore/platform/kernel/SystemError.h"

#include <string>
#include <string_view>
#include <vector>

namespace norvik::kernel {

/// attributeAbsent where the file has no attribute of that name; ENOENT where there is no file. `value` is set on
/// success only.
[[nodiscard]] NK_EXPORT int getAttribute(const std::string& path, std::string_view name, std::string& value,
                                         Links links = Links::follow);

/// True where getAttribute() would succeed; any failure counts as no.
[[nodiscard]] NK_EXPORT bool hasAttribute(const std::string& path, std::string_view name, Links links = Links::follow);

/// Adds or replaces. File systems limit names (to about 250 bytes) and values (to some kilobytes): ERANGE,
/// ENAMETOOLONG, ENOSPC or E2BIG beyond that.
[[nodiscard]] NK_EXPORT int setAttribute(const std::string& path, std::string_view name, std::string_view value,
                                         Links links = Links::follow);

/// attributeAbsent where there is nothing to remove.
[[nodiscard]] NK_EXPORT int removeAttribute(const std::string& path, std::string_view name,
                                            Links links = Links::follow);

/// The attributes' names in alphabetical order. Those outside "user." are not ours and are left out.
[[nodiscard]] NK_EXPORT int listAttributes(const std::string& path, std::vector<std::string>& names);

enum class Replace { yes, no };

/// rename(2) of a file or folder, with its attributes: a file that stood at `to` is replaced, its attributes too, or
/// with Replace::no makes the renaming fail (EEXIST). The error is that of the file's renaming, else the first of a
/// side file's; then the file has its new name without some attribute.
[[nodiscard]] NK_EXPORT int renameWithAttributes(const std::string& from, const std::string& to,
                                                 Replace replace = Replace::yes);

/// Removes a file or an empty folder, with its attributes.
[[nodiscard]] NK_EXPORT int removeWithAttributes(const std::string& path);

/// Takes out of the names of a folder's entries those that are side files of others among them, where that is how
/// the folder's file system keeps attributes.
NK_EXPORT void leaveOutSideFiles(const std::string& folder, std::vector<std::string>& names);

/// Makes every file system look like one without extended attributes while one of these lives; for tests.
class NK_EXPORT WithoutExtendedAttributes {
 public:
  WithoutExtendedAttributes() noexcept;
  ~WithoutExtendedAttributes();
  WithoutExtendedAttributes(const WithoutExtendedAttributes&) = delete;
  WithoutExtendedAttributes& operator=(const WithoutExtendedAttributes&) = delete;
};

}  // namespace norvik::kernel
