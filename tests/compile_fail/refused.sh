#!/usr/bin/env bash
# refused.sh LINES SENTENCE COMMAND...: the command, a compilation, fails; its output has at most LINES lines and holds the
# sentence (or one of several, with " | " in between). Prints the output and what is wrong with it.
set -u
export LC_ALL=C
most_lines=$1 sentence=$2
shift 2
if output=$("$@" 2>&1); then
  echo "compiles"
  exit 1
fi
printf '%s\n' "$output"
[ "$(wc -l <<<"$output")" -le "$most_lines" ] || { echo "too long: $(wc -l <<<"$output") lines"; exit 1; }
while IFS= read -r each; do
  grep -qF -- "$each" <<<"$output" && exit 0
done <<<"${sentence// | /$'\n'}"
echo "does not say: $sentence"
exit 1
