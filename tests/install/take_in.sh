#!/usr/bin/env bash
# take_in.sh add_subdirectory|FetchContent SOURCE-FOLDER BUILD-FOLDER COMPILER WORK-FOLDER LIBRARY: another project
# (application.cmake) includes the library, in a folder whose name has characters with a special meaning in a shell or
# in a regular expression. Its program is built by the commands of its build, and uses the library that is already
# built.
set -eu
way=$1 source=$2 build=$3 compiler=$4 work=$5 library=$6
project="$work/a c++ (new) project"

rm -rf "$work"
mkdir -p "$project/norvik"
cp -r "$source/CMakeLists.txt" "$source/LICENSE" "$source/cmake" "$source/NorvikCore" "$project/norvik/"
cp "$source/tests/install/application.cmake" "$project/CMakeLists.txt"
cp "$source/tests/install/small_program.cpp" "$project/application.cpp"

cmake -S "$project" -B "$project/build" -G Ninja -DCMAKE_CXX_COMPILER="$compiler" -DWAY="$way"
where=$(cat "$project/build/where.txt")
diff "$build/public_headers.txt" "$(dirname "$where")/public_headers.txt"

mkdir -p "$where"
cp -a "${library%/*}"/libNorvikCore.so* "$where/"
cd "$project/build"
# One source file of the library is compiled as a part of the project, because all of them would take minutes.
ninja "$(ninja -t targets all | grep -m 1 -o '^.*/platform/kernel/UUID\.cpp\.o')"
ninja -t commands application | grep -F application. >commands.txt
grep -qF -- '-std=gnu++23' commands.txt || { echo "the project's standard is not used:"; cat commands.txt; exit 1; }
if grep -E -- '-W(all|error)|-fsanitize' commands.txt; then echo "the library's own options are used"; exit 1; fi
bash -e commands.txt
[ "$(./application)" = "42 30 April 2024 2,000.00" ]

# Only the project's own files are installed.
cmake --install . --prefix "$work/prefix"
[ "$(find "$work/prefix" -type f)" = "$work/prefix/bin/application" ]
