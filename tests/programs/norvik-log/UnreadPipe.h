// tests/programs/norvik-log/UnreadPipe.h - a standard stream whose reader has closed it.
#pragma once

#include <unistd.h>

namespace norvik_log_test {

/// From now on the stream of this process is a pipe that no process reads.
inline void becomeUnreadPipe(int stream) {
  int ends[2];
  if (::pipe(ends) != 0) ::_exit(99);
  ::dup2(ends[1], stream);
  ::close(ends[0]);
  ::close(ends[1]);
}

}  // namespace norvik_log_test
