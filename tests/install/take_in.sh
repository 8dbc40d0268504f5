#!/usr/bin/env bash
# take_in.sh add_subdirectory|FetchContent SOURCE-FOLDER BUILD-FOLDER COMPILER WORK-FOLDER LIBRARY: another project
# (application.cmake) takes the library in, in a folder whose name holds what means something to a shell or to a regular
# expression. Its program is built by the commands that its build has for it; the library is the one that is built already.
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
# A source of the library compiles as a part of the project; all of them would take minutes.
ninja "$(ninja -t targets all | grep -m 1 -o '^.*/platform/kernel/UUID\.cpp\.o')"
ninja -t commands application | grep -F application. >commands.txt
grep -qF -- '-std=gnu++23' commands.txt || { echo "the project's standard is not used:"; cat commands.txt; exit 1; }
if grep -E -- '-W(all|error)|-fsanitize' commands.txt; then echo "the library's own options are used"; exit 1; fi
bash -e commands.txt
[ "$(./application)" = "42 30 April 2024 2,000.00" ]

# Only what the project installs itself is installed.
cmake --install . --prefix "$work/prefix"
[ "$(find "$work/prefix" -type f)" = "$work/prefix/bin/application" ]
