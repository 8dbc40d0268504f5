#!/usr/bin/env bash
# refused.sh LINES ERRORS SENTENCE COMMAND...: checks that the command, a compilation, fails. Its output must have at
# most LINES lines and contain the sentence, or one of several sentences separated by " | ". If ERRORS is a number and
# not `any`, the output must have that many errors of at most LINES lines each, and the line of the first error must
# contain the sentence. Prints the output and what is wrong with it.
set -u
export LC_ALL=C
most_lines=$1 errors=$2 sentence=$3
shift 3
if output=$("$@" 2>&1); then
  echo "compiles"
  exit 1
fi
printf '%s\n' "$output"
[ "$errors" = any ] || most_lines=$((most_lines * errors))
[ "$(wc -l <<<"$output")" -le "$most_lines" ] || { echo "too long: $(wc -l <<<"$output") lines"; exit 1; }
where=$output
if [ "$errors" != any ]; then
  found=$(grep -cE ' (fatal )?error: ' <<<"$output")
  [ "$found" -eq "$errors" ] || { echo "$found errors, not $errors"; exit 1; }
  where=$(grep -m 1 -E ' (fatal )?error: ' <<<"$output")
fi
while IFS= read -r each; do
  grep -qF -- "$each" <<<"$where" && exit 0
done <<<"${sentence// | /$'\n'}"
echo "does not say: $sentence"
exit 1
