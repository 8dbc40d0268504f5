// tests/support/AnotherUser.h - a test process continues as a user without rights, for tests of operations that root is
// never refused.
#pragma once

#include <grp.h>
#include <unistd.h>

#include <string>

namespace norvik::test {

constexpr uid_t userWithoutRights = 65534;

/// From now on the process runs as that user, and the folder belongs to that user. Returns false if the process is not
/// root's.
inline bool becomeUserWithoutRights(const std::string& folder) {
  return geteuid() == 0 && chown(folder.c_str(), userWithoutRights, userWithoutRights) == 0 &&
         setgroups(0, nullptr) == 0 && setresgid(userWithoutRights, userWithoutRights, userWithoutRights) == 0 &&
         setresuid(userWithoutRights, userWithoutRights, userWithoutRights) == 0;
}

}  // namespace norvik::test
