# tests/diagnostics/lldb/lldb.sh - for scripts that run lldb: sets `lldb`, or skips the test (77) with the reason.

lldb=$(command -v lldb-14 || command -v lldb) || { echo "lldb is not installed (tools/install-deps ci installs it)"; exit 77; }
# Debian's lldb 14 looks for its Python module in a folder that does not exist.
module=$(echo /usr/lib/llvm-14/lib/python3.*/dist-packages)
[ -d "$module" ] && export PYTHONPATH=$module${PYTHONPATH:+:$PYTHONPATH}
"$lldb" --no-lldbinit -b -o 'script print("python" + " works")' 2>&1 | grep -q '^python works' ||
  { echo "lldb has no Python here"; exit 77; }
"$lldb" --no-lldbinit -b -o run /bin/true 2>&1 | grep -q 'exited with status = 0' ||
  { echo "lldb starts no program here"; exit 77; }
