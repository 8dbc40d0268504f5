#!/usr/bin/env bash
# formatters.sh live|core|stripped PROGRAM LIBRARY EXPECTED WORK-FOLDER SCRIPT: lldb shows the variables of the file
# EXPECTED, which has lines "variable => output", where the program stops in pay(). SCRIPT has the formatters. Compares
# lldb's output with the file. An output of several lines is joined; addresses show as 0xADDRESS, and the repetitions of
# an object that refers to itself as "...". Skipped (77) without
# lldb, or where lldb starts no program.
set -eu
way=$1 program=$2 library=$(realpath "$3") expected=$4 work=$5 script=$6
export LC_ALL=C.UTF-8
source "$(dirname "$0")/lldb.sh"

rm -rf "$work"
mkdir -p "$work"
work=$(cd "$work" && pwd -P)
# g++ adds to the name of the function, so lldb 14 finds it by a part of the name only.
stop=(-o 'breakpoint set -r ::pay.*Employer' -o 'breakpoint set -r Values.*Decimal.*Date' -o run)
target=("$program")
case $way in
  live) ;;
  core)
    gdb -nx -batch -ex 'break pay' -ex run -ex "generate-core-file $work/core" -ex kill "$program" >"$work/made.txt" 2>&1
    [ -s "$work/core" ] || { cat "$work/made.txt"; echo "gdb wrote no core file"; exit 1; }
    stop=()
    target=(-c "$work/core" "$program")
    ;;
  stripped)
    mkdir "$work/lib"
    strip -o "$work/lib/$(basename "$library")" "$library"
    ln -s "$(basename "$library")" "$work/lib/$(readelf -d "$library" | sed -n 's/.*SONAME.*\[\(.*\)\]/\1/p')"
    export LD_LIBRARY_PATH=$work/lib
    ;;
esac

shows=()
while read -r line; do shows+=(-o "frame variable ${line%% => *}"); done <"$expected"
attempts "$lldb" --no-lldbinit -b -o "command script import '$script'" \
  -o 'settings set target.max-string-summary-length 250' "${stop[@]}" "${shows[@]}" -o 'script print("=====")' \
  "${target[@]}" >"$work/said.txt" 2>&1 || { cat "$work/said.txt"; exit 1; }
# From each command to the next: the command, and the lines of its output without "(type) variable = ".
awk '
  /^\(lldb\) frame variable / { if (shown != "") print shown " => " text; shown = substr($0, 23); text = ""; next }
  /^\(lldb\) / { if (shown != "") print shown " => " text; shown = ""; next }
  shown != "" {
    gsub(/^ +/, "")
    start = index($0, ") " shown " = ")
    if (text == "" && start) $0 = substr($0, start + length(shown) + 5)
    text = text (text == "" ? "" : " ") $0
  }' "$work/said.txt" |
  sed -E 's/0x[0-9a-f]{6,}/0xADDRESS/g
    s/(\[0\] = company::Ring 0xADDRESS \{ next_ = size=1 \{ ){5,40}(.*[^}])( \}){10,}$/... \2/' >"$work/shown.txt"
diff "$expected" "$work/shown.txt" || { echo "lldb does not show what $expected says"; exit 1; }
