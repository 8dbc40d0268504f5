#!/usr/bin/env bash
# compile_together.sh COMPILER INCLUDE-FOLDER LIST [OPTION...]: compiles a file that includes all headers of the list, and
# one that includes them in the opposite order. So no two headers define the same name, and no header depends on another
# one that happens to come before it.
set -u
compiler=$1 folder=$2 list=$3
shift 3
[ -s "$list" ] || { echo "no headers in $list"; exit 1; }
for order in cat tac; do
  "$order" "$list" | sed 's/.*/#include "&"/' |
    "$compiler" -std=c++20 -fsyntax-only -Wall -Wextra -Werror -I "$folder" "$@" -x c++ - ||
    { echo "the headers do not compile together ($order)"; exit 1; }
done
echo "$(wc -l <"$list") headers compile together"
