#!/usr/bin/env bash
# debugger.sh PAGE PROGRAM: gives gdb the commands that the page shows in its block of input, and compares the program's
# output with the page's first block of output.
set -eu
page=$1 program=$2

gdb -nx -batch -ex run --args /bin/true 2>&1 | grep -q 'exited normally' || { echo "gdb starts no program here"; exit 77; }
command=$(sed -n '/^```sh$/,/^```$/p' "$page" | grep '^gdb ' | sed "s|diagnostics_example|'$program'|")
[ -n "$command" ] || { echo "the page has no command"; exit 1; }
expected=$(sed -n '/^```text$/,/^```$/{/^```$/q;p}' "$page" | grep -v '^```')
said=$(LC_ALL=C bash -c "$command" 2>&1)
case $said in
  *"$expected"*) ;;
  *) printf 'the page says:\n%s\ngdb says:\n%s\n' "$expected" "$said"; exit 1 ;;
esac
