#!/usr/bin/env bash
# compile_alone.sh COMPILER INCLUDE-FOLDER LIST [OPTION...]: compiles one line that includes a header, for each header of the list,
# with all warnings turned on. A header that its own source file includes first is skipped, because clang builds the
# library without precompiled headers and has compiled it there. Prints the headers that do not compile. The status is 1
# if there is one, or if the list is empty.
set -u
compiler=$1 folder=$2 list=$3
shift 3
options=$*
[ -s "$list" ] || { echo "no headers in $list"; exit 1; }
export compiler folder options

compile_one() {
  printf '#include "%s"\n' "$1" |
    # shellcheck disable=SC2086 - the options are words
    "$compiler" -std=c++20 -fsyntax-only -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror -I "$folder" $options -x c++ - ||
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
