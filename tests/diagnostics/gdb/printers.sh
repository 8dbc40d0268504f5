#!/usr/bin/env bash
# printers.sh live|core|stripped PROGRAM LIBRARY EXPECTED WORK-FOLDER: gdb prints the expressions of the file EXPECTED,
# which has lines "expression => output", where the program stops in pay(). Compares gdb's output with the file. gdb
# itself loads the printers with the library: in the build tree from beside it, and for the stripped copy from where an
# installed library has them. Addresses show as 0xADDRESS.
set -eu
way=$1 program=$2 library=$3 expected=$4 work=$5
export LC_ALL=C.UTF-8

gdb -nx -batch -ex run --args /bin/true 2>&1 | grep -q 'exited normally' || { echo "gdb starts no program here"; exit 77; }
rm -rf "$work"
mkdir -p "$work"
work=$(cd "$work" && pwd -P)
library=$(realpath "$library")
options=(-nx -batch -iex "add-auto-load-safe-path $(dirname "$library")")
stop=(-ex 'set width 0' -ex 'break pay' -ex run)
case $way in
  live) ;;
  core)
    gdb "${options[@]}" "${stop[@]}" -ex "generate-core-file $work/core" -ex kill "$program" >"$work/made.txt" 2>&1
    [ -s "$work/core" ] || { cat "$work/made.txt"; echo "gdb wrote no core file"; exit 1; }
    options+=(-core "$work/core")
    stop=(-ex 'set width 0')
    ;;
  stripped)
    mkdir "$work/lib"
    scripts=$work/share/gdb/auto-load$work/lib
    mkdir -p "$scripts"
    strip -o "$work/lib/$(basename "$library")" "$library"
    ln -s "$(basename "$library")" "$work/lib/$(readelf -d "$library" | sed -n 's/.*SONAME.*\[\(.*\)\]/\1/p')"
    cp "$library-gdb.py" "$library.py" "$scripts/"
    export LD_LIBRARY_PATH=$work/lib
    options=(-nx -batch -iex "add-auto-load-scripts-directory $work/share/gdb/auto-load"
      -iex "add-auto-load-safe-path $work/share")
    ;;
esac

prints=()
while read -r line; do prints+=(-ex "print ${line%% => *}"); done <"$expected"
gdb "${options[@]}" "${stop[@]}" -ex 'echo =====\n' "${prints[@]}" "$program" >"$work/said.txt" 2>&1
sed '1,/^=====$/d; s/^\$[0-9]* = //; s/0x[0-9a-f]\{6,\}/0xADDRESS/g' "$work/said.txt" | head -n "$(wc -l <"$expected")" |
  paste -d '\n' <(sed 's/ => .*//' "$expected") - | sed 'N; s/\n/ => /' >"$work/printed.txt"
diff "$expected" "$work/printed.txt" || { echo "gdb does not print what $expected says"; exit 1; }
