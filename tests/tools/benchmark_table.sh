#!/usr/bin/env bash
# benchmark_table.sh AWK-PROGRAM WORK-FOLDER: the table of results such as Google Benchmark writes them: times in several
# units, counters that only some runs have, a run that failed, repetitions, and a subject without a peer.
set -eu
program=$1 work=$2

rm -rf "$work"
mkdir -p "$work"

# run NAME TIME UNIT [FURTHER-LINE...]
run() {
  printf '    {\n      "name": "%s",\n      "run_name": "%s",\n      "run_type": "iteration",\n' "$1" "$1"
  printf '      %s,\n' "${@:4}"
  printf '      "iterations": 25,\n      "real_time": %s,\n      "cpu_time": 1.0e+00,\n      "time_unit": "%s"\n    },\n' "$2" "$3"
}

{
  printf '{\n  "context": {\n    "host_name": "clerk",\n    "caches": [\n    ]\n  },\n  "benchmarks": [\n'
  run post/ours/1 2.0000000000000000e+01 us '"repetitions": 1'
  run post/asio/1/real_time 5.0000000000000000e-02 ms '"p50": 4.1e+01'
  run post/ours/4/iterations:1/manual_time 1.5e+00 s
  run sync/ours 1.9e+01 ns
  run sync/failing 0 ns '"error_occurred": true' '"error_message": "no answer"'
  run repeated/ours 9.9e+01 ns
  run repeated/ours 8.0e+00 ns '"aggregate_name": "mean"'
  run repeated/ours 7.0e+00 ns '"aggregate_name": "median"'
  run repeated/ours 1.0e+00 ns '"aggregate_name": "stddev"'
  printf '    {}\n  ]\n}\n'
} >"$work/Queue_benchmark.json"

cat >"$work/expected" <<'END'
subject                                                      ours   peer                             its time  peer / ours
Queue: post/1                                            20.00 us   asio                             50.00 us         2.50
Queue: post/4                                          1500.00 ms
Queue: sync                                               19.0 ns
Queue: repeated                                            7.0 ns
END
awk -f "$program" "$work/Queue_benchmark.json" | diff "$work/expected" -
