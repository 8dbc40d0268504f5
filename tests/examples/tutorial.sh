#!/usr/bin/env bash
# tutorial.sh PAGE WORK-FOLDER installed BUILD-FOLDER COMPILER
# tutorial.sh PAGE WORK-FOLDER built EXAMPLES-FOLDER NORVIK-LOG
#
# Carries out docs/tutorial.md in an empty folder: creates the files that the page shows, runs its commands in order, and
# compares what they print with the page. `installed` installs the library to a fresh prefix and builds each step there,
# and also makes the changes that begin with "Replace" and looks for the error in what the build or the program says.
# `built` uses the programs of this build instead, so that the sanitizers see them.
set -eu
page=$(realpath "$1") work=$2 mode=$3
examples=$(realpath "$(dirname "$0")/../../examples/tutorial")

rm -rf "$work"
mkdir -p "$work/home" "$work/payroll" "$work/bin"
work=$(realpath "$work")
log=$work/build.log
real_cmake=$(command -v cmake)
places=''
case $mode in
  installed)
    cmake --install "$4" --prefix "$work/prefix" >"$work/install.log"
    export CMAKE_PREFIX_PATH=$work/prefix CXX=$5 CMAKE_GENERATOR=Ninja PATH=$work/bin:$work/prefix/bin:$PATH
    # Of CMake the page shows nothing unless it fails.
    printf '#!/bin/sh\n"%s" "$@" >"%s" 2>&1 || { cat "%s"; exit 1; }\n' "$real_cmake" "$log" "$log" >"$work/bin/cmake"
    ;;
  built)
    places='s/(main|step[0-9])\.cpp:[0-9]+/PLACE/; '
    ln -s "$5" "$work/bin/norvik-log"
    export PATH=$work/bin:$PATH
    printf '#!/bin/sh\nmkdir -p build\nread -r step <"%s/step"\ncp "%s/tutorial_$step" build/payroll\n' "$work" "$4" >"$work/bin/cmake"
    ;;
  *) echo "tutorial.sh: no mode '$mode'" >&2; exit 2 ;;
esac
chmod +x "$work/bin/cmake"
# With these the user's own files stay as they are, and the compiler writes plain quotation marks.
export HOME=$work/home XDG_CONFIG_HOME=$work/home XDG_DATA_HOME=$work/home LC_ALL=C
unset NORVIK_DEFAULTS_FOLDER NORVIK_BUNDLE_IDENTIFIER
cd "$work/payroll"

fail() { printf '%s, line %d: %s\n' "$page" "$number" "$1"; exit 1; }

# The times and the thread numbers of log lines differ from run to run, and the programs of this build have other
# sources than main.cpp.
comparable() { sed -E "$places"'s/[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9:.]+Z/TIME/; s/(\[[^]:]+):[0-9]+\]/\1:THREAD]/; s/[[:blank:]]+$//' <<<"$1"; }

# create FILE SOURCE: the page shows the example from its first line that is no comment on.
create() {
  local from
  from=$(grep -vn '^//' "$examples/$2" | head -n 1 | cut -d: -f1)
  [ "$(tail -n "+$from" "$examples/$2")" = "${block%$'\n'}" ] || fail "examples/tutorial/$2 is another text"
  printf '%s' "$block" >"$1"
  [ "$1" != main.cpp ] || basename "$2" .cpp >"$work/step"
  created=$((created + 1))
}

run() { said=$(bash -ec "$commands" 2>&1); }

# refuse: the change is made, the last commands are run again, and the change is taken back.
refuse() {
  local before line after
  before=$(cat "$changed")
  after=${before/"$from"/"$to"}
  [ "$before" != "$after" ] || fail "$changed has no $from"
  if [ "$mode" = installed ]; then
    printf '%s\n' "$after" >"$changed"
    if run; then fail "with $to in $changed everything succeeds"; fi
    while IFS= read -r line; do
      case $said in *"$line"*) ;; *) fail "with $to in $changed it says"$'\n'"$said" ;; esac
    done <<<"${block%$'\n'}"
    printf '%s\n' "$before" >"$changed"
  fi
  refused=$((refused + 1))
}

number=0 fence='' block='' file='' source='' from='' said='' commands='' created=0 compared=0 refused=0
while IFS= read -r line; do
  number=$((number + 1))
  if [ -z "$fence" ]; then
    if [[ $line =~ \`([A-Za-z.]+)\`\ \(\`examples/tutorial/([A-Za-z0-9.]+)\`\) ]]; then
      file=${BASH_REMATCH[1]} source=${BASH_REMATCH[2]}
    elif [[ $line =~ (^|\ )Replace\ \`([^\`]*)\`\ with\ \`([^\`]*)\`\ in\ \`([^\`]*)\` ]]; then
      from=${BASH_REMATCH[2]} to=${BASH_REMATCH[3]} changed=${BASH_REMATCH[4]}
    elif [[ $line == '```'* ]]; then
      fence=$line block=''
    fi
  elif [ "$line" != '```' ]; then
    block+=$line$'\n'
  else
    case $fence in
      '```cpp' | '```cmake')
        [ -n "$file" ] || fail "a file without a name"
        create "$file" "$source"
        file=''
        ;;
      '```sh')
        commands=$block
        run || fail "the commands fail:"$'\n'"$said"
        ;;
      '```text')
        if [ -n "$from" ]; then
          refuse
          from=''
        else
          [ "$(comparable "$said")" = "$(comparable "${block%$'\n'}")" ] || fail "the commands print"$'\n'"$said"
          compared=$((compared + 1))
        fi
        ;;
      *) fail "a block of a language that is not known" ;;
    esac
    fence=''
  fi
done <"$page"
printf '%d files created, %d outputs as on the page, %d changes refused\n' "$created" "$compared" "$refused"
[ "$created" -ge 15 ] && [ "$compared" -eq 10 ] && [ "$refused" -ge 10 ]
