# tools/support/steps.sh - functions that the scripts source: the project's root, quiet steps with a log, packages,
# ctest's numbers.
#
# A step prints one line; the output of its command is in build/logs/<name>.log, whose end is shown if the step fails.
# No step reads standard input, and the caller's current folder does not matter.

set -uo pipefail
exec </dev/null

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
logs=$root/build/logs
jobs=${NORVIK_JOBS:-$(nproc)}
cd "$root" || exit 1

# step NAME TEXT COMMAND...: runs the command with its output in the log; the status is the command's.
step() {
  local name=$1 text=$2 started=$SECONDS status=0
  shift 2
  mkdir -p "$logs"
  "$@" >"$logs/$name.log" 2>&1 || status=$?
  if [ "$status" -eq 0 ]; then
    printf '%s: done (%d s)\n' "$text" $((SECONDS - started))
  else
    printf '%s: FAILED with status %d (%d s); the end of build/logs/%s.log:\n' "$text" "$status" $((SECONDS - started)) "$name"
    tail -n 40 "$logs/$name.log" | sed 's/^/    /'
  fi
  return "$status"
}

# build PRESET [CONFIGURE-ARGUMENT...] [-- TARGET...]: configures and builds a preset.
build() {
  local preset=$1 arguments=() targets=()
  shift
  while [ $# -gt 0 ] && [ "$1" != -- ]; do arguments+=("$1"); shift; done
  if [ $# -gt 1 ]; then shift; targets=(--target "$@"); fi
  cmake --preset "$preset" "${arguments[@]}" && cmake --build --preset "$preset" -j "$jobs" "${targets[@]}"
}

# run_ctest PRESET FOLDER [ARGUMENT...]: runs the tests of a build folder in parallel and sets tests_passed, tests_failed
# and tests_skipped. A run that finds no test has failed one.
run_ctest() {
  local name=$1 folder=$2 status=0 log summary
  shift 2
  mkdir -p "$logs"
  log=$logs/$name.tests.log
  # Many tests wait for another process or for a clock, so twice as many run as there are processors.
  ctest --test-dir "$folder" -j "$((2 * jobs))" --output-on-failure --no-tests=error "$@" >"$log" 2>&1 || status=$?
  tests_passed=0 tests_failed=0 tests_skipped=0
  summary=$(grep -E '^[0-9]+% tests passed, [0-9]+ tests failed out of [0-9]+' "$log" | tail -n 1)
  if [[ $summary =~ ([0-9]+)\ tests\ failed\ out\ of\ ([0-9]+) ]]; then
    tests_failed=${BASH_REMATCH[1]}
    tests_skipped=$(grep -cE '^ *[0-9]+/[0-9]+ Test +#[0-9]+:.*\*\*\*Skipped' "$log")
    tests_passed=$((BASH_REMATCH[2] - tests_failed - tests_skipped))
  fi
  if [ "$status" -ne 0 ] && [ "$tests_failed" -eq 0 ]; then tests_failed=1; fi
  if [ "$tests_failed" -ne 0 ]; then
    grep -E '\((Failed|Timeout|Not Run|SEGFAULT)\)|Subprocess|No tests were found' "$log" | head -n 40
    printf 'the tests failed; everything they printed is in %s; what those that failed printed first:\n' "${log#"$root"/}"
    awk '/^ *[0-9]+\/[0-9]+ Test +#[0-9]+:/ { of_failed = /\*\*\*/ && !/\*\*\*Skipped/; lines = 0 }
         of_failed && !/^ +Start +[0-9]+:/ && lines++ < 60' "$log" | head -n 240 | sed 's/^/    /'
  fi
  return "$status"
}
