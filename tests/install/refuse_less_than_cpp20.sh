#!/usr/bin/env bash
# refuse_less_than_cpp20.sh COMPILER INCLUDE-FOLDER LIST: each header of the list either compiles as C++17 (some headers
# declare only a few constants), or is refused only with the sentence that names the needed standard.
set -u
compiler=$1 folder=$2 list=$3
[ -s "$list" ] || { echo "no headers in $list"; exit 1; }

sentence="NorvikCore needs C++20 or later: compile with -std=c++20"
failed=0 refused=0
while read -r header; do
  said=$(printf '#include "%s"\n' "$header" | LC_ALL=C "$compiler" -std=c++17 -fsyntax-only -I "$folder" -x c++ - 2>&1) &&
    continue
  errors=$(grep 'error:' <<<"$said")
  # The second error is that of the file that ends the compilation.
  if grep -qF "$sentence" <<<"$(head -n 1 <<<"$errors")" && [ "$(wc -l <<<"$errors")" -eq 2 ]; then
    refused=$((refused + 1))
  else
    printf '%s as C++17:\n%s\n' "$header" "$said"
    failed=1
  fi
done <"$list"
echo "$refused headers are refused"
[ "$failed" -eq 0 ] && [ "$refused" -gt 100 ]
