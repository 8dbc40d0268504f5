#!/usr/bin/env bash
# debugger.sh gdb|lldb-14 PAGE PROGRAM: gives the debugger the commands that the page shows for it, and compares the
# program's output with the page's first block of output.
set -eu
debugger=$1 page=$2 program=$3
root=$(cd "$(dirname "$0")/../.." && pwd)

if [ "$debugger" = gdb ]; then
  gdb -nx -batch -ex run --args /bin/true 2>&1 | grep -q 'exited normally' || { echo "gdb starts no program here"; exit 77; }
else
  source "$root/tests/diagnostics/lldb/lldb.sh"
fi
command=$(sed -n '/^```sh$/,/^```$/p' "$page" | grep "^$debugger " | sed "s|diagnostics_example|'$program'|
  s|/usr/share/norvikcore/lldb|'$root/NorvikCore/diagnostics/lldb'|")
[ -n "$command" ] || { echo "the page has no command"; exit 1; }
expected=$(sed -n '/^```text$/,/^```$/{/^```$/q;p}' "$page" | grep -v '^```')
export LC_ALL=C
if [ "$debugger" = gdb ]; then
  said=$(bash -c "$command" 2>&1 </dev/null | tr -d '\r')
else
  said=$(attempts bash -c "$command" 2>&1 | tr -d '\r')
fi
case $said in
  *"$expected"*) ;;
  *) printf 'the page says:\n%s\n%s says:\n%s\n' "$expected" "$debugger" "$said"; exit 1 ;;
esac
