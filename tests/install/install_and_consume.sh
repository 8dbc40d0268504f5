#!/usr/bin/env bash
# install_and_consume.sh find_package|old_find_package|pkg_config BUILD-FOLDER COMPILER WORK-FOLDER: installs the
# library to a fresh prefix and moves the prefix, so that nothing may depend on its first place. Then it builds and runs
# a program that includes every installed header, outside this repository's build. old_find_package reads the package as
# CMake before 3.23 does.
set -eu
way=$1 build=$2 compiler=$3 work=$4
here=$(cd "$(dirname "$0")" && pwd)

rm -rf "$work"
mkdir -p "$work/consumer"
cmake --install "$build" --prefix "$work/first" >"$work/install.log"
mv "$work/first" "$work/prefix"
prefix=$work/prefix

(cd "$prefix/include" && find NorvikCore -name '*.h' | sort) >"$work/headers.txt"
diff <(sort "$build/public_headers.txt" "$build/component_headers.txt") "$work/headers.txt" || { echo "installed headers and the listed ones differ"; exit 1; }
if grep -E '/internal/' "$work/headers.txt"; then echo "an internal header is installed"; exit 1; fi

sed 's/.*/#include "&"/' "$build/public_headers.txt" >"$work/consumer/every_header.h"
cp "$here/consumer.cpp" "$here/consumer.cmake" "$work/consumer/"
mv "$work/consumer/consumer.cmake" "$work/consumer/CMakeLists.txt"

# The pay run finds its library and its template in the moved prefix.
if [ -x "$prefix/bin/payrun" ]; then
  "$prefix/bin/payrun" --version
  echo '<b>' >"$prefix/share/norvikcore/payslip.template"
  status=0
  "$prefix/bin/payrun" --input "$work" --month 1 --payslips --logs "$work/logs" 2>"$work/payrun.err" || status=$?
  [ "$status" -eq 2 ]
  grep -q "/prefix/share/norvikcore/payslip.template:1:1: \"<b>\": Reached end of string" "$work/payrun.err"
fi

# gdb finds the printers by the path that the library was installed to.
scripts=$(find "$prefix/share/gdb/auto-load$work/first" -name 'libNorvikCore.so.*.py' | wc -l)
[ "$scripts" -eq 2 ] || { echo "gdb would not find the printers"; exit 1; }
[ -f "$prefix/share/norvikcore/lldb/norvikcore_lldb.py" ] || { echo "the formatters of lldb are not installed"; exit 1; }

# The licence is installed with the library.
grep -q "the NorvikCore authors" "$prefix/share/doc/NorvikCore/LICENSE"

case $way in
  find_package | old_find_package)
    if [ "$way" = old_find_package ]; then
      sed -i 's/^find_package/set(CMAKE_VERSION 3.22.1)\n&/' "$work/consumer/CMakeLists.txt"
      echo "#include \"NorvikCore/platform/values/NSException.h\"" >"$work/consumer/every_header.h"
    fi
    cmake -S "$work/consumer" -B "$work/build" -G Ninja -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_PREFIX_PATH="$prefix"
    cmake --build "$work/build"
    "$work/build/consumer"
    # A component is found by its name. Only a program that requests it needs its library.
    if [ "$way" = find_package ]; then
      if ldd "$work/build/consumer" | grep -E 'libpq|libQt'; then echo "the core needs a component's library"; exit 1; fi
      for component in PostgreSQL Qt; do
        folder=$work/$component name=${component,,}
        [ -e "$prefix/include/NorvikCore/$name" ] || continue
        mkdir "$folder"
        sed "s/NorvikCore 0.2 REQUIRED/& COMPONENTS $component/; s/NorvikCore::NorvikCore/NorvikCore::$component/" \
          "$here/consumer.cmake" >"$folder/CMakeLists.txt"
        cp "$here/$name.cpp" "$folder/consumer.cpp"
        if [ "$component" = Qt ]; then
          sed -i 's/^find_package/set(CMAKE_AUTOMOC ON)\n&/; s/consumer.cpp/& qt_window.h/' "$folder/CMakeLists.txt"
          cp "$here/qt_window.h" "$folder/"
        fi
        cmake -S "$folder" -B "$folder/build" -G Ninja -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_PREFIX_PATH="$prefix"
        cmake --build "$folder/build"
        QT_QPA_PLATFORM=offscreen "$folder/build/consumer"
      done
      mkdir "$work/other"
      sed 's/REQUIRED/REQUIRED COMPONENTS Oracle/' "$here/consumer.cmake" >"$work/other/CMakeLists.txt"
      cp "$here/consumer.cpp" "$work/other/"
      if cmake -S "$work/other" -B "$work/other/build" -G Ninja -DCMAKE_CXX_COMPILER="$compiler" \
        -DCMAKE_PREFIX_PATH="$prefix" 2>"$work/other/refused.txt"; then
        echo "a component that is not there was found"
        exit 1
      fi
      grep -q "it was built without a component Oracle" "$work/other/refused.txt"
    fi
    ;;
  pkg_config)
    PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name NorvikCore.pc)")
    export PKG_CONFIG_PATH
    flags=$(pkg-config --cflags --libs NorvikCore)
    # shellcheck disable=SC2086 - the flags are words
    "$compiler" -std=c++20 "$work/consumer/consumer.cpp" -o "$work/consumer/consumer" -Wall -Werror $flags
    # The program chooses the standard. A -std flag after the program's own one would replace it.
    if grep -q -e '-std' <<<"$flags"; then echo "pkg-config dictates a standard: $flags"; exit 1; fi
    # shellcheck disable=SC2086
    "$compiler" -std=c++23 -fsyntax-only "$here/small_program.cpp" $flags
    LD_LIBRARY_PATH=$(pkg-config --variable=libdir NorvikCore) "$work/consumer/consumer"
    ;;
esac
