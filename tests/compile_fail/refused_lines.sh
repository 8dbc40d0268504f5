#!/usr/bin/env bash
# refused_lines.sh FILE COMMAND...: checks that the command, a compilation of FILE, fails with an error in each line
# that ends with "// refused", and in no other line of FILE. Prints the lines for which this is not so.
set -u
export LC_ALL=C
file=$1
shift
wanted=$(grep -n '// refused$' "$file" | cut -d: -f1 | sort)
found=$("$@" 2>&1 | grep -F "$file:" | grep -E ': (fatal )?error: ' | sed "s|^$file:||" | cut -d: -f1 | sort -u)
diff <(printf '%s\n' "$wanted") <(printf '%s\n' "$found") && [ -n "$wanted" ]
