#!/usr/bin/env bash
# compiler_flags.sh COMPILER REPOSITORY LIBRARY WORK-FOLDER: a program may choose its own compiler flags. Each flag either
# has no effect on the library, or is refused in one sentence.
set -eu
export LC_ALL=C
compiler=$1 repository=$2 library=$3 work=$4
here=$(cd "$(dirname "$0")" && pwd)
rm -rf "$work"
mkdir -p "$work"

# refused SENTENCE HEADER FLAG...: the second of the two errors is that of the file that ends the compilation.
refused() {
  local sentence=$1 header=$2 errors
  shift 2
  if printf '#include "%s"\n' "$header" | "$compiler" -std=c++20 -fsyntax-only -I "$repository" "$@" -x c++ - 2>"$work/said"; then
    echo "$header compiles with $*"
    exit 1
  fi
  errors=$(grep 'error:' "$work/said")
  if ! head -n 1 <<<"$errors" | grep -qF "$sentence" || [ "$(wc -l <<<"$errors")" -ne 2 ]; then
    cat "$work/said"
    exit 1
  fi
}
compiles() {
  local header=$1
  shift
  printf '#include "%s"\n' "$header" | "$compiler" -std=c++20 -Wall -Werror -fsyntax-only -I "$repository" "$@" -x c++ -
}

values=NorvikCore/platform/values objects=NorvikCore/platform/object
refused "NorvikCore reports errors by exceptions: compile without -fno-exceptions" $values/Decimal.h -fno-exceptions
refused "The objects of NorvikCore need run-time type information: compile without -fno-rtti" $objects/Value.h -fno-rtti
refused "The objects of NorvikCore need run-time type information: compile without -fno-rtti" \
  NorvikCore/logging/DDLog.h -fno-rtti
compiles $values/Decimal.h -fno-rtti
refused "NorvikCore and the program must agree on _GLIBCXX_DEBUG" $values/NSString.h -D_GLIBCXX_DEBUG
refused "NorvikCore and the program must agree on _GLIBCXX_DEBUG" $values/NSString.h -DNORVIK_GLIBCXX_DEBUG
compiles NorvikCore/linq/LINQ.h -D_GLIBCXX_DEBUG -DNORVIK_GLIBCXX_DEBUG

for flags in -D_GLIBCXX_ASSERTIONS "-fno-strict-aliasing -funsigned-char" "-O3 -march=native -flto"; do
  # shellcheck disable=SC2086 - the flags are words
  "$compiler" -std=c++20 -Wall -Werror $flags -I "$repository" "$here/small_program.cpp" -o "$work/program" \
    "$library" -Wl,-rpath,"$(dirname "$library")" -pthread
  "$work/program" >"$work/out"
  grep -q "^42 30 April 2024" "$work/out" || { echo "$flags:"; cat "$work/out"; exit 1; }
done
