# tests/diagnostics/lldb/lldb.sh - for scripts that run lldb: sets `lldb`, or skips the test (77) with the reason, and
# defines `attempts`.

# attempts COMMAND...: runs it without input. lldb 14 sometimes does not end after its last command, so one that takes 40 s
# is run again, three times in all.
attempts() {
  local attempt status
  for attempt in 1 2 3; do
    status=0
    timeout -k 5 40 "$@" </dev/null || status=$?
    [ "$status" -eq 124 ] || return "$status"
    echo "lldb did not end (attempt $attempt)" >&2
  done
  return "$status"
}

lldb=$(command -v lldb-14 || command -v lldb) || { echo "lldb is not installed (tools/install-deps ci installs it)"; exit 77; }
# Debian's lldb 14 looks for its Python module in a folder that does not exist.
module=$(echo /usr/lib/llvm-14/lib/python3.*/dist-packages)
[ -d "$module" ] && export PYTHONPATH=$module${PYTHONPATH:+:$PYTHONPATH}
attempts "$lldb" --no-lldbinit -b -o 'script print("python" + " works")' 2>&1 | grep -q '^python works' ||
  { echo "lldb has no Python here"; exit 77; }
attempts "$lldb" --no-lldbinit -b -o run /bin/true 2>&1 | grep -q 'exited with status = 0' ||
  { echo "lldb starts no program here"; exit 77; }
