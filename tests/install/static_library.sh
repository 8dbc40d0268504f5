#!/usr/bin/env bash
# static_library.sh SOURCE-FOLDER BUILD-FOLDER COMPILER WORK-FOLDER ARCHIVE: configures the library as a static one and
# checks that its compile commands are those of the shared library's objects, from which ARCHIVE is made. Then it
# installs ARCHIVE as the result of the static build. A program is built with it by find_package, and by pkg-config with
# and without --static.
set -eu
source=$1 build=$2 compiler=$3 work=$4 archive=$5
here=$(cd "$(dirname "$0")" && pwd)

rm -rf "$work"
mkdir -p "$work/consumer"
mapfile -t settings < <(grep -E '^(CMAKE_(BUILD_TYPE|CXX_(COMPILER|COMPILER_LAUNCHER|FLAGS[A-Z_]*)|UNITY_BUILD[A-Z_]*)|NORVIK_WERROR):' \
  "$build/CMakeCache.txt" | sed 's/^/-D/')
cmake -S "$source" -B "$work/library" -G Ninja "${settings[@]}" -DBUILD_SHARED_LIBS=OFF -DNORVIK_TESTS=OFF \
  -DNORVIK_EXPORT_INTERNALS=ON -DNORVIK_EXAMPLES=OFF -DNORVIK_PROGRAMS=OFF -DNORVIK_POSTGRESQL=OFF -DNORVIK_QT=OFF
objects() { ninja -C "$1" -t commands "$2" | grep -E -- ' -c ' | sed "s|$1|BUILD|g" | sort; }
objects "$build" NorvikCore/libNorvikCore.so >"$work/shared.txt"
objects "$work/library" NorvikCore/libNorvikCore.a >"$work/static.txt"
diff "$work/shared.txt" "$work/static.txt"
[ "$(wc -l <"$work/shared.txt")" -gt 30 ]

cp "$archive" "$work/library/NorvikCore/libNorvikCore.a"
cmake --install "$work/library" --prefix "$work/first" >"$work/install.log"
mv "$work/first" "$work/prefix"

# check PROGRAM
check() {
  [ "$("$1")" = "42 30 April 2024 2,000.00" ]
  if ldd "$1" | grep NorvikCore; then echo "a shared library is used"; exit 1; fi
}
cp "$here/small_program.cpp" "$work/consumer/consumer.cpp"
cp "$here/consumer.cmake" "$work/consumer/CMakeLists.txt"
cmake -S "$work/consumer" -B "$work/build" -G Ninja -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_PREFIX_PATH="$work/prefix"
cmake --build "$work/build"
check "$work/build/consumer"

export PKG_CONFIG_PATH=$(dirname "$(find "$work/prefix" -name NorvikCore.pc)")
# shellcheck disable=SC2046 - the flags are words
"$compiler" -std=c++20 -fPIC -c "$here/small_program.cpp" -o "$work/consumer.o" $(pkg-config --cflags NorvikCore)
for static in "" --static; do
  # shellcheck disable=SC2046,SC2086
  "$compiler" "$work/consumer.o" -o "$work/program$static" $(pkg-config $static --libs NorvikCore)
  check "$work/program$static"
done
# It can become a part of a shared library.
# shellcheck disable=SC2046
"$compiler" -shared "$work/consumer.o" -o "$work/part.so" -Wl,-z,defs $(pkg-config --libs NorvikCore)
