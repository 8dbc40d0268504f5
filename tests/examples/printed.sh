#!/usr/bin/env bash
# printed.sh PAGE SOURCE WORK-FOLDER PROGRAM [ARGUMENT...]: runs the program of an example in an empty folder, and
# compares what it prints with the first block of text that follows the example's code on the page.
set -eu
page=$1 source=$2 work=$3
shift 3

shown=$(awk -v source="$source" '
  fence == "" && match($0, /`examples\/[^`]+`/) { example = substr($0, RSTART + 1, RLENGTH - 2) }
  /^```/ {
    if (fence == "") { fence = $0; first = example == source && !done && seen && $0 == "```text" }
    else { if (fence == "```cpp" && example == source) seen = 1; if (first) done = 1; fence = ""; first = 0 }
    next
  }
  first { print }' "$page")
[ -n "$shown" ] || { echo "$page shows no output of $source"; exit 1; }

rm -rf "$work"
mkdir -p "$work/home"
cd "$work"
export HOME=$work/home XDG_CONFIG_HOME=$work/home XDG_DATA_HOME=$work/home LC_ALL=C
printed=$("$@" 2>&1) || { printf '%s\nstatus %d\n' "$printed" $?; exit 1; }

# The times and the numbers of processes and threads in log lines and console lines differ from run to run.
comparable() { sed -E 's/^[0-9-]{10} [0-9:.]{12}[+-][0-9]{4} ([^[]+)\[[0-9]+:[0-9]+\]/TIME \1/; s/[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9:.]+Z/TIME/; s/(\[[^]:]+):[0-9]+\]/\1:THREAD]/' <<<"$1"; }
diff <(comparable "$shown") <(comparable "$printed")
