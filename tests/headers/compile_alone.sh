#!/usr/bin/env bash
# compile_alone.sh COMPILER INCLUDE-FOLDER LIST: compiles one line including each header of the list, as a user who turns
# every warning on would. A header that its own source includes first was compiled alone there: clang builds the library
# without precompiled headers. Prints what does not compile; the status is 1 if anything does not, or if the list is empty.
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

# is_first_in_its_source HEADER
is_first_in_its_source() {
  local source=$folder/${1%.h}.cpp
  [ -f "$source" ] && [ "$(grep -m 1 '^#include' "$source")" = "#include \"$1\"" ]
}

mapfile -t headers <"$list"
alone=()
for header in "${headers[@]}"; do
  is_first_in_its_source "$header" || alone+=("$header")
done
printf '%s\n' "${alone[@]}" | xargs -r -n 1 -P 2 bash -c 'compile_one "$1"' compile_one || exit 1
echo "${#headers[@]} headers compile alone, ${#alone[@]} of them tried here"
