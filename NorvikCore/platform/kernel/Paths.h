// NorvikCore/platform/kernel/Paths.h - the user's and the system's folders, by the XDG conventions.
//
//   kernel::libraryDirectory();                   // /home/pat/.local/share
//   kernel::expandTilde("~/Documents/pay.csv");   // /home/pat/Documents/pay.csv
//
// | folder        | environment      | without it                                   |
// | home          | HOME             | that of the user's account, else /           |
// | library       | XDG_DATA_HOME    | ~/.local/share; none where no home is known  |
// | configuration | XDG_CONFIG_HOME  | ~/.config                                    |
// | caches        | XDG_CACHE_HOME   | ~/.cache                                     |
// | state         | XDG_STATE_HOME   | ~/.local/state                               |
// | documents, downloads, desktop: what user-dirs.dirs in the configuration folder says, else ~/Documents and so on |
// | temporary     | TMPDIR           | /tmp                                         |
//
// The library folder holds what belongs to the user: application data in a folder per application, and "Logs". An
// environment variable counts only where its value begins with '/'. Answers have no '/' at their end; the folders need
// not exist. The environment is read each time. Any thread, while nobody changes the environment.
#pragma once  // include time: <string> is what it gives

#include "NorvikCore/platform/export.h"

#include <string>
#include <string_view>

namespace norvik::kernel {

[[nodiscard]] NK_EXPORT std::string homeDirectory();
/// Of a user by name; empty where there is no such user.
[[nodiscard]] NK_EXPORT std::string homeDirectoryOfUser(const std::string& name);

/// Empty where neither the environment nor an account tells.
[[nodiscard]] NK_EXPORT std::string libraryDirectory();
[[nodiscard]] NK_EXPORT std::string configurationDirectory();
[[nodiscard]] NK_EXPORT std::string cachesDirectory();
[[nodiscard]] NK_EXPORT std::string stateDirectory();
[[nodiscard]] NK_EXPORT std::string documentsDirectory();
[[nodiscard]] NK_EXPORT std::string downloadsDirectory();
[[nodiscard]] NK_EXPORT std::string desktopDirectory();
[[nodiscard]] NK_EXPORT std::string temporaryDirectory();

/// "~" and "~name" at the beginning become the user's home folder; a path that begins otherwise, or with the name of an
/// unknown user, stays as it is.
[[nodiscard]] NK_EXPORT std::string expandTilde(std::string_view path);

}  // namespace norvik::kernel
