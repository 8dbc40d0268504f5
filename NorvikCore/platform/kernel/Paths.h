// NorvikCore/platform/kernel/Paths.h - the user's and the system's folders, by the XDG conventions.
//
//   kernel::libraryDirectory();                   // /home/pat/.local/share
//   kernel::expandTilde("~/Documents/pay.csv");   // /home/pat/Documents/pay.csv
//
// | folder        | environment      | without it                                   |
// | home          | HOME             | that of the user's account, else /           |
// | library       | XDG_DATA_HOME    | ~/.local/share; none if no home is known     |
// | configuration | XDG_CONFIG_HOME  | ~/.config                                    |
// | caches        | XDG_CACHE_HOME   | ~/.cache; none if no home is known           |
// | state         | XDG_STATE_HOME   | ~/.local/state                               |
// | documents     | user-dirs.dirs   | ~/Documents; none if no home is known        |
// | downloads     | user-dirs.dirs   | ~/Downloads; none if no home is known        |
// | desktop       | user-dirs.dirs   | ~/Desktop; none if no home is known          |
// | temporary     | TMPDIR           | /tmp                                         |
//
// The library folder contains the user's data: application data in a folder per application, and "Logs". An environment
// variable has an effect only if its value begins with '/'. Results have no trailing '/'; the folders need not exist.
// The environment and user-dirs.dirs are read on each call. Any thread, while no thread changes the environment.
//
// user-dirs.dirs is a file in the configuration folder in which each line names a folder; desktop environments write
// and read it:
//
//   XDG_DOCUMENTS_DIR="$HOME/Papers"
//   XDG_DOWNLOAD_DIR="/data/new \"files\""
//
// A value is written in quotation marks. It is "$HOME", which is the home folder itself, or it begins with "$HOME/" or
// '/'. A backslash before a character makes it a plain one. The last valid line for a folder has effect; other lines
// are ignored. The whole file is ignored if it cannot be read, is not a regular file or is larger than a megabyte. It
// is also ignored if it belongs to another user and its path leads through a folder that is writable by all users.
#pragma once  // include time: <string> is a result type

#include "NorvikCore/platform/export.h"

#include <string>
#include <string_view>

namespace norvik::kernel {

[[nodiscard]] NK_EXPORT std::string homeDirectory();
/// The home folder of a user by name; empty if there is no such user.
[[nodiscard]] NK_EXPORT std::string homeDirectoryOfUser(const std::string& name);

// Empty if there is none.
[[nodiscard]] NK_EXPORT std::string libraryDirectory();
[[nodiscard]] NK_EXPORT std::string configurationDirectory();
[[nodiscard]] NK_EXPORT std::string cachesDirectory();
[[nodiscard]] NK_EXPORT std::string stateDirectory();
[[nodiscard]] NK_EXPORT std::string documentsDirectory();
[[nodiscard]] NK_EXPORT std::string downloadsDirectory();
[[nodiscard]] NK_EXPORT std::string desktopDirectory();
[[nodiscard]] NK_EXPORT std::string temporaryDirectory();

/// "~" and "~name" at the beginning are replaced by the user's home folder. A path that begins otherwise, or with the
/// name of an unknown user, is unchanged.
[[nodiscard]] NK_EXPORT std::string expandTilde(std::string_view path);

}  // namespace norvik::kernel
