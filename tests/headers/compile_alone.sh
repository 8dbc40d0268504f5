#!/usr/bin/env bash
# compile_alone.sh COMPILER INCLUDE-FOLDER LIST: compiles one line including each header of the list, as a user who turns
# every warning on would. Prints what does not compile; the status is 1 if anything does not, or if the list is empty.
set -u
compiler=$1 folder=$2 list=$3
[ -s "$list" ] || { echo "no headers in $list"; exit 1; }
export compiler folder

compile_one() {
  printf '#include "%s"\n' "$1" |
    "$compiler" -std=c++20 -fsyntax-only -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror -I "$folder" -x c++ - ||
    { echo "does not compile alone: $1"; exit 1; }
}
export -f compile_one

xargs -r -n 1 -P 2 bash -c 'compile_one "$1"' compile_one <"$list" || exit 1
echo "$(grep -c . "$list") headers compile alone"
