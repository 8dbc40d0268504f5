#!/usr/bin/env bash
# page.sh PAGE WORK-FOLDER NORVIK-LOG WRITER: runs the commands of docs/norvik-log.md that are followed by their output,
# on the log that the page shows, and compares. The first command reads the log of the WRITER, the example of the page.
# shellcheck disable=SC2016 # backquotes are of the page
set -eu
page=$(realpath "$1") work=$2 program=$(realpath "$3")
rm -rf "$work"
mkdir -p "$work/bin"
ln -s "$program" "$work/bin/norvik-log"
cd "$work"
export PATH=$PWD/bin:$PATH LC_ALL=C COLUMNS=80

# The times and the thread numbers of the writer's lines differ from run to run.
comparable() { sed -E 's/[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9:.]+Z/TIME/; s/(\[[^]:]+):[0-9]+\]/\1:THREAD]/' <<<"$1"; }

number=0 compared=0 fence='' block='' commands='' next=''
while IFS= read -r line; do
  number=$((number + 1))
  if [ -z "$fence" ]; then
    case $line in
      '```'*) fence=$line block='' ;;
      '`norvik-log logs` then prints:') "$4"; commands='norvik-log logs' ;;
      *'`pay.log`:') next=pay.log ;;
      '') ;;
      *) commands='' ;;
    esac
  elif [ "$line" != '```' ]; then
    block+=$line$'\n'
  else
    if [ "$fence" = '```sh' ]; then
      commands=$block
    elif [ "$fence" = '```text' ] && [ "$next" ]; then
      printf '%s' "$block" >"$next"
      next=''
    elif [ "$fence" = '```text' ] && [ "$commands" ]; then
      said=$(bash -ec "$commands" 2>&1) || true
      if [ "$commands" = 'norvik-log logs' ]; then said=$(comparable "$said") block=$(comparable "$block"); fi
      [ "$said" = "${block%$'\n'}" ] || { printf '%s, line %d: the command prints\n%s\n' "$page" "$number" "$said"; exit 1; }
      compared=$((compared + 1)) commands=''
    fi
    fence=''
  fi
done <"$page"
[ "$compared" -eq 6 ] || { echo "$compared commands were compared"; exit 1; }
