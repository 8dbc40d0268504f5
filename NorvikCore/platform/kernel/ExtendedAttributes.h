// NorvikCore/platform/kernel/ExtendedAttributes.h - named attributes of files, stored beside their content.
//
//   kernel::setAttribute(path, "payroll.locked", "");
//   std::string value;
//   kernel::getAttribute(path, "payroll.locked", value);      // 0: present, and empty
//   kernel::getAttribute(path, "payroll.sealed", value);      // attributeAbsent
//   kernel::renameWithAttributes(path, newPath);              // the attribute is moved too
//
// An attribute "x" is the kernel's extended attribute "user.x". On a file system that has none (ramfs, some network
// disks) each attribute is a side file in the same folder instead: attribute "payroll.locked" of "pay.csv" is the
// content of ".pay.csv.attr-payroll.locked". In the attribute's name '%' is written %25, '/' %2F, and ".attr-"
// .attr%2D, so that different names stay different. If a file is renamed or removed by other means than the two
// operations at the end of this header, its side files stay behind, and become attributes of the next file of that
// name.
//
// Paths are followed through symbolic links, except by those two operations and with Links::stay. Then the last name of
// the path may be a link, a pipe or a device, and nothing is followed or opened; such an entry has no attributes
// (attributeAbsent) and cannot be given any (EPERM). Operations return 0 or an error number (see SystemError.h). Any
// thread; if two threads change the same attribute, one of the two values remains complete.
#pragma once  // include time: <string> and <vector> are result types

#include "NorvikCore/platform/export.h"
#include "NorvikCore/platform/kernel/FileStatus.h"
#include "NorvikCore/platform/kernel/SystemError.h"

#include <string>
#include <string_view>
#include <vector>

namespace norvik::kernel {

/// attributeAbsent if the file has no attribute of that name; ENOENT if there is no file. `value` is set only on
/// success.
[[nodiscard]] NK_EXPORT int getAttribute(const std::string& path, std::string_view name, std::string& value,
                                         Links links = Links::follow);

/// True if getAttribute() would succeed; false on any failure.
[[nodiscard]] NK_EXPORT bool hasAttribute(const std::string& path, std::string_view name, Links links = Links::follow);

/// Adds or replaces. File systems limit names (to about 250 bytes) and values (to some kilobytes): ERANGE,
/// ENAMETOOLONG, ENOSPC or E2BIG beyond that.
[[nodiscard]] NK_EXPORT int setAttribute(const std::string& path, std::string_view name, std::string_view value,
                                         Links links = Links::follow);

/// attributeAbsent if there is no such attribute.
[[nodiscard]] NK_EXPORT int removeAttribute(const std::string& path, std::string_view name,
                                            Links links = Links::follow);

/// The attributes' names in alphabetical order. Attributes outside "user." belong to others and are omitted.
[[nodiscard]] NK_EXPORT int listAttributes(const std::string& path, std::vector<std::string>& names);

/// Gives `to` the attributes of `from`, in addition to its own.
[[nodiscard]] NK_EXPORT_FOR_TESTS int copyAttributes(const std::string& from, const std::string& to);

enum class Replace { yes, no };

/// rename(2) of a file or folder, with its attributes. A file at `to` is replaced with its attributes; with Replace::no
/// the call fails instead (EEXIST). The error is that of renaming the file, else the first of renaming a side file; in
/// the latter case the file has its new name and lacks some attribute.
[[nodiscard]] NK_EXPORT int renameWithAttributes(const std::string& from, const std::string& to,
                                                 Replace replace = Replace::yes);

/// Removes a file or an empty folder, with its attributes.
[[nodiscard]] NK_EXPORT int removeWithAttributes(const std::string& path);

/// Removes from the names of a folder's entries those that are side files of other entries, if the folder's file system
/// stores attributes in that way.
NK_EXPORT void leaveOutSideFiles(const std::string& folder, std::vector<std::string>& names);

/// While an object of this class lives, every file system appears to have no extended attributes; for tests.
class NK_EXPORT WithoutExtendedAttributes {
 public:
  WithoutExtendedAttributes() noexcept;
  ~WithoutExtendedAttributes();
  WithoutExtendedAttributes(const WithoutExtendedAttributes&) = delete;
  WithoutExtendedAttributes& operator=(const WithoutExtendedAttributes&) = delete;
};

}  // namespace norvik::kernel
