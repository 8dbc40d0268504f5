#!/usr/bin/env bash
# compare.sh NORVIK-LOG [MEGABYTES [ROUNDS]]: filters a generated log by text, level and pattern, with norvik-log and
# with grep in turns. The answers are compared before anything is timed. Prints the medians of both times, and of the
# ratio of each round: above 1, norvik-log is faster.
#
# Figures: see README.md of this folder.
set -euo pipefail
reader=${1:?usage: compare.sh NORVIK-LOG [MEGABYTES [ROUNDS]]} megabytes=${2:-100} rounds=${3:-9}
export LC_ALL=${COMPARE_LOCALE:-C.UTF-8} TZ=UTC

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
log=$work/pay.log
awk -v bytes=$((megabytes * 1000000)) 'BEGIN {
  srand(20210510)
  split("ERROR  ,WARN   ,INFO   ,INFO   ,INFO   ,INFO   ,DEBUG  ,DEBUG  ,VERBOSE,VERBOSE", level, ",")
  while (written < bytes) {
    n++
    which = n % 100 == 0 ? 1 : n % 33 == 0 ? 2 : 3 + int(rand() * 8)
    line = sprintf("2021-05-10T%02d:%02d:%02d.%03dZ %s [com.norvik.queue-%d:%d] PayRun.cpp:%d  payslip %d of employee %d: net pay %d.%02d%s",
                   n / 3600000 % 24, n / 60000 % 60, n / 1000 % 60, n % 1000, level[which], n % 7, 4711 + n % 7, 40 + n % 300,
                   n, int(rand() * 100000), int(rand() * 9000), int(rand() * 100), n % 5003 == 0 ? ", rejected 17 times" : "")
    print line
    written += length(line) + 1
  }
}' >"$log"
cat "$log" >/dev/null  # in the page cache for both

# compare NAME "NORVIK-LOG'S ARGUMENTS" "GREP'S ARGUMENTS"
compare() {
  local name=$1 ours theirs
  local -a a b
  eval "a=($2)" "b=($3)"
  "$reader" "${a[@]}" "$log" >"$work/ours"
  grep "${b[@]}" "$log" >"$work/theirs"
  cmp -s "$work/ours" "$work/theirs" || { echo "$name: the answers differ"; exit 1; }
  [ -s "$work/ours" ] || { echo "$name: nothing is found"; exit 1; }
  for _ in $(seq "$rounds"); do
    ours=$(once "$reader" "${a[@]}" "$log")
    theirs=$(once grep "${b[@]}" "$log")
    echo "$ours $theirs"
  done | awk -v name="$name" -v lines="$(wc -l <"$work/ours")" '
    function median(values, count,   i, j, t) {
      for (i = 2; i <= count; i++) for (j = i; j > 1 && values[j - 1] > values[j]; j--) { t = values[j]; values[j] = values[j - 1]; values[j - 1] = t }
      return count % 2 ? values[(count + 1) / 2] : (values[count / 2] + values[count / 2 + 1]) / 2
    }
    { ours[NR] = $1; theirs[NR] = $2; ratio[NR] = $2 / $1 }
    END { printf "%-30s %9d lines   norvik-log %7.1f ms   grep %7.1f ms   grep / norvik-log %5.2f\n", name, lines, median(ours, NR) * 1e3, median(theirs, NR) * 1e3, median(ratio, NR) }'
}

# once COMMAND...: prints the seconds that the command takes. Its output is a file, because grep stops at the first
# match if its output is /dev/null.
once() {
  local before=$EPOCHREALTIME after
  "$@" >"$work/answer"
  after=$EPOCHREALTIME
  awk -v a="${before/,/.}" -v b="${after/,/.}" 'BEGIN { printf "%.6f\n", b - a }'
}

printf '%d MB, %s processors, medians of %d rounds\n' "$megabytes" "$(nproc)" "$rounds"
compare 'text, few' "-t 'rejected 17'" "-F 'rejected 17'"
compare 'text, many' "-t 'pay 7'" "-F 'pay 7'"
compare 'level error' "-l error" "-E '^[^ ]+ ERROR '"
compare 'level error, by words' "-l error" "-F ' ERROR '"
compare 'level warn' "-l warn" "-E ' (ERROR|WARN) '"
compare 'pattern with a text' "-e 'rejected [0-9]+ times'" "-E 'rejected [0-9]+ times'"
compare 'pattern in the middle' "-e '[0-9]+, rejected [0-9]+'" "-E '[0-9]+, rejected [0-9]+'"
compare 'pattern of classes' "-e 'pay [0-9]{3}\\.00'" "-E 'pay [0-9]{3}\\.00'"
compare 'pattern of alternatives' "-e '(77|88)\\.(77|88)'" "-E '(77|88)\\.(77|88)'"
compare 'pattern without a text' "-e '[0-9]{6} of'" "-E '[0-9]{6} of'"
