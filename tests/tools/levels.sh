#!/usr/bin/env bash
# levels.sh CHECKER WORK-FOLDER: what tools/levels accepts, and what it names, in a small tree of its own.
set -euo pipefail
checker=$1 work=$2

rm -rf "$work"
mkdir -p "$work"/{docs,NorvikCore/platform/kernel,NorvikCore/platform/values,NorvikCore/logging,NorvikCore/dispatch}
cat >"$work/docs/architecture.md" <<'END'
| level | folders | what |
|---|---|---|
| 3 | `logging`, `dispatch` | subjects |
| 2 | `platform/values` | values |
| 1 | `platform/kernel` | the system |
END

# write FILE LINE...
write() {
  local file=$work/NorvikCore/$1
  shift
  printf '%s\n' "$@" >"$file"
}
# expect STATUS LINE...: what the checker says of the tree.
expect() {
  local status=$1 said actual=0
  shift
  said=$("$checker" "$work" | sort) || actual=$?
  [ "$actual" -eq "$status" ] || { printf 'status %d, expected %d: %s\n' "$actual" "$status" "$said"; exit 1; }
  diff <(printf '%s\n' "$@" | sort) <(printf '%s\n' "$said")
}

write platform/export.h '#pragma once'
write platform/kernel/Clock.cpp '#include "NorvikCore/platform/kernel/Clock.h"' '#include <unistd.h>'
write platform/kernel/Clock.h '#include "NorvikCore/platform/export.h"'
write platform/values/Date.cpp '#include "NorvikCore/platform/kernel/Clock.h"' '#include <string>'
write logging/Log.cpp '#include "NorvikCore/platform/values/Date.h"' '// #include "NorvikCore/dispatch/Queue.h"'
write dispatch/Queue.h '#pragma once'
expect 0 'levels: 4 files include nothing above them'

write platform/kernel/Clock.h '  #  include "NorvikCore/platform/values/Date.h"'
write logging/Log.cpp '#include "NorvikCore/dispatch/Queue.h"' '#include <sys/stat.h>'
expect 1 'levels: NorvikCore/platform/kernel/Clock.h (level 1) includes NorvikCore/platform/values/Date.h (level 2)' \
  'levels: NorvikCore/logging/Log.cpp (level 3) includes NorvikCore/dispatch/Queue.h (level 3)' \
  'levels: NorvikCore/logging/Log.cpp includes <sys/stat.h>, which is for platform/'

write platform/kernel/Clock.h '#pragma once'
write logging/Log.cpp '#include "../dispatch/Queue.h"' '#include <syslog.h>'
expect 1 'levels: NorvikCore/logging/Log.cpp includes "../dispatch/Queue.h", which does not begin with NorvikCore/' \
  'levels: NorvikCore/logging/Log.cpp includes <syslog.h>, which is for platform/'

write logging/Log.cpp $'#include\t"NorvikCore/dispatch/Queue.h"'
write platform/kernel/Clock.inc '#include_next <NorvikCore/platform/values/Date.h>'
expect 1 'levels: NorvikCore/logging/Log.cpp (level 3) includes NorvikCore/dispatch/Queue.h (level 3)' \
  'levels: NorvikCore/platform/kernel/Clock.inc (level 1) includes NorvikCore/platform/values/Date.h (level 2)'
rm "$work/NorvikCore/platform/kernel/Clock.inc"

write logging/Log.cpp '#include "NorvikCore/markup/Parser.h"'
expect 1 'levels: NorvikCore/markup/ has no level'

# A folder within another has the level that the table gives it.
rm "$work/NorvikCore/logging/Log.cpp"
mkdir -p "$work/NorvikCore/logging/database"
sed -i 's/^| 3 |/| 4 | `logging\/database` | a folder within |\n&/' "$work/docs/architecture.md"
write logging/Log.cpp '#include "NorvikCore/logging/database/Store.h"'
write logging/database/Store.h '#include "NorvikCore/logging/Log.h"'
expect 1 'levels: NorvikCore/logging/Log.cpp (level 3) includes NorvikCore/logging/database/Store.h (level 4)'
