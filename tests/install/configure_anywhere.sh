#!/usr/bin/env bash
# configure_anywhere.sh SOURCE-FOLDER BUILD-FOLDER COMPILER WORK-FOLDER: another project takes the library in by
# add_subdirectory(), in a folder whose name holds what means something to a shell or to a regular expression. It is
# configured, and finds the same public headers as the build.
set -eu
source=$1 build=$2 compiler=$3 work=$4
project="$work/a c++ (new) project"

rm -rf "$work"
mkdir -p "$project/library"
cp -r "$source/CMakeLists.txt" "$source/cmake" "$source/NorvikCore" "$project/library/"
cat >"$project/CMakeLists.txt" <<'END'
cmake_minimum_required(VERSION 3.25)
project(Application LANGUAGES CXX)
add_subdirectory(library)
add_executable(application application.cpp)
target_link_libraries(application PRIVATE NorvikCore::NorvikCore)
END
echo 'int main() {}' >"$project/application.cpp"

cmake -S "$project" -B "$project/build" -G Ninja -DCMAKE_CXX_COMPILER="$compiler"
diff "$build/public_headers.txt" "$project/build/library/public_headers.txt"
